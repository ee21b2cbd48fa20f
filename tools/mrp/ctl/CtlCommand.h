#pragma once

#include <iosfwd>
#include <optional>
#include <string>

#include "agent/AgentCommand.h"

namespace CLI {
class App;
}

namespace MrpCli {

// `mrp ctl [--control PATH] [--json] COMMAND [ARGUMENT]`: asks a running
// `mrp agent` through its control socket.
//   declare ATTRIBUTE | withdraw ATTRIBUTE   (JSON, as a scenario's declare)
//   show | counters | ports
//   trace LEVELS                            (as MRP_TRACE, or off)
class CtlCommand {
 public:
  explicit CtlCommand(CLI::App& program);

  bool chosen() const;
  // Prints the agent's answer (its text, or its result as one JSON line
  // with --json) and returns 0. Otherwise prints one error line (on `err`,
  // or with --json as {"ok": false, "error": ...} on `out`) and returns 1
  // when the agent refused the request or could not be reached, 2 for a
  // command or argument that cannot make a request.
  int run(std::ostream& out, std::ostream& err) const;

 private:
  int fail(std::ostream& out, std::ostream& err, const std::string& message, int status) const;

  CLI::App* command_;
  std::string controlPath_ = AgentCommand::kDefaultControlPath;
  bool json_ = false;
  std::string word_;
  std::optional<std::string> argument_;
};

}  // namespace MrpCli
