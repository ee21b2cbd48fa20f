#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace MrpCli {

// `mrp agent --ports eth1,eth2 [--apps mvrp,msrp] [--config FILE]
// [--control PATH] [--json]`: runs one bridge on those Linux interfaces
// until SIGINT or SIGTERM, and logs what happens on `out` as a timeline.
class AgentCommand {
 public:
  static constexpr const char* kDefaultControlPath = "/run/mrp/agent.sock";

  explicit AgentCommand(CLI::App& program);

  bool chosen() const;
  // Returns the exit status: 0 after a signal, once the agent has withdrawn
  // what it declared; 2 after one line on `err` for a bad configuration
  // file; 1 when the agent cannot start.
  int run(std::ostream& out, std::ostream& err) const;

 private:
  CLI::App* command_;
  std::vector<std::string> ports_;
  std::vector<std::string> applications_{"mvrp", "msrp"};
  std::optional<std::string> configFile_;
  std::string controlPath_ = kDefaultControlPath;
  bool json_ = false;
  std::optional<std::string> metricsAddress_;
};

}  // namespace MrpCli
