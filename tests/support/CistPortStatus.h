#pragma once

#include <string>

#include "stp/Status.h"

namespace MrpTest {

// The spanning-tree name of the single tree that rapid spanning tree runs
// (mode 2), which governs every port's base VLAN.
inline constexpr const char* kCist = "Cist";

// Puts `status` in rapid spanning-tree mode with an instance `stpiName`
// holding the tree kCist, and returns the status entry of `port` in it
// (created with role 0 when absent).
inline Quarn::Ptr<Stp::MstiPortStatus> cistPortStatusIs(Stp::Status& status, const std::string& port,
                                                         const std::string& stpiName = "stp") {
  status.modeIs(Stp::kModeRstp);
  return status.stpiStatusIs(stpiName)->mstiStatusIs(kCist)->mstiPortStatusIs(port);
}

}  // namespace MrpTest
