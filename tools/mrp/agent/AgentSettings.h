#pragma once

#include <optional>
#include <string>
#include <vector>

namespace MrpCli {

// What `mrp agent` runs with, from its command line and its configuration
// file (the command line winning), before the bridge's own configuration.
struct AgentSettings {
  static constexpr const char* kDefaultControlPath = "/run/mrp/agent.sock";

  std::vector<std::string> ports;
  std::vector<std::string> applications = {"mvrp", "msrp"};
  std::string controlPath = kDefaultControlPath;
  bool json = false;
  // ADDR:PORT to serve metrics on; none: no metrics.
  std::optional<std::string> metricsAddress;
};

}  // namespace MrpCli
