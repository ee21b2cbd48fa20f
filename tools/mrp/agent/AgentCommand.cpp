#include "agent/AgentCommand.h"

#include <CLI/CLI.hpp>
#include <arpa/inet.h>
#include <linux/if_ether.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include <algorithm>
#include <memory>
#include <ostream>
#include <system_error>

#include "agent/Agent.h"
#include "agent/AgentSupervisor.h"
#include "common/Applications.h"
#include "common/TextFile.h"
#include "common/InterfaceName.h"
#include "common/ListenAddress.h"
#include "format/AgentConfigReader.h"
#include "report/JsonTimeline.h"
#include "report/TextTimeline.h"

namespace MrpCli {

namespace {

constexpr int kBadInput = 2;
constexpr int kFailed = 1;

int fail(std::ostream& err, const std::string& message, int status) {
  err << "mrp agent: " << message << '\n';
  return status;
}

// Why packet sockets cannot be had, when it is for lack of privilege: the
// agent cannot work at all then, on any port.
std::optional<std::string> packetSocketRefusal() {
  const int fd = socket(AF_PACKET, SOCK_RAW | SOCK_CLOEXEC, htons(ETH_P_ALL));
  if (fd >= 0) {
    close(fd);
    return std::nullopt;
  }
  if (errno != EPERM && errno != EACCES) return std::nullopt;
  return std::strerror(errno);
}

AgentSupervisor::Options supervisorOptions(const AgentSettings& settings, std::string configText) {
  AgentSupervisor::Options options;
  options.ports = settings.ports;
  for (const std::string& name : settings.applications) {
    const auto application = applicationNamed(name);
    if (std::find(options.applications.begin(), options.applications.end(), *application) ==
        options.applications.end()) {
      options.applications.push_back(*application);
    }
  }
  options.configText = std::move(configText);
  options.controlPath = settings.controlPath;
  options.metricsAddress = settings.metricsAddress;
  return options;
}

}  // namespace

AgentCommand::AgentCommand(CLI::App& program)
    : command_(program.add_subcommand("agent", "Run a bridge on Linux interfaces until SIGINT or SIGTERM")) {
  command_->add_option("--ports", arguments_.ports,
                       "The interfaces, comma-separated (they may come and go while it runs); "
                       "default: those the configuration file names")
      ->delimiter(',')
      ->type_name("IF,...")
      ->check(interfaceName());
  command_->add_option("--apps", arguments_.applications, "The applications it runs (default: mvrp,msrp)")
      ->delimiter(',')
      ->type_name("APP,...")
      ->check(knownApplication());
  command_->add_option("--config", arguments_.configFile,
                       "A configuration file (JSON): ports, leave times, per-port times, flooding, and a key for "
                       "each option")
      ->type_name("FILE");
  command_->add_option("--control", arguments_.controlPath, "The control socket that `mrp ctl` talks to")
      ->type_name("PATH")
      ->default_str(kDefaultControlPath);
  command_->add_flag("--json", arguments_.json, "Log as JSON lines");
  command_->add_option("--metrics", arguments_.metricsAddress,
                       "Serve Prometheus metrics on http://ADDR:PORT/metrics (default: off)")
      ->type_name("ADDR:PORT")
      ->check(listenAddress());
  command_->callback([this] { checkPorts(); });
  command_->footer(
      "On SIGINT or SIGTERM the agent withdraws what it declares, sends the Lv messages and exits 0.\n"
      "The README describes the configuration file and `mrp ctl`.");
}

bool AgentCommand::chosen() const { return command_->parsed(); }

void AgentCommand::checkPorts() const {
  const std::vector<std::string>& ports = arguments_.ports;
  if (ports.empty() && !arguments_.configFile) throw CLI::RequiredError("--ports");
  for (auto it = ports.begin(); it != ports.end(); ++it) {
    if (std::find(ports.begin(), it, *it) != it) throw CLI::ValidationError("--ports", "'" + *it + "' is named twice");
  }
}

int AgentCommand::run(std::ostream& out, std::ostream& err) const {
  AgentSettings settings;
  std::string configText = "{}";
  if (arguments_.configFile) {
    std::string error;
    const std::optional<std::string> text = textFileRead(*arguments_.configFile, error);
    if (!text) return fail(err, error, kBadInput);
    try {
      settings = agentSettingsFromJson(*text, arguments_.ports);
    } catch (const JsonInputError& fault) {
      return fail(err, *arguments_.configFile + ": " + fault.what(), kBadInput);
    }
    configText = *text;
  }
  settings = arguments_.over(std::move(settings));
  if (const auto refusal = packetSocketRefusal()) {
    return fail(err,
                settings.ports.front() + ": cannot open a packet socket: " + *refusal +
                    " (run as root or with CAP_NET_RAW and CAP_NET_ADMIN)",
                kFailed);
  }

  std::unique_ptr<Timeline> timeline;
  if (settings.json) {
    timeline = std::make_unique<JsonTimeline>(out);
  } else {
    timeline = std::make_unique<TextTimeline>(out, std::vector<std::string>{Agent::kBridgeName}, settings.ports,
                                              TextTimelineOptions{.wallClock = true});
  }
  // Each line as it happens: the log is read while the agent runs.
  out << std::unitbuf;
  try {
    AgentSupervisor supervisor(supervisorOptions(settings, configText), *timeline, err);
    supervisor.run();
  } catch (const std::runtime_error& error) {
    return fail(err, error.what(), kFailed);
  }
  return 0;
}

}  // namespace MrpCli
