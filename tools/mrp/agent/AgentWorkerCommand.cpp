#include "agent/AgentWorkerCommand.h"

#include <CLI/CLI.hpp>
#include <sys/socket.h>

#include <ostream>
#include <system_error>

#include "agent/AgentWorker.h"

namespace MrpCli {

namespace {

// Where the agent puts the worker's end of the channel.
constexpr int kChannelFd = 3;
constexpr int kNotAWorker = 2;

}  // namespace

AgentWorkerCommand::AgentWorkerCommand(CLI::App& program)
    : command_(program.add_subcommand("agent-worker", "One application's worker of mrp agent")) {
  command_->group("");
  command_->add_option("APP", application_, "mvrp or msrp")->required();
}

bool AgentWorkerCommand::chosen() const { return command_->parsed(); }

int AgentWorkerCommand::run(std::ostream& err) const {
  int type = 0;
  socklen_t length = sizeof type;
  if (getsockopt(kChannelFd, SOL_SOCKET, SO_TYPE, &type, &length) < 0 || type != SOCK_STREAM) {
    err << "mrp agent-worker: runs only as a worker that mrp agent starts\n";
    return kNotAWorker;
  }
  try {
    AgentWorker worker(kChannelFd, application_, err);
    return worker.run();
  } catch (const std::system_error& error) {
    err << "mrp agent: " << application_ << " worker: " << error.what() << '\n';
    return 1;
  }
}

}  // namespace MrpCli
