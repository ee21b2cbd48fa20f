#pragma once

#include "MrpSm/MrpSm.h"

namespace Mrp {

// Reaches the engine's process-wide packet access state from tests.
class MrpSmPamPeer {
 public:
  // Forgets the process's socket filter, as in a fresh process: the next
  // engine that initialises builds it again.
  static void pamFilterProgramClear() { MrpSm::pamFilterProgram_.clear(); }
};

}  // namespace Mrp
