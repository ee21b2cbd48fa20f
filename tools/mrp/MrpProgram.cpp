#include "MrpProgram.h"

#include <CLI/CLI.hpp>

#include <ostream>

#include "agent/AgentCommand.h"
#include "agent/AgentWorkerCommand.h"
#include "ctl/CtlCommand.h"
#include "decode/DecodeCommand.h"
#include "replay/ReplayCommand.h"
#include "sim/SimCommand.h"

namespace MrpCli {

namespace {

constexpr int kBadArguments = 2;

// "mrp", or "mrp decode" once the parser has entered that subcommand.
std::string commandPath(const CLI::App& program) {
  std::string path = program.get_name();
  for (const CLI::App* command : program.get_subcommands()) path += " " + command->get_name();
  return path;
}

// "decode, sim": the subcommands there are.
std::string commandNames(CLI::App& program) {
  std::string names;
  for (const CLI::App* command : program.get_subcommands([](const CLI::App* c) { return !c->get_group().empty(); })) {
    names += (names.empty() ? "" : ", ") + command->get_name();
  }
  return names;
}

int badArguments(const CLI::App& program, const std::string& message, std::ostream& err) {
  const std::string path = commandPath(program);
  err << path << ": " << message << " (try '" << path << " --help')\n";
  return kBadArguments;
}

}  // namespace

int runMrp(const std::vector<std::string>& args, std::istream& in, std::ostream& out, std::ostream& err) {
  CLI::App program("Runs the Multiple Registration Protocol engine of libMrpSm (MSRP and MVRP).", "mrp");
  program.set_version_flag("-V,--version", std::string("mrp ") + MRP_VERSION, "Print the version and exit");
  // At most one, and none is caught below: an unknown word is then reported
  // as such rather than as a missing subcommand.
  program.require_subcommand(0, 1);
  program.footer(
      "Environment:\n  MRP_TRACE   trace levels per tag, e.g. MRP_TRACE=\"MrpSm/0-9\" (levels 0-9); `mrp ctl trace`\n"
      "              sets them in a running agent");
  const DecodeCommand decode(program);
  const SimCommand sim(program);
  const ReplayCommand replay(program);
  const AgentCommand agent(program);
  const CtlCommand ctl(program);
  const AgentWorkerCommand worker(program);

  try {
    std::vector<std::string> reversed(args.rbegin(), args.rend());  // the order CLI11 consumes
    program.parse(reversed);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) return program.exit(error, out, err);
    return badArguments(program, error.what(), err);
  }
  if (program.get_subcommands().empty()) {
    return badArguments(program, "a command is needed: " + commandNames(program), err);
  }
  if (sim.chosen()) return sim.run(out, err);
  if (replay.chosen()) return replay.run(out, err);
  if (agent.chosen()) return agent.run(out, err);
  if (ctl.chosen()) return ctl.run(out, err);
  if (worker.chosen()) return worker.run(err);
  return decode.run(in, out, err);
}

}  // namespace MrpCli
