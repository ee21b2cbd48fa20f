#pragma once

#include <string>
#include <vector>

#include "BridgeConfig.h"
#include "format/JsonNode.h"

namespace MrpCli {

// The stream reservation keys of one bridge, as a scenario's bridge and the
// agent's configuration take them:
//   "bridgeId": "80:00:02:00:00:00:00:01"   (null: made from the bridge's name)
//   "portSpeed": {"p2": 100000000}        bit/s
//   "portLatency": {"p2": 20000}          ns
//   "domains": [{"classId": 6, "priority": 3, "vid": 2}]
// Ports must be among `ports`; only SR classes A (6) and B (5) are known.
void readBridgeSrp(const JsonNode& bridge, const std::vector<std::string>& ports, MrpAgent::BridgeConfig& config);

// "srp": {"deltaBandwidth": {"A": 75, "B": 0}}: the percent of each port's
// speed a class may reserve beyond the classes before it.
void readSrp(const JsonNode& srp, MrpAgent::BridgeConfig& config);

}  // namespace MrpCli
