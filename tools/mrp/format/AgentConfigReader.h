#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "BridgeConfig.h"
#include "format/JsonNode.h"

namespace MrpCli {

// Reads the agent's configuration file:
//   {"leaveTime": 0.6, "leaveAllTime": 10.0, "flooding": false,
//    "ports": {"eth1": {"leaveTime": 0.3, "leaveAllTime": 5.0}}}
// Every member is optional; times are seconds. A port named under "ports"
// must be one of the agent's `ports`. Throws JsonInputError naming the place
// of the first fault, an unknown key among them.
MrpAgent::BridgeConfig agentConfigFromJson(std::string_view text, const std::vector<std::string>& ports);

}  // namespace MrpCli
