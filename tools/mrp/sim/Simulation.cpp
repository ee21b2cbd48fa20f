#include "sim/Simulation.h"

#include <algorithm>
#include <cstdlib>

#include "MrpModel/MrpWireFormat.h"
#include "common/Applications.h"
#include "velo/EthHdr.h"
#include "velo/Pkt.h"

namespace MrpCli {

namespace {

// The engines read it when they start a LeaveAll timer: set, the period is
// not randomised.
constexpr const char* kNoRandomization = "DISABLE_LEAVE_ALL_RANDOMIZATION";

void environmentIs(const char* name, const std::optional<std::string>& value) {
  if (value) {
    setenv(name, value->c_str(), 1);
  } else {
    unsetenv(name);
  }
}

}  // namespace

Simulation::ProcessSettings::ProcessSettings(Quarn::Ptr<Quarn::Clock> clock, const Scenario::Config& config)
    : clockScope_(std::move(clock)) {
  Quarn::logSinkIs(&logSink_);
  if (const char* before = std::getenv(kNoRandomization)) randomizationBefore_ = before;
  environmentIs(kNoRandomization, config.randomizeLeaveAll ? std::nullopt : std::optional<std::string>("1"));
  std::srand(config.seed);
}

Simulation::ProcessSettings::~ProcessSettings() {
  environmentIs(kNoRandomization, randomizationBefore_);
  Quarn::logSinkIs(nullptr);
}

Simulation::Simulation(const Scenario& scenario, Timeline& timeline)
    : scenario_(scenario), timeline_(timeline), clock_(new Quarn::SimClock), settings_(clock_, scenario.config) {
  for (std::size_t i = 0; i < scenario_.bridges.size(); ++i) doBuildBridge(scenario_.bridges[i], i);
  for (const Scenario::Link& link : scenario_.links) doPlug(link, true);
  for (auto& [name, end] : ports_) {
    for (auto& [application, pam] : end->pams) {
      if (pam->peer()) continue;
      Quarn::Ptr<Velo::MemPam> looseEnd = new Velo::MemPam(Velo::IntfId("loose"), Velo::EthAddr(), clock_);
      looseEnd->rxLimitIs(0);  // drops whatever arrives
      pam->peerIs(looseEnd.ptr());
      end->looseEnds.push_back(looseEnd);
    }
  }
}

// The bridges go first, while the clock they run on is still the process's.
Simulation::~Simulation() { bridges_.clear(); }

void Simulation::doBuildBridge(const Scenario::Bridge& described, std::size_t index) {
  Quarn::Ptr<ApplicationPamFactory> factory = new ApplicationPamFactory;
  for (std::size_t i = 0; i < described.ports.size(); ++i) {
    auto end = std::make_unique<Port>();
    end->bridge = described.name;
    end->name = described.ports[i];
    end->tap = std::make_unique<PortTap>(this, end.get());
    // A locally administered address per port: 02:00:00:<bridge>:<port>.
    const Velo::EthAddr address(0x02, 0, 0, static_cast<std::uint8_t>(index >> 8), static_cast<std::uint8_t>(index),
                                static_cast<std::uint8_t>(i + 1));
    for (Mrp::MrpApplication application : scenario_.applications) {
      Quarn::Ptr<Velo::MemPam> pam = new Velo::MemPam(Velo::IntfId(described.ports[i]), address, clock_);
      pam->tapIs(end->tap.get());
      factory->pamIs(application, pam);
      end->pams[application] = pam;
    }
    ports_[described.name + ":" + described.ports[i]] = std::move(end);
  }
  MrpAgent::BridgeConfig config = described.config;
  config.leaveTime = scenario_.config.leaveTime;
  config.leaveAllTime = scenario_.config.leaveAllTime;
  config.deltaBandwidth = scenario_.config.deltaBandwidth;
  auto bridge = std::make_unique<MrpAgent::Bridge>(described.name, scenario_.applications, config, factory);
  for (const std::string& name : described.ports) bridge->portIs(name);
  bridge->observerIs(this);
  bridges_.push_back(std::move(bridge));
}

void Simulation::captureIs(const Scenario::PortRef& ref, std::shared_ptr<CaptureWriter> capture,
                           Quarn::Seconds origin) {
  Port& end = port(ref.bridge, ref.port);
  end.capture = std::move(capture);
  end.captureOrigin = origin;
}

void Simulation::run(Quarn::Seconds until) {
  for (const Scenario::Event& event : scenario_.events) {
    if (event.at > until) break;
    clock_->advanceTo(event.at);
    doApply(event);
  }
  clock_->advanceTo(until);
  for (const auto& bridge : bridges_) {
    const TimelinePlace place = placeOf(bridge->name(), "");
    timeline_.registrations(place, bridge->registrations());
    if (!bridge->engine(Mrp::MrpApplication::msrp)) continue;
    const MrpAgent::StreamTable table = bridge->streamTable();
    if (!table.streams.empty()) timeline_.streams(place, table);
  }
}

void Simulation::doApply(const Scenario::Event& event) {
  std::visit([this](const auto& action) { doApply(action); }, event.action);
}

void Simulation::doApply(const Scenario::Declare& declare) {
  MrpAgent::Bridge& target = bridge(declare.bridge);
  if (declare.withdraw) {
    target.withdraw(declare.value, declare.port);
  } else {
    target.declare(declare.value, declare.port);
  }
  timeline_.requested(placeOf(declare.bridge, declare.port.value_or("")), declare.value, declare.withdraw);
}

void Simulation::doApply(const Scenario::LinkState& linkState) {
  const Scenario::Link& link = scenario_.links.at(linkState.link);
  doPlug(link, linkState.up);
  timeline_.linkChanged(clock_->now(), link.a.text(), link.b.text(), linkState.up);
}

void Simulation::doPlug(const Scenario::Link& link, bool up) {
  Port& b = port(link.b.bridge, link.b.port);
  for (auto& [application, pam] : port(link.a.bridge, link.a.port).pams) {
    pam->peerIs(up ? b.pams.at(application).ptr() : nullptr);
  }
}

void Simulation::doApply(const Scenario::Role& role) {
  MrpAgent::Bridge& target = bridge(role.bridge);
  // The change is told first: what the port forgets follows from it.
  timeline_.roleChanged(placeOf(role.bridge, role.port), target.portRole(role.port), role.role);
  target.portRoleIs(role.port, role.role);
}

void Simulation::doApply(const Scenario::Inject& inject) {
  const Quarn::Ptr<Velo::Pkt> frame = Velo::Pkt::pktNew(inject.frame.data(), inject.frame.size());
  const auto destination = Velo::EthHdr::fromBytes(inject.frame.data(), inject.frame.size())->dst();
  const Port& end = port(inject.bridge, inject.port);
  const auto addressed = std::find_if(end.pams.begin(), end.pams.end(), [&](const auto& entry) {
    return Mrp::mrpDefaultApplicationFraming(entry.first).macAddr == destination;
  });
  if (addressed != end.pams.end()) {
    addressed->second->pktArrive(*frame);
  } else {
    for (const auto& [application, pam] : end.pams) pam->pktArrive(*frame);
  }
  timeline_.injected(placeOf(inject.bridge, inject.port), inject.frame);
}

void Simulation::handleTransmit(Port& end, const Velo::Pkt& frame) {
  const std::vector<std::uint8_t> bytes(frame.span().begin(), frame.span().end());
  const nlohmann::ordered_json decoded = decoder_.decodeFrame(++transmitted_, bytes);
  // The engines send only their own application's MRPDUs.
  const auto application = applicationNamed(decoded.value("application", ""));
  if (!application) return;
  std::vector<std::uint8_t> leaveAllTypes;
  for (const auto& type : decoded.at("leaveAll")) leaveAllTypes.push_back(type.get<std::uint8_t>());
  timeline_.transmitted(placeOf(end.bridge, end.name), *application, bytes, leaveAllTypes);
  if (end.capture) end.capture->write(end.captureOrigin + clock_->now(), bytes);
}

void Simulation::onJoin(const MrpAgent::Bridge& bridge, const std::string& port, const MrpAgent::AttributeValue& value) {
  timeline_.indicated(placeOf(bridge.name(), port), value, true);
}

void Simulation::onLeave(const MrpAgent::Bridge& bridge, const std::string& port,
                         const MrpAgent::AttributeValue& value) {
  timeline_.indicated(placeOf(bridge.name(), port), value, false);
}

void Simulation::onForget(const MrpAgent::Bridge& bridge, const std::string& port,
                          const MrpAgent::AttributeValue& value, MrpAgent::Bridge::ForgetCause cause) {
  timeline_.forgot(placeOf(bridge.name(), port), value, cause);
}

void Simulation::onReservation(const MrpAgent::Bridge& bridge, const std::string& port,
                               const MrpAgent::ReservationChange& change) {
  timeline_.reservationChanged(placeOf(bridge.name(), port), change);
}

void Simulation::onTalkerFailed(const MrpAgent::Bridge& bridge, const std::string& port,
                                const Mrp::MsrpTalkerFailedAttribute& declared) {
  timeline_.talkerFailed(placeOf(bridge.name(), port), declared);
}

void Simulation::onListenerDeclaration(const MrpAgent::Bridge& bridge, const std::string& port,
                                       const Mrp::MsrpListenerAttribute& listener) {
  timeline_.listenerDeclared(placeOf(bridge.name(), port), listener);
}

Simulation::Port& Simulation::port(const std::string& bridge, const std::string& port) {
  return *ports_.at(bridge + ":" + port);
}

MrpAgent::Bridge& Simulation::bridge(const std::string& name) {
  for (const auto& bridge : bridges_) {
    if (bridge->name() == name) return *bridge;
  }
  throw std::invalid_argument("no bridge " + name);
}

TimelinePlace Simulation::placeOf(const std::string& bridge, const std::string& port) const {
  return {clock_->now(), bridge, port, std::nullopt};
}

}  // namespace MrpCli
