#pragma once

#include "MrpSm/MrpPamWiring.h"

namespace Mrp {

// Reaches the process-wide packet access state from tests.
class MrpSmPamPeer {
 public:
  // Forgets the process's socket filter, as in a fresh process: the next
  // engine that initialises builds it again.
  static void pamFilterProgramClear() { MrpPamWiring::pamFilterProgram_.clear(); }
};

}  // namespace Mrp
