#pragma once

#include <map>
#include <string>
#include <vector>

#include "MrpModel/MrpConfig.h"
#include "MrpMsrp/MsrpDomainAttribute.h"
#include "quarn/Types.h"

namespace MrpAgent {

// How a bridge runs its engines.
struct BridgeConfig {
  Quarn::Seconds leaveTime = Mrp::MrpConfig::kDefaultLeaveTime;
  Quarn::Seconds leaveAllTime = Mrp::MrpConfig::kDefaultLeaveAllTime;
  // Per-port periods, by port name.
  std::map<std::string, Quarn::Seconds> portLeaveTime;
  std::map<std::string, Quarn::Seconds> portLeaveAllTime;
  // Received MRPDUs are flooded to the other ports and none are sent.
  bool flooding = false;
  // The SR class domains an MSRP bridge declares on every port: class A by default.
  std::vector<Mrp::MsrpDomainAttribute> msrpDomains = {Mrp::MsrpDomainAttribute(6, 3, 2)};
};

}  // namespace MrpAgent
