#include "Agent.h"

#include <signal.h>

#include <algorithm>
#include <ostream>

#include "Applications.h"
#include "JsonNode.h"
#include "RegistrationText.h"
#include "TextTable.h"
#include "ValueText.h"
#include "quarn/System.h"
#include "quarn/Trace.h"
#include "velo/PacketSocketPam.h"

namespace MrpCli {

namespace {

// How long the loop runs after the last Lv messages were handed to the
// ports: the engines send what is left on their 0.1 s transmit timer.
constexpr Quarn::Seconds kFlushSeconds = 0.3;

bool samePlace(const MrpAgent::AttributeValue& a, const std::optional<std::string>& portA,
               const MrpAgent::AttributeValue& b, const std::optional<std::string>& portB) {
  return a.application() == b.application() && a.attributeType() == b.attributeType() &&
         a.attributeKey() == b.attributeKey() && portA == portB;
}

std::string whereText(const std::optional<std::string>& port) { return port ? "on " + *port : "on every port"; }

nlohmann::ordered_json declarationJson(const MrpAgent::AttributeValue& value, const std::optional<std::string>& port) {
  nlohmann::ordered_json json = {{"app", applicationName(value.application())}};
  if (port) json["port"] = *port;
  valueJsonAdd(json, value);
  return json;
}

}  // namespace

Agent::ProcessClock::ProcessClock(const Quarn::Ptr<Quarn::EventLoop>& loop) {
  Quarn::System::clockIs(loop->clockPtr());
}

Agent::ProcessClock::~ProcessClock() { Quarn::System::clockIs(nullptr); }

Agent::Agent(Options options, Timeline& timeline, std::ostream& log)
    : options_(std::move(options)),
      timeline_(timeline),
      log_(log),
      loop_(Quarn::EventLoop::realLoopNew()),
      processClock_(loop_),
      start_(loop_->clock().now()),
      bridge_(kBridgeName, options_.applications, options_.config, new Velo::PacketSocketPamFactory(loop_)),
      control_(
          loop_, options_.controlPath, [this](const std::string& request) { return answer(request); },
          [this](const std::string& line) { log_ << "mrp agent: " << line << std::endl; }),
      signals_(loop_, {SIGINT, SIGTERM}, [this](int) { loop_->stop(); }),
      ports_(loop_, options_.ports, this) {
  bridge_.observerIs(this);
  ports_.doRefresh();
}

// The bridge goes while the loop's clock is still the process's.
Agent::~Agent() { bridge_.observerIs(nullptr); }

void Agent::run() {
  loop_->run();
  doStop();
}

void Agent::doStop() {
  bridge_.withdrawAll();
  loop_->runUntilIdle();  // the bridge passes the withdrawals to its engines
  doFlush();
}

void Agent::doFlush() {
  for (Mrp::MrpApplication application : bridge_.applications()) {
    if (Mrp::MrpSm* engine = bridge_.engine(application); engine && engine->active()) engine->mrpTransmitTxAttributes();
  }
  const Quarn::Seconds end = loop_->clock().now() + kFlushSeconds;
  for (Quarn::Seconds now = loop_->clock().now(); now < end; now = loop_->clock().now()) loop_->runOnce(end - now);
}

TimelinePlace Agent::placeOf(const std::string& port) const {
  return {loop_->clock().now() - start_, kBridgeName, port};
}

void Agent::onJoin(const MrpAgent::Bridge&, const std::string& port, const MrpAgent::AttributeValue& value) {
  timeline_.indicated(placeOf(port), value, true);
}

void Agent::onLeave(const MrpAgent::Bridge&, const std::string& port, const MrpAgent::AttributeValue& value) {
  timeline_.indicated(placeOf(port), value, false);
}

void Agent::onPortState(const std::string& port, PortWatcher::State state) {
  timeline_.portChanged(placeOf(port), portStateName(state));
  if (state == PortWatcher::State::up) {
    doOpen(port);
  } else {
    bridge_.portDel(port);
  }
}

void Agent::doOpen(const std::string& port) {
  bridge_.portIs(port);
  const Velo::IntfId intfId(port);
  for (Mrp::MrpApplication application : bridge_.applications()) {
    const Mrp::MrpSm& engine = *bridge_.engine(application);
    if (engine.pamCollection()->intfPam(intfId)) continue;
    const auto status = engine.deviceIntfStatusDir()->deviceIntfStatus(intfId);
    log_ << "mrp agent: " << port << ": " << applicationName(application)
         << " cannot use the port: " << (status ? status->pamError() : std::string("no socket")) << std::endl;
  }
  for (const Declaration& declaration : declared_) {
    if (declaration.port == port) bridge_.declare(declaration.value, port);
  }
}

ControlAnswer Agent::answer(const std::string& text) {
  ControlRequest request;
  try {
    request = controlRequestFromJson(text, options_.ports, bridge_.applications());
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
    case ControlRequest::Command::trace:
      return doTrace(request);
  }
  return ControlAnswer::failure("unknown command");
}

ControlAnswer Agent::doDeclare(const ControlRequest& request) {
  const MrpAgent::AttributeValue& value = *request.value;
  std::erase_if(declared_, [&](const Declaration& d) { return samePlace(d.value, d.port, value, request.port); });
  declared_.push_back({value, request.port});
  bridge_.declare(value, request.port);
  timeline_.requested(placeOf(request.port.value_or("")), value, false);
  ControlAnswer answer;
  answer.result = {{"declared", declarationJson(value, request.port)}};
  answer.text = "declared " + valueText(value) + " " + whereText(request.port) + "\n";
  return answer;
}

ControlAnswer Agent::doWithdraw(const ControlRequest& request) {
  const MrpAgent::AttributeValue& value = *request.value;
  const auto removed =
      std::erase_if(declared_, [&](const Declaration& d) { return samePlace(d.value, d.port, value, request.port); });
  if (removed == 0) {
    return ControlAnswer::failure("nothing to withdraw: " + valueText(value) + " is not declared " +
                                  whereText(request.port));
  }
  bridge_.withdraw(value, request.port);
  timeline_.requested(placeOf(request.port.value_or("")), value, true);
  ControlAnswer answer;
  answer.result = {{"withdrawn", declarationJson(value, request.port)}};
  answer.text = "withdrew " + valueText(value) + " " + whereText(request.port) + "\n";
  return answer;
}

ControlAnswer Agent::doShow() const {
  const std::vector<MrpAgent::Registration> held = bridge_.registrations();
  ControlAnswer answer;
  answer.result = {{"registrations", registrationsJson(held)}};
  answer.text = registrationTable(held);
  return answer;
}

ControlAnswer Agent::doCounters() const {
  ControlAnswer answer;
  std::vector<std::vector<std::string>> rows{{"app", "counter", "value"}};
  for (Mrp::MrpApplication application : options_.applications) {
    const Mrp::MrpSm* engine = bridge_.engine(application);
    if (!engine->active()) continue;
    const Mrp::MrpCounters& counters = *engine->mrpCounters();
    nlohmann::ordered_json values = nlohmann::ordered_json::object();
#define MRP_AGENT_COUNTER(counter)                                                           \
  values[#counter] = counters.counter();                                                     \
  rows.push_back({applicationName(application), #counter, std::to_string(counters.counter())});
    MRP_COUNTERS(MRP_AGENT_COUNTER)
#undef MRP_AGENT_COUNTER
    answer.result[applicationName(application)] = std::move(values);
  }
  answer.text = textTable(rows);
  return answer;
}

ControlAnswer Agent::doPorts() const {
  ControlAnswer answer;
  std::vector<std::string> heading{"port", "state"};
  for (Mrp::MrpApplication application : options_.applications) heading.push_back(applicationName(application));
  std::vector<std::vector<std::string>> rows{heading};
  nlohmann::ordered_json ports = nlohmann::ordered_json::array();
  for (const std::string& port : options_.ports) {
    const char* state = portStateName(ports_.state(port));
    nlohmann::ordered_json sockets = nlohmann::ordered_json::object();
    std::vector<std::string> row{port, state};
    for (Mrp::MrpApplication application : options_.applications) {
      const Mrp::MrpSm& engine = *bridge_.engine(application);
      const Velo::IntfId intfId(port);
      std::string socket = "closed";
      if (engine.pamCollection()->intfPam(intfId)) {
        socket = "open";
      } else if (const auto status = engine.deviceIntfStatusDir()->deviceIntfStatus(intfId);
                 status && !status->pamError().empty()) {
        socket = status->pamError();
      }
      sockets[applicationName(application)] = socket;
      row.push_back(socket);
    }
    ports.push_back({{"port", port}, {"state", state}, {"sockets", std::move(sockets)}});
    rows.push_back(std::move(row));
  }
  answer.result = {{"ports", std::move(ports)}};
  answer.text = textTable(rows);
  return answer;
}

ControlAnswer Agent::doTrace(const ControlRequest& request) {
  if (request.traceLevels == "off") {
    Quarn::traceLevelsClear();
  } else if (!Quarn::traceLevelsIs(request.traceLevels)) {
    return ControlAnswer::failure("levels: '" + request.traceLevels +
                                  "' is not a trace selection (e.g. MrpSm/0-9,Velo/4 or */0-4; off for none)");
  }
  ControlAnswer answer;
  answer.result = {{"levels", request.traceLevels}};
  answer.text = "trace levels " + request.traceLevels + "\n";
  return answer;
}

}  // namespace MrpCli
