#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "AttributeValue.h"
#include "MrpModel/MrpApplication.h"

namespace MrpCli {

// One request to the agent's control socket, a JSON object on one line:
//   {"command": "declare", "attribute": {"port": "eth1", "app": "mvrp", "vlan": 10}}
//   {"command": "withdraw", "attribute": {"app": "mvrp", "vlan": 10}}
//   {"command": "show"}   {"command": "counters"}   {"command": "ports"}   {"command": "streams"}
//   {"command": "trace", "levels": "MrpSm/0-9"}
// An attribute is written as in a scenario's declare, without the bridge
// ("vlans" lists included): with "port", an end station's declaration on
// that port; without, the agent's own on every port. A talker is withdrawn
// by its stream id alone: {"app": "msrp", "talkerAdvertise": {"streamId": ...}}.
struct ControlRequest {
  enum class Command { declare, withdraw, show, counters, ports, streams, trace };

  Command command = Command::show;
  // One value, or one per VLAN of a "vlans" list.
  std::vector<MrpAgent::AttributeValue> values;
  // A withdrawal of the talker declared under this stream id.
  std::optional<std::uint64_t> talkerStreamId;
  std::optional<std::string> port;
  std::string traceLevels;
};

// "declare, withdraw, show, counters, ports, streams, trace".
std::string controlCommandNames();

// Reads a request, checking its port among `ports` and its application
// among `applications`; throws JsonInputError naming the place of the fault.
ControlRequest controlRequestFromJson(std::string_view text, const std::vector<std::string>& ports,
                                      const std::vector<Mrp::MrpApplication>& applications);

}  // namespace MrpCli
