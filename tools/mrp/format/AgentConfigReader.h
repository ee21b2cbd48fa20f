#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "BridgeConfig.h"
#include "agent/AgentSettings.h"
#include "format/JsonNode.h"

namespace MrpCli {

// Reads the agent's configuration file:
//   {"ports": {"eth1": {"leaveTime": 0.3, "leaveAllTime": 5.0}, "eth2": {}},
//    "apps": ["mvrp", "msrp"], "control": "/run/mrp/agent.sock", "json": false,
//    "metrics": "127.0.0.1:9464", "leaveTime": 0.6, "leaveAllTime": 10.0,
//    "flooding": false, and the stream reservation keys (readBridgeSrp, readSrp)}
// Every member is optional; times are seconds, more than 0 ("metrics": null
// is no metrics). Throws JsonInputError naming the place of the first fault,
// an unknown key or a member named twice among them.

// The agent's settings as the file gives them (AgentSettings' defaults for
// what it leaves out). The ports are `ports` when there are any, and "ports"
// may name only those then; else they are the names under "ports", in the
// order written; no ports at all is a fault. The bridge's keys are checked
// too.
AgentSettings agentSettingsFromJson(std::string_view text, const std::vector<std::string>& ports);

// The bridge's configuration in the file, for an agent on `ports`; a port
// named under "ports" must be one of them.
MrpAgent::BridgeConfig agentConfigFromJson(std::string_view text, const std::vector<std::string>& ports);

}  // namespace MrpCli
