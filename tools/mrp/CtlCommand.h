#pragma once

#include <iosfwd>
#include <optional>
#include <string>

#include "AgentCommand.h"

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
  // with --json) and returns 0; prints one error line on `err` and returns
  // 1 when the agent refused the request or could not be reached, 2 for an
  // argument that cannot make a request.
  int run(std::ostream& out, std::ostream& err) const;

 private:
  CLI::App* command_;
  std::string controlPath_ = AgentCommand::kDefaultControlPath;
  bool json_ = false;
  std::string word_;
  std::optional<std::string> argument_;
};

}  // namespace MrpCli
