#include "agent/Agent.h"

#include <algorithm>
#include <ostream>

#include "agent/SysfsInterface.h"
#include "common/Applications.h"
#include "common/WallTime.h"
#include "control/AttributeMessage.h"
#include "report/StreamTableJson.h"
#include "report/ValueText.h"
#include "velo/PacketSocketPam.h"

namespace MrpCli {

namespace {

constexpr const char* kSpeedFromConfiguration = "configuration";
constexpr const char* kSpeedFromKernel = "kernel";
constexpr const char* kSpeedFromDefault = "default";

// How long the loop runs after the last Lv messages were handed to the
// ports: the engine sends what is left on its 0.1 s transmit timer.
constexpr Quarn::Seconds kFlushSeconds = 0.3;

}  // namespace

Agent::Agent(Options options, Quarn::Ptr<Quarn::EventLoop> loop, Timeline& timeline, std::ostream& log)
    : options_(std::move(options)),
      loop_(std::move(loop)),
      timeline_(timeline),
      log_(log),
      processClock_(loop_->clockPtr()),
      stampEnd_(&loop_->clock(), this),
      speeds_(portSpeedsOf(options_)),
      sockets_(new CountingPamFactory(new Velo::PacketSocketPamFactory(loop_), [this] { return engineCounters(); })),
      bridge_(kBridgeName, {options_.application}, bridgeConfigOf(options_, speeds_), sockets_),
      ports_(loop_, options_.ports, this) {
  bridge_.observerIs(this);
  ports_.doRefresh();
}

Agent::PortSpeeds Agent::portSpeedsOf(const Options& options) {
  PortSpeeds speeds;
  for (const std::string& port : options.ports) {
    if (auto configured = options.config.portSpeed.find(port); configured != options.config.portSpeed.end()) {
      speeds[port] = {configured->second, kSpeedFromConfiguration};
    } else if (const std::optional<std::uint64_t> kernel = SysfsInterface(port).speed()) {
      speeds[port] = {*kernel, kSpeedFromKernel};
    } else {
      speeds[port] = {options.config.defaultPortSpeed, kSpeedFromDefault};
    }
  }
  return speeds;
}

MrpAgent::BridgeConfig Agent::bridgeConfigOf(const Options& options, const PortSpeeds& speeds) {
  MrpAgent::BridgeConfig config = options.config;
  for (const auto& [port, speed] : speeds) config.portSpeed[port] = speed.bitsPerSecond;
  if (!config.bridgeId && !options.ports.empty()) {
    // As a bridge makes its identifier: priority 0x8000 and its address.
    if (const std::optional<std::uint64_t> address = SysfsInterface(options.ports.front()).address()) {
      config.bridgeId = (std::uint64_t{0x8000} << 48) | *address;
    }
  }
  return config;
}

// The bridge goes while the loop's clock is still the process's.
Agent::~Agent() { bridge_.observerIs(nullptr); }

void Agent::declare(const MrpAgent::AttributeValue& value, const std::optional<std::string>& port) {
  std::erase_if(declared_, [&](const Declaration& d) { return d.samePlaceAs(value, port); });
  declared_.push_back({value, port});
  bridge_.declare(value, port);
  timeline_.requested(placeOf(port.value_or("")), value, false);
}

void Agent::withdraw(const MrpAgent::AttributeValue& value, const std::optional<std::string>& port) {
  std::erase_if(declared_, [&](const Declaration& d) { return d.samePlaceAs(value, port); });
  bridge_.withdraw(value, port);
  timeline_.requested(placeOf(port.value_or("")), value, true);
}

void Agent::doStop() {
  for (const auto& [port, value] : bridge_.declarations()) timeline_.requested(placeOf(port), value, true);
  bridge_.withdrawAll();
  loop_->runUntilIdle();  // the bridge passes the withdrawals to its engine
  doFlush();
}

void Agent::doFlush() {
  if (Mrp::MrpSm* engine = bridge_.engine(options_.application); engine && engine->active()) {
    engine->mrpTransmitTxAttributes();
  }
  const Quarn::Seconds end = loop_->clock().now() + kFlushSeconds;
  for (Quarn::Seconds now = loop_->clock().now(); now < end; now = loop_->clock().now()) loop_->runOnce(end - now);
}

TimelinePlace Agent::placeOf(const std::string& port) const {
  if (!stamp_) {
    const Quarn::Seconds now = loop_->clock().now();
    stamp_ = TimelinePlace{now - options_.origin, kBridgeName, "", wallTimeNow()};
    stampEnd_.timeIs(now);
  }
  TimelinePlace place = *stamp_;
  place.port = port;
  return place;
}

void Agent::onJoin(const MrpAgent::Bridge&, const std::string& port, const MrpAgent::AttributeValue& value) {
  timeline_.indicated(placeOf(port), value, true);
}

void Agent::onLeave(const MrpAgent::Bridge&, const std::string& port, const MrpAgent::AttributeValue& value) {
  ++sockets_->portCounters()[port].leaveIndications;
  timeline_.indicated(placeOf(port), value, false);
}

void Agent::onForget(const MrpAgent::Bridge&, const std::string& port, const MrpAgent::AttributeValue& value,
                     MrpAgent::Bridge::ForgetCause cause) {
  timeline_.forgot(placeOf(port), value, cause);
}

void Agent::onReservation(const MrpAgent::Bridge&, const std::string& port,
                          const MrpAgent::ReservationChange& change) {
  timeline_.reservationChanged(placeOf(port), change);
}

void Agent::onTalkerFailed(const MrpAgent::Bridge&, const std::string& port,
                           const Mrp::MsrpTalkerFailedAttribute& declared) {
  ++sockets_->portCounters()[port].talkerFailedDeclared[declared.failureInformation().failureCode()];
  timeline_.talkerFailed(placeOf(port), declared);
}

void Agent::onListenerDeclaration(const MrpAgent::Bridge&, const std::string& port,
                                  const Mrp::MsrpListenerAttribute& listener) {
  timeline_.listenerDeclared(placeOf(port), listener);
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
  // A link that comes up may have another speed than at start.
  PortSpeed& speed = speeds_.at(port);
  if (speed.from != kSpeedFromConfiguration) {
    if (const std::optional<std::uint64_t> kernel = SysfsInterface(port).speed()) speed = {*kernel, kSpeedFromKernel};
    bridge_.portSpeedIs(port, speed.bitsPerSecond);
  }
  bridge_.portIs(port);
  const std::string socket = socketState(port);
  if (socket != "open") {
    log_ << "mrp agent: " << port << ": " << applicationName(options_.application)
         << " cannot use the port: " << socket << std::endl;
  }
  for (const Declaration& declaration : declared_) {
    if (declaration.port == port) bridge_.declare(declaration.value, port);
  }
  bridge_.leaveAllIs(port);
}

std::string Agent::socketState(const std::string& port) const {
  const Mrp::MrpSm& engine = *bridge_.engine(options_.application);
  const Velo::IntfId intfId(port);
  if (engine.pamCollection()->intfPam(intfId)) return "open";
  const auto status = engine.deviceIntfStatusDir()->deviceIntfStatus(intfId);
  return status && !status->pamError().empty() ? status->pamError() : "closed";
}

nlohmann::ordered_json Agent::registrationsMessage() const {
  nlohmann::ordered_json entries = nlohmann::ordered_json::array();
  for (const MrpAgent::Registration& held : bridge_.registrations()) {
    entries.push_back({{"port", held.port},
                       {"attribute", attributeMessage(held.value)},
                       {"registrar", static_cast<unsigned>(held.registrar)},
                       {"applicant", static_cast<unsigned>(held.applicant)}});
  }
  return entries;
}

const Mrp::MrpCounters* Agent::engineCounters() const {
  const Mrp::MrpSm* engine = bridge_.engine(options_.application);
  return engine && engine->active() ? engine->mrpCounters().ptr() : nullptr;
}

nlohmann::ordered_json Agent::countersMessage() const {
  nlohmann::ordered_json engine = nlohmann::ordered_json::object();
  if (const Mrp::MrpCounters* counters = engineCounters()) {
#define MRP_AGENT_COUNTER(counter) engine[#counter] = counters->counter();
    MRP_COUNTERS(MRP_AGENT_COUNTER)
#undef MRP_AGENT_COUNTER
  }
  const auto registrations = registrationCounts();
  const auto reservations = reservationCounts();
  nlohmann::ordered_json ports = nlohmann::ordered_json::array();
  for (const std::string& port : options_.ports) {
    nlohmann::ordered_json entry = {{"port", port}};
    const auto counted = sockets_->portCounters().find(port);
    entry.update(counted != sockets_->portCounters().end() ? counted->second.json() : PortCounters{}.json());
    const auto registered = registrations.find(port);
    entry["registrations"] = registered != registrations.end() ? nlohmann::ordered_json(registered->second)
                                                               : nlohmann::ordered_json::object();
    const auto reserved = reservations.find(port);
    entry["reservations"] = reserved != reservations.end() ? reserved->second : nlohmann::ordered_json::array();
    ports.push_back(std::move(entry));
  }
  return {{"engine", std::move(engine)}, {"ports", std::move(ports)}};
}

std::map<std::string, std::map<std::string, unsigned>> Agent::registrationCounts() const {
  std::map<std::string, std::map<std::string, unsigned>> counts;
  for (const MrpAgent::Registration& held : bridge_.registrations()) {
    if (held.registrar == Mrp::MrpRegistrarState::mt) continue;
    ++counts[held.port][attributeTypeText(held.application, held.value.attributeType())];
  }
  return counts;
}

std::map<std::string, nlohmann::ordered_json> Agent::reservationCounts() const {
  std::map<std::string, nlohmann::ordered_json> counts;
  if (options_.application != Mrp::MrpApplication::msrp) return counts;
  const MrpAgent::StreamTable table = bridge_.streamTable();
  for (const MrpAgent::StreamTable::ClassRow& row : table.classes) {
    const auto streams = std::count_if(table.streams.begin(), table.streams.end(), [&row](const auto& stream) {
      return std::any_of(stream.ports.begin(), stream.ports.end(), [&row](const auto& at) {
        return at.port == row.port && at.reserved && at.srClass == row.srClass;
      });
    });
    counts[row.port].push_back({{"class", std::string(1, row.srClass.name)}, {"streams", streams}, {"bandwidth", row.reserved}});
  }
  return counts;
}

nlohmann::ordered_json Agent::portsMessage() const {
  nlohmann::ordered_json ports = nlohmann::ordered_json::array();
  for (const std::string& port : options_.ports) {
    const PortSpeed& speed = speeds_.at(port);
    ports.push_back({{"port", port},
                     {"state", portStateName(ports_.state(port))},
                     {"socket", socketState(port)},
                     {"speed", speed.bitsPerSecond},
                     {"speedFrom", speed.from}});
  }
  return ports;
}

nlohmann::ordered_json Agent::streamsMessage() const { return streamTableJson(bridge_.streamTable()); }

}  // namespace MrpCli
