#pragma once

#include <iosfwd>
#include <string>

namespace CLI {
class App;
}

namespace MrpCli {

// `mrp agent-worker`: one worker process of `mrp agent`, started by the
// agent itself with its channel on descriptor 3; not for people to run,
// so `mrp --help` does not list it.
class AgentWorkerCommand {
 public:
  explicit AgentWorkerCommand(CLI::App& program);

  bool chosen() const;
  int run(std::ostream& err) const;

 private:
  CLI::App* command_;
  // The application the worker is for, so that `ps` tells the workers apart.
  std::string application_;
};

}  // namespace MrpCli
