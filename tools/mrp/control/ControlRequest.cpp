#include "control/ControlRequest.h"

#include <algorithm>
#include <array>
#include <utility>

#include "format/AttributeValueReader.h"
#include "format/JsonNode.h"

namespace MrpCli {

namespace {

using Command = ControlRequest::Command;

constexpr std::array<std::pair<Command, const char*>, 7> kCommands = {{{Command::declare, "declare"},
                                                                       {Command::withdraw, "withdraw"},
                                                                       {Command::show, "show"},
                                                                       {Command::counters, "counters"},
                                                                       {Command::ports, "ports"},
                                                                       {Command::streams, "streams"},
                                                                       {Command::trace, "trace"}}};

Command commandOf(const JsonNode& node) {
  const std::string name = node.string();
  for (const auto& [command, commandName] : kCommands) {
    if (name == commandName) return command;
  }
  node.fail("unknown command '" + name + "' (" + controlCommandNames() + ")");
}

void readAttribute(const JsonNode& node, const std::vector<std::string>& ports,
                   const std::vector<Mrp::MrpApplication>& applications, ControlRequest& request) {
  node.object({"port", "app", "vlan", "vlans", "talkerAdvertise", "listener", "domain"});
  if (node.has("port")) {
    const JsonNode port = node["port"];
    const std::string name = port.string();
    if (std::find(ports.begin(), ports.end(), name) == ports.end()) {
      port.fail("no port '" + name + "' (" + commaListed(ports) + ")");
    }
    request.port = name;
  }
  if (request.command == Command::withdraw) request.talkerStreamId = talkerNamedByStreamId(node, applications);
  if (!request.talkerStreamId) request.values = attributeValuesOf(node, applications);
}

}  // namespace

std::string controlCommandNames() {
  std::string text;
  for (const auto& [command, name] : kCommands) text += (text.empty() ? "" : ", ") + std::string(name);
  return text;
}

ControlRequest controlRequestFromJson(std::string_view text, const std::vector<std::string>& ports,
                                      const std::vector<Mrp::MrpApplication>& applications) {
  const nlohmann::ordered_json json = jsonParsed(text);
  const JsonNode root(json, "");
  root.object();
  ControlRequest request;
  request.command = commandOf(root["command"]);
  switch (request.command) {
    case Command::declare:
    case Command::withdraw:
      root.object({"command", "attribute"});
      readAttribute(root["attribute"], ports, applications, request);
      break;
    case Command::trace:
      root.object({"command", "levels"});
      request.traceLevels = root["levels"].string();
      break;
    case Command::show:
    case Command::counters:
    case Command::ports:
    case Command::streams:
      root.object({"command"});
      break;
  }
  return request;
}

}  // namespace MrpCli
