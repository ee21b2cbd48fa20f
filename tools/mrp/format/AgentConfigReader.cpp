#include "format/AgentConfigReader.h"

#include <algorithm>

#include "common/Applications.h"
#include "common/InterfaceName.h"
#include "common/ListenAddress.h"
#include "format/SrpConfigReader.h"

namespace MrpCli {

namespace {

// The file's root, every member a known one.
nlohmann::ordered_json fileJson(std::string_view text) {
  nlohmann::ordered_json json = jsonParsedWithUniqueNames(text);
  JsonNode(json, "").object({"ports", "apps", "control", "json", "metrics", "leaveTime", "leaveAllTime", "flooding",
                             "srp", "bridgeId", "portSpeed", "portLatency", "domains"});
  return json;
}

// A leave or LeaveAll period: 0 would have its timer fire on every tick.
Quarn::Seconds period(const JsonNode& node) {
  const Quarn::Seconds seconds = node.seconds();
  if (seconds == 0) node.fail("0 is not a period (more than 0 seconds is needed)");
  return seconds;
}

void readPorts(const JsonNode& node, const std::vector<std::string>& ports, MrpAgent::BridgeConfig& config) {
  node.object();
  for (const auto& [name, member] : node.json().items()) {
    const JsonNode port(member, node.place() + "." + name);
    if (std::find(ports.begin(), ports.end(), name) == ports.end()) {
      port.fail("not one of the agent's ports (" + commaListed(ports) + ")");
    }
    port.object({"leaveTime", "leaveAllTime"});
    if (port.has("leaveTime")) config.portLeaveTime[name] = period(port["leaveTime"]);
    if (port.has("leaveAllTime")) config.portLeaveAllTime[name] = period(port["leaveAllTime"]);
  }
}

MrpAgent::BridgeConfig bridgeConfigOf(const JsonNode& root, const std::vector<std::string>& ports) {
  MrpAgent::BridgeConfig config;
  if (root.has("leaveTime")) config.leaveTime = period(root["leaveTime"]);
  if (root.has("leaveAllTime")) config.leaveAllTime = period(root["leaveAllTime"]);
  if (root.has("flooding")) config.flooding = root["flooding"].boolean();
  if (root.has("ports")) readPorts(root["ports"], ports, config);
  readBridgeSrp(root, ports, config);
  if (root.has("srp")) readSrp(root["srp"], config);
  return config;
}

// The names under "ports", in the order written.
std::vector<std::string> portNames(const JsonNode& root) {
  std::vector<std::string> names;
  if (!root.has("ports")) return names;
  const JsonNode ports = root["ports"];
  ports.object();
  for (const auto& [name, member] : ports.json().items()) {
    if (const auto fault = interfaceNameFault(name)) JsonNode(member, ports.place() + "." + name).fail(*fault);
    names.push_back(name);
  }
  return names;
}

std::vector<std::string> applicationNames(const JsonNode& node) {
  std::vector<std::string> names;
  for (std::size_t i = 0; i < node.listSize(); ++i) {
    const JsonNode item = node.item(i);
    names.push_back(item.string());
    if (const auto fault = applicationFault(names.back())) item.fail(*fault);
  }
  if (names.empty()) node.fail("an application is needed (msrp or mvrp)");
  return names;
}

std::string controlPath(const JsonNode& node) {
  std::string path = node.string();
  if (path.empty()) node.fail("a path is needed");
  return path;
}

std::optional<std::string> metricsAddress(const JsonNode& node) {
  if (node.json().is_null()) return std::nullopt;
  std::string address = node.string();
  if (const auto fault = listenAddressFault(address)) node.fail(*fault);
  return address;
}

}  // namespace

AgentSettings agentSettingsFromJson(std::string_view text, const std::vector<std::string>& ports) {
  const nlohmann::ordered_json json = fileJson(text);
  const JsonNode root(json, "");
  AgentSettings settings;
  settings.ports = ports.empty() ? portNames(root) : ports;
  if (settings.ports.empty()) root.fail("no ports (name them under \"ports\" or with --ports)");
  if (root.has("apps")) settings.applications = applicationNames(root["apps"]);
  if (root.has("control")) settings.controlPath = controlPath(root["control"]);
  if (root.has("json")) settings.json = root["json"].boolean();
  if (root.has("metrics")) settings.metricsAddress = metricsAddress(root["metrics"]);
  bridgeConfigOf(root, settings.ports);
  return settings;
}

MrpAgent::BridgeConfig agentConfigFromJson(std::string_view text, const std::vector<std::string>& ports) {
  const nlohmann::ordered_json json = fileJson(text);
  return bridgeConfigOf(JsonNode(json, ""), ports);
}

}  // namespace MrpCli
