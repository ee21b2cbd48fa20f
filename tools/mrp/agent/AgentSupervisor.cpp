#include "agent/AgentSupervisor.h"

#include <signal.h>

#include <algorithm>
#include <ostream>

#include "agent/Agent.h"
#include "common/Applications.h"
#include "control/AttributeMessage.h"
#include "control/ControlMerge.h"
#include "format/JsonNode.h"
#include "quarn/Trace.h"
#include "report/RegistrationText.h"
#include "report/RelayTimeline.h"
#include "report/ValueText.h"
#include "report/VlanSetText.h"

namespace MrpCli {

namespace {

using Json = nlohmann::ordered_json;

std::string whereText(const std::optional<std::string>& port) { return port ? "on " + *port : "on every port"; }

Json declarationJson(const MrpAgent::AttributeValue& value, const std::optional<std::string>& port) {
  Json json = {{"app", applicationName(value.application())}};
  if (port) json["port"] = *port;
  valueJsonAdd(json, value);
  return json;
}

// "VLAN 10", "VLANs 10, 20-29", "talker ...": what a request names.
std::string valuesText(const std::vector<MrpAgent::AttributeValue>& values) {
  std::vector<std::uint16_t> vlans;
  for (const MrpAgent::AttributeValue& value : values) {
    const auto* vlan = std::get_if<Mrp::MvrpVlanAttribute>(&value.record());
    if (!vlan) return valueText(values.front());
    vlans.push_back(vlan->vlanId());
  }
  return values.size() == 1 ? valueText(values.front()) : "VLANs " + vlanSetText(vlans);
}

}  // namespace

AgentSupervisor::AgentSupervisor(Options options, Timeline& timeline, std::ostream& log)
    : options_(std::move(options)),
      timeline_(timeline),
      log_(log),
      loop_(Quarn::EventLoop::realLoopNew()),
      flush_(&loop_->clock(), &timeline_),
      control_(
          loop_, options_.controlPath, [this](const std::string& request) { return answer(request); },
          [this](const std::string& line) { log_ << "mrp agent: " << line << std::endl; }),
      signals_(loop_, {SIGINT, SIGTERM, SIGCHLD}, [this](int signo) { handleSignal(signo); }) {
  const Json ports = options_.ports;
  // The workers' timelines count from the supervisor's start.
  const Quarn::Seconds origin = loop_->clock().now();
  for (Mrp::MrpApplication application : options_.applications) {
    const Json start = {{"start",
                         {{"app", applicationName(application)},
                          {"ports", ports},
                          {"config", options_.configText},
                          {"origin", origin}}}};
    workers_.emplace_back(application, nullptr);
    workers_.back().second = std::make_unique<WorkerProcess>(loop_, applicationName(application), start, this, log_);
  }
  // Made after the signals are blocked: the web server's threads inherit
  // the mask, so SIGTERM and SIGINT reach the signal watcher alone.
  if (options_.metricsAddress) {
    metrics_ = std::make_unique<MetricsServer>(loop_, *options_.metricsAddress, [this] {
      return mergedCountersJson(answersTo({{"ask", "counters"}}), options_.ports, workerRestarts());
    });
  }
}

AgentSupervisor::~AgentSupervisor() = default;

void AgentSupervisor::run() {
  loop_->run();
  doStopWorkers();
  timeline_.flush();
}

void AgentSupervisor::handleSignal(int signo) {
  if (signo != SIGCHLD) {
    service_.doStopping();
    loop_->stop();
    return;
  }
  for (auto& [application, worker] : workers_) {
    if (worker) worker->handleChildExit();
  }
}

void AgentSupervisor::doStopWorkers() {
  for (auto& [application, worker] : workers_) worker->doStop();
  const auto anyRunning = [this] {
    return std::any_of(workers_.begin(), workers_.end(), [](const auto& w) { return w.second->running(); });
  };
  const Quarn::Seconds end = loop_->clock().now() + kStopSeconds;
  for (Quarn::Seconds now = loop_->clock().now(); anyRunning() && now < end; now = loop_->clock().now()) {
    loop_->runOnce(end - now);
  }
  for (auto& [application, worker] : workers_) {
    if (!worker->running()) continue;
    log_ << "mrp agent: the " << worker->name() << " worker did not stop in time; killing it" << std::endl;
    worker->doKill();
  }
}

WorkerProcess* AgentSupervisor::workerOf(Mrp::MrpApplication application) const {
  for (const auto& [app, worker] : workers_) {
    if (app == application) return worker.get();
  }
  return nullptr;
}

void AgentSupervisor::onWorkerMessage(WorkerProcess&, const Json& message) {
  // Every worker watches the ports; a port's change is told once.
  if (message.value("timeline", "") == "portChanged") {
    const std::string state = message.value("state", "");
    auto [it, added] = portStates_.try_emplace(message.value("port", ""), state);
    if (!added && it->second == state) return;
    it->second = state;
  }
  if (!relayTimelineMessage(message, Agent::kBridgeName, timeline_)) return;
  if (flush_.time() == Quarn::kInfinity) flush_.timeIs(loop_->clock().now());
}

void AgentSupervisor::onWorkerStarted(WorkerProcess& worker) {
  // One message per port, so that what is declared again reads as one line per port.
  std::map<std::optional<std::string>, std::vector<MrpAgent::AttributeValue>> byPort;
  for (const Declaration& declaration : declared_) {
    if (applicationName(declaration.value.application()) == worker.name()) {
      byPort[declaration.port].push_back(declaration.value);
    }
  }
  for (const auto& [port, values] : byPort) doSend("declare", values, port);
}

void AgentSupervisor::onWorkerReady(WorkerProcess&) {
  const bool allReady =
      std::all_of(workers_.begin(), workers_.end(), [](const auto& w) { return w.second && w.second->ready(); });
  if (allReady) service_.doReady(ServiceNotifier::statusText(options_.applications, options_.ports));
}

void AgentSupervisor::doSend(const char* verb, const std::vector<MrpAgent::AttributeValue>& values,
                             const std::optional<std::string>& port) const {
  if (values.empty()) return;
  Json attributes = Json::array();
  for (const MrpAgent::AttributeValue& value : values) attributes.push_back(attributeMessage(value));
  Json message = {{verb, std::move(attributes)}};
  if (port) message["port"] = *port;
  // A worker that is not running gets it when it is started again.
  if (WorkerProcess* worker = workerOf(values.front().application())) worker->send(message);
}

WorkerAnswers AgentSupervisor::answersTo(const Json& question) {
  WorkerAnswers answers;
  for (auto& [application, worker] : workers_) {
    if (auto answer = worker->ask(question, kAskSeconds)) answers.emplace_back(application, std::move(*answer));
  }
  return answers;
}

ControlAnswer AgentSupervisor::answer(const std::string& text) {
  ControlRequest request;
  try {
    request = controlRequestFromJson(text, options_.ports, options_.applications);
  } catch (const JsonInputError& error) {
    log_ << "mrp agent: control: request refused: " << error.what() << std::endl;
    return ControlAnswer::failure(error.what());
  }
  switch (request.command) {
    case ControlRequest::Command::declare:
      return doDeclare(request);
    case ControlRequest::Command::withdraw:
      return doWithdraw(request);
    case ControlRequest::Command::show:
      return doShow();
    case ControlRequest::Command::counters:
      return doCounters();
    case ControlRequest::Command::ports:
      return doPorts();
    case ControlRequest::Command::streams:
      return doStreams();
    case ControlRequest::Command::trace:
      return doTrace(request);
  }
  return ControlAnswer::failure("unknown command");
}

ControlAnswer AgentSupervisor::doDeclare(const ControlRequest& request) {
  ControlAnswer answer;
  answer.result["declared"] = Json::array();
  for (const MrpAgent::AttributeValue& value : request.values) {
    std::erase_if(declared_, [&](const Declaration& d) { return d.samePlaceAs(value, request.port); });
    declared_.push_back({value, request.port});
    answer.result["declared"].push_back(declarationJson(value, request.port));
  }
  doSend("declare", request.values, request.port);
  answer.text = "declared " + valuesText(request.values) + " " + whereText(request.port) + "\n";
  return answer;
}

ControlAnswer AgentSupervisor::doWithdraw(const ControlRequest& request) {
  std::vector<MrpAgent::AttributeValue> named = request.values;
  if (request.talkerStreamId) {
    auto it = std::find_if(declared_.begin(), declared_.end(), [&](const Declaration& d) {
      return d.port == request.port && std::holds_alternative<Mrp::MsrpTalkerAdvertiseAttribute>(d.value.record()) &&
             d.value.attributeKey() == *request.talkerStreamId;
    });
    if (it == declared_.end()) {
      return ControlAnswer::failure("nothing to withdraw: no talker " + streamIdText(*request.talkerStreamId) +
                                    " is declared " + whereText(request.port));
    }
    named = {it->value};
  }
  std::vector<MrpAgent::AttributeValue> withdrawn;
  for (const MrpAgent::AttributeValue& value : named) {
    auto it = std::find_if(declared_.begin(), declared_.end(),
                           [&](const Declaration& d) { return d.samePlaceAs(value, request.port); });
    if (it == declared_.end()) continue;
    withdrawn.push_back(it->value);
    declared_.erase(it);
  }
  doSend("withdraw", withdrawn, request.port);
  if (withdrawn.empty()) {
    return ControlAnswer::failure("nothing to withdraw: " + valuesText(named) + " is not declared " +
                                  whereText(request.port));
  }
  ControlAnswer answer;
  answer.result["withdrawn"] = Json::array();
  for (const MrpAgent::AttributeValue& value : withdrawn) {
    answer.result["withdrawn"].push_back(declarationJson(value, request.port));
  }
  answer.text = "withdrew " + valuesText(withdrawn) + " " + whereText(request.port) + "\n";
  return answer;
}

ControlAnswer AgentSupervisor::doShow() { return mergedShow(answersTo({{"ask", "show"}}), options_.ports); }

WorkerRestarts AgentSupervisor::workerRestarts() const {
  WorkerRestarts restarts;
  for (const auto& [application, worker] : workers_) restarts.emplace_back(application, worker->restarts());
  return restarts;
}

ControlAnswer AgentSupervisor::doCounters() {
  return mergedCounters(answersTo({{"ask", "counters"}}), options_.ports, workerRestarts());
}

ControlAnswer AgentSupervisor::doPorts() { return mergedPorts(answersTo({{"ask", "ports"}}), options_.ports); }

ControlAnswer AgentSupervisor::doStreams() { return mergedStreams(answersTo({{"ask", "streams"}})); }

ControlAnswer AgentSupervisor::doTrace(const ControlRequest& request) {
  const bool refused = std::any_of(workers_.begin(), workers_.end(), [&](const auto& worker) {
    const auto accepted = worker.second->ask({{"trace", request.traceLevels}}, kAskSeconds);
    return accepted && *accepted == false;
  });
  if (refused) {
    return ControlAnswer::failure("levels: '" + request.traceLevels +
                                  "' is not a trace selection (e.g. MrpSm/0-9,Velo/4 or */0-4; off for none)");
  }
  ControlAnswer answer;
  answer.result = {{"levels", request.traceLevels}};
  answer.text = "trace levels " + request.traceLevels + "\n";
  return answer;
}

}  // namespace MrpCli
