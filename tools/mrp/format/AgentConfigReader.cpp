#include "format/AgentConfigReader.h"

#include <algorithm>

#include "format/SrpConfigReader.h"

namespace MrpCli {

namespace {

void readPorts(const JsonNode& node, const std::vector<std::string>& ports, MrpAgent::BridgeConfig& config) {
  node.object();
  for (const auto& [name, member] : node.json().items()) {
    const JsonNode port(member, node.place() + "." + name);
    if (std::find(ports.begin(), ports.end(), name) == ports.end()) {
      port.fail("not one of the agent's ports (" + commaListed(ports) + ")");
    }
    port.object({"leaveTime", "leaveAllTime"});
    if (port.has("leaveTime")) config.portLeaveTime[name] = port["leaveTime"].seconds();
    if (port.has("leaveAllTime")) config.portLeaveAllTime[name] = port["leaveAllTime"].seconds();
  }
}

}  // namespace

MrpAgent::BridgeConfig agentConfigFromJson(std::string_view text, const std::vector<std::string>& ports) {
  const nlohmann::ordered_json json = jsonParsed(text);
  const JsonNode root(json, "");
  root.object({"leaveTime", "leaveAllTime", "flooding", "ports", "srp", "bridgeId", "portSpeed", "portLatency",
               "domains"});
  MrpAgent::BridgeConfig config;
  if (root.has("leaveTime")) config.leaveTime = root["leaveTime"].seconds();
  if (root.has("leaveAllTime")) config.leaveAllTime = root["leaveAllTime"].seconds();
  if (root.has("flooding")) config.flooding = root["flooding"].boolean();
  if (root.has("ports")) readPorts(root["ports"], ports, config);
  readBridgeSrp(root, ports, config);
  if (root.has("srp")) readSrp(root["srp"], config);
  return config;
}

}  // namespace MrpCli
