#pragma once

#include <sys/types.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "support/ChildProcess.h"
#include "support/MrpRun.h"
#include "support/TempDir.h"

namespace MrpTest {

// `mrp agent` (the program the build made) run as a child process, inside a
// network namespace when given one, its control socket in a temporary
// directory of its own; asked with `mrp ctl` run in this process.
class AgentProcess {
 public:
  // `config` is the configuration file's text; no namespace when `netns`
  // is empty.
  // `apps` empty: the agent's default applications. `options` go on the
  // command line after the others.
  explicit AgentProcess(const std::vector<std::string>& ports, const std::string& apps = "",
                        const std::string& config = "{}", const std::string& netns = "",
                        const std::vector<std::string>& options = {});

  // Whether its control socket answers within five seconds.
  bool ready() const;
  const std::string& controlPath() const { return controlPath_; }
  ChildProcess& process() { return *process_; }

  // `mrp ctl --control <its socket> args...`
  MrpRun ctl(const std::vector<std::string>& args) const;
  // What `ctl show --json` lists, as "port app type key registrar" lines;
  // empty when the agent does not answer.
  std::vector<std::string> registrations() const;
  // Whether `line` is among the registrations.
  bool registers(const std::string& line) const;
  // What `ctl ports --json` says of a port: "up", "down", "absent"; empty
  // when the agent does not answer.
  std::string portState(const std::string& port) const;
  // Whether every one of `ports` is up within five seconds (a new veth's
  // carrier takes up to a second to show).
  bool portsUp(const std::vector<std::string>& ports) const;

  // The pid of the agent's worker process of an application (`mrp
  // agent-worker msrp`); nullopt while there is none.
  std::optional<pid_t> workerPid(const std::string& app) const;

 private:
  TempDir dir_;
  std::string controlPath_;
  std::unique_ptr<ChildProcess> process_;
};

}  // namespace MrpTest
