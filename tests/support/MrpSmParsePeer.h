#pragma once

#include "MrpSm/MrpSm.h"

namespace Mrp {

// Reaches the received frame's collection state from tests.
class MrpSmParsePeer {
 public:
  // Whether the parser may collect a frame vector by vector; without, it
  // collects every value one by one, as a reference to compare with.
  static void parsedRunsEnabledIs(MrpReceivedFrame& frame, bool enabled) { frame.parsedRunsEnabled_ = enabled; }
  static void parsedRunsEnabledIs(MrpSm& engine, bool enabled) {
    parsedRunsEnabledIs(engine.receivedFrame(), enabled);
  }
};

}  // namespace Mrp
