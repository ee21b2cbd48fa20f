#pragma once

#include <iosfwd>

#include "agent/AgentArguments.h"

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

  CLI::App* command_;
  AgentArguments arguments_;
};

}  // namespace MrpCli
