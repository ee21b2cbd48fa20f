#include "ctl/CtlCommand.h"

#include <CLI/CLI.hpp>

#include <ostream>

#include "control/ControlAnswer.h"
#include "control/ControlRequest.h"
#include "ctl/ControlClient.h"
#include "format/JsonLine.h"
#include "format/JsonNode.h"

namespace MrpCli {

namespace {

// Exit statuses: the request was not carried out (the agent refused it,
// or could not be reached); mrp ctl itself was used wrongly.
constexpr int kRefused = 1;
constexpr int kBadArguments = 2;

bool isCommand(const std::string& word) {
  const std::string names = ", " + controlCommandNames() + ",";
  return names.find(", " + word + ",") != std::string::npos;
}

}  // namespace

// With --json an error is an answer too, on stdout: {"ok": false, "error": "..."}.
int CtlCommand::fail(std::ostream& out, std::ostream& err, const std::string& message, int status) const {
  if (json_) {
    out << jsonLine(ControlAnswer::failure(message).json()) << '\n';
  } else {
    err << "mrp ctl: " << message << '\n';
  }
  return status;
}

namespace {

}  // namespace

CtlCommand::CtlCommand(CLI::App& program)
    : command_(program.add_subcommand("ctl", "Ask a running mrp agent: declare, withdraw, show, counters, ports, streams, trace")) {
  command_->add_option("--control", controlPath_, "The agent's control socket")
      ->type_name("PATH")
      ->capture_default_str();
  command_->add_flag("--json", json_, "Print the answer as one JSON line");
  command_->add_option("COMMAND", word_, "declare, withdraw, show, counters, ports, streams or trace")->required()->type_name("");
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
  if (!isCommand(word_)) {
    return fail(out, err, "unknown command '" + word_ + "' (" + controlCommandNames() + ")", kBadArguments);
  }
  nlohmann::ordered_json request = {{"command", word_}};
  if (word_ == "declare" || word_ == "withdraw") {
    if (!argument_) return fail(out, err, word_ + " needs an attribute, e.g. '{\"app\": \"mvrp\", \"vlan\": 10}'", kBadArguments);
    try {
      request["attribute"] = jsonParsed(*argument_);
    } catch (const JsonInputError& error) {
      return fail(out, err, "ATTRIBUTE: " + std::string(error.what()), kBadArguments);
    }
  } else if (word_ == "trace") {
    if (!argument_) return fail(out, err, "trace needs levels, e.g. MrpSm/0-9 (or off)", kBadArguments);
    request["levels"] = *argument_;
  } else if (argument_) {
    return fail(out, err, word_ + " takes no argument", kBadArguments);
  }

  std::string line;
  try {
    line = controlExchange(controlPath_, request.dump());
  } catch (const ControlClientError& error) {
    return fail(out, err, error.what(), kRefused);
  }
  const std::optional<ControlAnswer> answer = ControlAnswer::fromLine(line);
  if (!answer) return fail(out, err, "the agent's answer is not one: " + line, kRefused);
  if (!answer->ok) return fail(out, err, answer->error, kRefused);
  if (json_) {
    out << jsonLine(answer->result) << '\n';
  } else {
    out << answer->text;
  }
  return 0;
}

}  // namespace MrpCli
