#pragma once

#include "MrpSm/MrpSm.h"

namespace Mrp {

// Reaches the engine's parser state from tests.
class MrpSmParsePeer {
 public:
  // Whether the parser may collect a frame vector by vector; without, it
  // collects every value one by one, as a reference to compare with.
  static void parsedRunsEnabledIs(MrpSm& engine, bool enabled) { engine.parsedRunsEnabled_ = enabled; }
};

}  // namespace Mrp
