#include "AgentConfigReader.h"

#include <algorithm>

namespace MrpCli {

namespace {

std::string listed(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) text += (text.empty() ? "" : ", ") + name;
  return text;
}

void readPorts(const JsonNode& node, const std::vector<std::string>& ports, MrpAgent::BridgeConfig& config) {
  node.object();
  for (const auto& [name, member] : node.json().items()) {
    const JsonNode port(member, node.place() + "." + name);
    if (std::find(ports.begin(), ports.end(), name) == ports.end()) {
      port.fail("not one of the agent's ports (" + listed(ports) + ")");
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
  root.object({"leaveTime", "leaveAllTime", "flooding", "ports"});
  MrpAgent::BridgeConfig config;
  if (root.has("leaveTime")) config.leaveTime = root["leaveTime"].seconds();
  if (root.has("leaveAllTime")) config.leaveAllTime = root["leaveAllTime"].seconds();
  if (root.has("flooding")) config.flooding = root["flooding"].boolean();
  if (root.has("ports")) readPorts(root["ports"], ports, config);
  return config;
}

}  // namespace MrpCli
