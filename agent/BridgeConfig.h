#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "MrpModel/MrpConfig.h"
#include "MrpMsrp/MsrpDomainAttribute.h"
#include "PortReservations.h"
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

  // What a Talker Failed of this bridge names it by; none for one made
  // from the bridge's name.
  std::optional<std::uint64_t> bridgeId;
  // Port speeds in bit/s, by port name, and the speed of the others.
  std::map<std::string, std::uint64_t> portSpeed;
  std::uint64_t defaultPortSpeed = 1'000'000'000;
  // The latency a port adds to the streams it carries, in ns, by port name;
  // the others add the time one 1542-octet frame takes at their speed.
  std::map<std::string, std::uint32_t> portLatency;
  DeltaBandwidth deltaBandwidth = kDefaultDeltaBandwidth;

  std::uint64_t speedOf(const std::string& port) const {
    auto it = portSpeed.find(port);
    return it == portSpeed.end() ? defaultPortSpeed : it->second;
  }
  std::uint32_t latencyOf(const std::string& port) const {
    auto it = portLatency.find(port);
    if (it != portLatency.end()) return it->second;
    const std::uint64_t speed = speedOf(port);
    if (speed == 0) return 0;
    const std::uint64_t ns = kMaxFrameOnWireOctets * 8 * 1'000'000'000ULL / speed;
    return static_cast<std::uint32_t>(std::min<std::uint64_t>(ns, std::numeric_limits<std::uint32_t>::max()));
  }
};

}  // namespace MrpAgent
