#include "CtlCommand.h"

#include <CLI/CLI.hpp>

#include <ostream>

#include "ControlAnswer.h"
#include "ControlClient.h"
#include "JsonLine.h"
#include "JsonNode.h"

namespace MrpCli {

namespace {

constexpr int kRefused = 1;
constexpr int kBadArguments = 2;

int fail(std::ostream& err, const std::string& message, int status) {
  err << "mrp ctl: " << message << '\n';
  return status;
}

}  // namespace

CtlCommand::CtlCommand(CLI::App& program)
    : command_(program.add_subcommand("ctl", "Ask a running mrp agent: declare, withdraw, show, counters, ports, trace")) {
  command_->add_option("--control", controlPath_, "The agent's control socket")
      ->type_name("PATH")
      ->capture_default_str();
  command_->add_flag("--json", json_, "Print the answer as one JSON line");
  command_->add_option("COMMAND", word_, "declare, withdraw, show, counters, ports or trace")->required()->type_name("");
  command_->add_option("ARGUMENT", argument_, "declare and withdraw: the attribute (JSON); trace: the levels")
      ->type_name("");
  command_->footer(
      "Examples:\n"
      "  mrp ctl declare '{\"app\": \"mvrp\", \"vlan\": 10}'                  on every port\n"
      "  mrp ctl declare '{\"port\": \"eth1\", \"app\": \"mvrp\", \"vlan\": 20}'  on eth1\n"
      "  mrp ctl show --json\n"
      "  mrp ctl trace MrpSm/0-9");
}

bool CtlCommand::chosen() const { return command_->parsed(); }

int CtlCommand::run(std::ostream& out, std::ostream& err) const {
  nlohmann::ordered_json request = {{"command", word_}};
  if (word_ == "declare" || word_ == "withdraw") {
    if (!argument_) return fail(err, word_ + " needs an attribute, e.g. '{\"app\": \"mvrp\", \"vlan\": 10}'", kBadArguments);
    try {
      request["attribute"] = jsonParsed(*argument_);
    } catch (const JsonInputError& error) {
      return fail(err, "ATTRIBUTE: " + std::string(error.what()), kBadArguments);
    }
  } else if (word_ == "trace") {
    if (!argument_) return fail(err, "trace needs levels, e.g. MrpSm/0-9 (or off)", kBadArguments);
    request["levels"] = *argument_;
  } else if (argument_) {
    return fail(err, word_ + " takes no argument", kBadArguments);
  }

  std::string line;
  try {
    line = controlExchange(controlPath_, request.dump());
  } catch (const ControlClientError& error) {
    return fail(err, error.what(), kRefused);
  }
  const std::optional<ControlAnswer> answer = ControlAnswer::fromLine(line);
  if (!answer) return fail(err, "the agent's answer is not one: " + line, kRefused);
  if (!answer->ok) return fail(err, answer->error, kRefused);
  if (json_) {
    out << jsonLine(answer->result) << '\n';
  } else {
    out << answer->text;
  }
  return 0;
}

}  // namespace MrpCli
