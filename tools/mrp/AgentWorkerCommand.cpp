#include "AgentWorkerCommand.h"

#include <CLI/CLI.hpp>

#include "AgentWorker.h"

namespace MrpCli {

namespace {

// Where the agent puts the worker's end of the channel.
constexpr int kChannelFd = 3;

}  // namespace

AgentWorkerCommand::AgentWorkerCommand(CLI::App& program)
    : command_(program.add_subcommand("agent-worker", "One application's worker of mrp agent")) {
  command_->group("");
  command_->add_option("APP", application_, "mvrp or msrp")->required();
}

bool AgentWorkerCommand::chosen() const { return command_->parsed(); }

int AgentWorkerCommand::run(std::ostream& err) const {
  AgentWorker worker(kChannelFd, application_, err);
  return worker.run();
}

}  // namespace MrpCli
