#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "agent/AgentSettings.h"

namespace CLI {
class App;
}

namespace MrpCli {

// `mrp agent [--ports eth1,eth2] [--apps mvrp,msrp] [--config FILE]
// [--control PATH] [--json] [--metrics ADDR:PORT]`: runs one bridge on those
// Linux interfaces until SIGINT or SIGTERM, and logs what happens on `out`
// as a timeline. Each option has a key in the configuration file; the
// command line wins. The ports come from either; without a file, --ports
// is required.
class AgentCommand {
 public:
  static constexpr const char* kDefaultControlPath = AgentSettings::kDefaultControlPath;

  explicit AgentCommand(CLI::App& program);

  bool chosen() const;
  // Returns the exit status: 0 after a signal, once the agent has withdrawn
  // what it declared; 2 after one line on `err` for a bad configuration
  // file; 1 when the agent cannot start.
  int run(std::ostream& out, std::ostream& err) const;

 private:
  // Throws CLI::ParseError for ports that are missing or named twice.
  void checkPorts() const;
  // `file` with what the command line gives instead.
  AgentSettings commandLineOver(AgentSettings file) const;

  CLI::App* command_;
  // Empty or nullopt: not given on the command line.
  std::vector<std::string> ports_;
  std::vector<std::string> applications_;
  std::optional<std::string> configFile_;
  std::optional<std::string> controlPath_;
  bool json_ = false;
  std::optional<std::string> metricsAddress_;
};

}  // namespace MrpCli
