#include "Bridge.h"

#include <algorithm>
#include <stdexcept>

#include "MrpModel/MrpThreePackedEvent.h"
#include "MrpMsrp/MsrpAttrType.h"
#include "quarn/System.h"
#include "stp/Status.h"

namespace MrpAgent {

namespace {

using Role = Stp::MstiPortStatus::Role;

// The spanning tree the bridge runs: one rapid tree, whose instance the
// engines know as "Cist".
constexpr const char* kStpiName = "rstp";
constexpr const char* kMstiName = "Cist";

bool forwardingRole(Role role) { return role == Role::root || role == Role::designated; }

bool talkerType(std::uint8_t type) {
  return type == static_cast<std::uint8_t>(Mrp::MsrpAttrType::talkerAdvertise) ||
         type == static_cast<std::uint8_t>(Mrp::MsrpAttrType::talkerFailed);
}

constexpr std::uint8_t kListener = static_cast<std::uint8_t>(Mrp::MsrpAttrType::listenerVector);
constexpr std::uint8_t kDomain = static_cast<std::uint8_t>(Mrp::MsrpAttrType::domainVector);

// The declaration of a stream's listeners taken together.
Mrp::MsrpListenerEvent merged(Mrp::MsrpListenerEvent a, Mrp::MsrpListenerEvent b) {
  return a == b ? a : Mrp::MsrpListenerEvent::readyFailed;
}

}  // namespace

// One application's engine, with the service object that reports to the bridge.
class Bridge::Engine {
 public:
  Engine(Bridge& bridge, Mrp::MrpApplication application) : lib_(new BridgeMrpLib(&bridge)) {
    lib_->applicationWithDefaultFramingIs(application);
    sm_ = Mrp::mrpSmFactory(bridge.brConfig_, lib_, bridge.mrpConfig_, bridge.mrpStatus_, bridge.stpStatus_,
                            bridge.brTopoConfig_, bridge.ethPhyIntfStatusDir_, bridge.entityManager_, false);
  }

  Mrp::MrpSm& sm() const { return *sm_; }
  BridgeMrpLib& lib() const { return *lib_; }

  // An agent's request for `value` on `port`, as the engine takes it.
  void request(const std::string& port, const AttributeValue& value, std::uint8_t event) const {
    value.transmitFieldIs(*lib_);
    lib_->mrpOutIntfQueueEnq(Velo::IntfId(port));
    lib_->mrpSendAttribute({Velo::IntfId(port), value.attributeType(), event});
  }

  // An agent's request for a LeaveAll of every attribute type on `port`.
  // What the engine has already put in the port's packet goes out first: it
  // would write the LeaveAll's MVRP message over the vectors behind the
  // message's first. The LeaveAll then goes at once, as the engine's own does.
  void requestLeaveAll(const std::string& port) const {
    const Velo::IntfId intfId(port);
    sm_->mrpTransmitTxPacket(intfId, false);
    for (std::uint8_t type = 1; type <= sm_->maxAttrTypes(); ++type) {
      lib_->mrpOutIntfQueueEnq(intfId);
      lib_->mrpSendAttribute({intfId, type, Mrp::MrpParameters::kLeaveAllEvent});
    }
    sm_->mrpTransmitTxPacket(intfId, false);
  }

 private:
  Quarn::Ptr<BridgeMrpLib> lib_;
  Quarn::Ptr<Mrp::MrpSm> sm_;
};

Bridge::Bridge(std::string name, const std::vector<Mrp::MrpApplication>& applications, BridgeConfig config,
               Quarn::Ptr<Velo::PamFactory> pamFactory)
    : name_(std::move(name)),
      config_(std::move(config)),
      mrpConfig_(new Mrp::MrpConfig),
      mrpStatus_(new Mrp::MrpStatus),
      stpStatus_(new Stp::Status),
      brConfig_(new Bridging::Config),
      brTopoConfig_(new Bridging::Topology::Config),
      ethPhyIntfStatusDir_(new Interface::AllEthPhyIntfStatusDir),
      entityManager_(new Hive::EntityManager(name_)),
      propagation_(&Quarn::System::clock(), this) {
  mrpConfig_->leaveTimeIs(config_.leaveTime);
  mrpConfig_->leaveAllTimeIs(config_.leaveAllTime);
  for (const auto& [port, seconds] : config_.portLeaveTime) mrpConfig_->intfLeaveTimeIs(Velo::IntfId(port), seconds);
  for (const auto& [port, seconds] : config_.portLeaveAllTime) {
    mrpConfig_->intfLeaveAllTimeIs(Velo::IntfId(port), seconds);
  }
  mrpConfig_->mrpFloodingIs(config_.flooding);
  stpStatus_->modeIs(Stp::kModeRstp);
  msti_ = stpStatus_->stpiStatusIs(kStpiName)->mstiStatusIs(kMstiName);
  // An engine's packet access keeps the process factory of its creation.
  const Quarn::Ptr<Velo::PamFactory> processFactory = Velo::pamFactory();
  if (pamFactory) Velo::pamFactoryIs(pamFactory);
  for (Mrp::MrpApplication application : applications) {
    if (!engines_.count(application)) engines_.emplace(application, std::make_unique<Engine>(*this, application));
  }
  Velo::pamFactoryIs(processFactory);
  if (engines_.count(Mrp::MrpApplication::msrp)) {
    for (const Mrp::MsrpDomainAttribute& domain : config_.msrpDomains) declare(AttributeValue(domain), std::nullopt);
  }
}

// The engines go first: nothing they do may reach a bridge that is going away.
Bridge::~Bridge() { engines_.clear(); }

Mrp::MrpSm* Bridge::engine(Mrp::MrpApplication application) const {
  auto it = engines_.find(application);
  return it == engines_.end() ? nullptr : &it->second->sm();
}

std::vector<Mrp::MrpApplication> Bridge::applications() const {
  std::vector<Mrp::MrpApplication> out;
  for (const auto& [application, engine] : engines_) out.push_back(application);
  return out;
}

Bridge::Engine& Bridge::engineOf(Mrp::MrpApplication application) const {
  auto it = engines_.find(application);
  if (it == engines_.end()) throw std::invalid_argument("bridge " + name_ + " does not run that application");
  return *it->second;
}

bool Bridge::port(const std::string& port) const {
  return std::find(ports_.begin(), ports_.end(), port) != ports_.end();
}

void Bridge::portIs(const std::string& port) {
  if (this->port(port)) return;
  ports_.push_back(port);
  for (const auto& [application, engine] : engines_) engine->lib().mrpInterfaceEnable(Velo::IntfId(port));
  // The first role a port gets is only noted by the engines.
  msti_->mstiPortStatusIs(port)->roleIs(Role::designated);
  for (const auto& [id, state] : attrs_) dirtyIs(id);
}

void Bridge::portDel(const std::string& port) {
  if (!this->port(port)) return;
  doForgetRegistrations(port, ForgetCause::portClosed);
  for (auto& [id, state] : attrs_) {
    state.declaredOn.erase(port);
    state.portDeclared.erase(port);
    state.declaredNew.erase(port);
  }
  for (const auto& [application, engine] : engines_) engine->lib().mrpInterfaceDisable(Velo::IntfId(port));
  msti_->mstiPortStatusDel(port);
  ports_.erase(std::find(ports_.begin(), ports_.end(), port));
}

void Bridge::portRoleIs(const std::string& port, Role role) {
  if (!this->port(port)) throw std::invalid_argument("bridge " + name_ + " has no port " + port);
  const bool wasForwarding = forwarding(port);
  msti_->mstiPortStatus(port)->roleIs(role);
  if (wasForwarding == forwarding(port)) return;
  if (forwarding(port)) {
    leaveAllIs(port);
  } else {
    doForgetRegistrations(port, ForgetCause::blocked);
  }
  for (const auto& [id, state] : attrs_) dirtyIs(id);
}

void Bridge::leaveAllIs(const std::string& port) {
  if (!this->port(port)) throw std::invalid_argument("bridge " + name_ + " has no port " + port);
  for (const auto& [application, engine] : engines_) engine->requestLeaveAll(port);
}

Role Bridge::portRole(const std::string& port) const {
  const Quarn::Ptr<Stp::MstiPortStatus> status = msti_->mstiPortStatus(port);
  return status ? status->role() : Role::disabled;
}

bool Bridge::forwarding(const std::string& port) const { return forwardingRole(portRole(port)); }

void Bridge::doForgetRegistrations(const std::string& port, ForgetCause cause) {
  for (auto& [id, state] : attrs_) {
    auto registered = state.registeredOn.find(port);
    if (registered == state.registeredOn.end()) continue;
    const AttributeValue value = registered->second;
    state.registeredOn.erase(registered);
    dirtyIs(id);
    if (observer_) observer_->onForget(*this, port, value, cause);
  }
}

Bridge::AttrId Bridge::attrIdOf(const AttributeValue& value) {
  return {value.application(), value.attributeType(), value.attributeKey()};
}

void Bridge::declare(const AttributeValue& value, const std::optional<std::string>& port, bool declareNew) {
  engineOf(value.application());  // refuses an application the bridge does not run
  const AttrId id = attrIdOf(value);
  AttrState& state = attrs_[id];
  if (port) {
    state.portDeclared.insert_or_assign(*port, value);
    if (declareNew) state.declaredNew.insert(*port);
  } else {
    state.bridgeWide = value;
  }
  dirtyIs(id);
}

void Bridge::withdraw(const AttributeValue& value, const std::optional<std::string>& port) {
  auto it = attrs_.find(attrIdOf(value));
  if (it == attrs_.end()) return;
  if (port) {
    it->second.portDeclared.erase(*port);
    it->second.declaredNew.erase(*port);
  } else {
    it->second.bridgeWide.reset();
  }
  dirtyIs(it->first);
}

void Bridge::withdrawAll() {
  withdrawnAll_ = true;
  for (const auto& [id, state] : attrs_) dirtyIs(id);
}

void Bridge::handleJoin(const Mrp::MrpParameters& indication, const AttributeValue& value) {
  const std::string port = indication.intfId.name();
  AttrState& state = attrs_[attrIdOf(value)];
  state.registeredOn.insert_or_assign(port, value);
  dirtyIs(attrIdOf(value));
  if (observer_) observer_->onJoin(*this, port, value);
}

void Bridge::handleLeave(const Mrp::MrpParameters& indication, Mrp::MrpApplication application) {
  const std::string port = indication.intfId.name();
  const AttrId id{application, indication.attributeType, indication.attributeKey};
  auto it = attrs_.find(id);
  if (it == attrs_.end()) return;
  auto registered = it->second.registeredOn.find(port);
  if (registered == it->second.registeredOn.end()) return;
  const AttributeValue value = registered->second;
  it->second.registeredOn.erase(registered);
  dirtyIs(id);
  if (observer_) observer_->onLeave(*this, port, value);
}

void Bridge::dirtyIs(const AttrId& id) {
  dirty_.insert(id);
  // A listener follows its stream's talker.
  if (id.application == Mrp::MrpApplication::msrp && talkerType(id.attributeType)) {
    dirty_.insert({id.application, kListener, id.attributeKey});
  }
  if (propagation_.time() == Quarn::kInfinity) propagation_.timeIs(Quarn::System::currentTime());
}

void Bridge::doPropagate() {
  while (!dirty_.empty()) {
    const AttrId id = *dirty_.begin();
    dirty_.erase(dirty_.begin());
    doPropagate(id);
  }
}

void Bridge::doPropagate(const AttrId& id) {
  auto it = attrs_.find(id);
  if (it == attrs_.end()) return;
  AttrState& state = it->second;
  Engine& engine = engineOf(id.application);
  for (const std::string& port : ports_) {
    const std::optional<AttributeValue> want = desiredOn(id, state, port);
    auto have = state.declaredOn.find(port);
    if (want && (have == state.declaredOn.end() || have->second != *want)) {
      const bool declareNew = state.declaredNew.count(port) != 0;
      engine.request(port, *want,
                     static_cast<std::uint8_t>(declareNew ? Mrp::MrpThreePackedEvent::newEvent
                                                          : Mrp::MrpThreePackedEvent::joinIn));
      state.declaredOn.insert_or_assign(port, *want);
    } else if (!want && have != state.declaredOn.end()) {
      engine.request(port, have->second, static_cast<std::uint8_t>(Mrp::MrpThreePackedEvent::lv));
      state.declaredOn.erase(have);
    }
  }
  if (state.empty()) attrs_.erase(it);
}

std::optional<AttributeValue> Bridge::desiredOn(const AttrId& id, const AttrState& state,
                                                const std::string& port) const {
  if (withdrawnAll_) return std::nullopt;
  if (auto own = state.portDeclared.find(port); own != state.portDeclared.end()) return own->second;
  if (state.bridgeWide) return state.bridgeWide;
  if (!forwarding(port)) return std::nullopt;
  const bool msrp = id.application == Mrp::MrpApplication::msrp;
  // A bridge declares its own domains; it does not pass on its neighbours'.
  if (msrp && id.attributeType == kDomain) return std::nullopt;
  if (msrp && id.attributeType == kListener) {
    if (talkerPortOf(id.attributeKey) != port) return std::nullopt;
    return mergedListener(state, port);
  }
  for (const auto& [other, value] : state.registeredOn) {
    if (other != port && forwarding(other)) return value;
  }
  return std::nullopt;
}

std::optional<AttributeValue> Bridge::mergedListener(const AttrState& state, const std::string& talkerPort) const {
  std::optional<Mrp::MsrpListenerAttribute> listener;
  for (const auto& [other, value] : state.registeredOn) {
    if (other == talkerPort || !forwarding(other)) continue;
    const auto& heard = std::get<Mrp::MsrpListenerAttribute>(value.record());
    if (!listener) {
      listener = heard;
    } else {
      listener->listenerEventIs(merged(listener->listenerEvent(), heard.listenerEvent()));
    }
  }
  if (!listener) return std::nullopt;
  return AttributeValue(*listener);
}

std::optional<std::string> Bridge::talkerPortOf(std::uint64_t streamId) const {
  for (const auto type : {Mrp::MsrpAttrType::talkerAdvertise, Mrp::MsrpAttrType::talkerFailed}) {
    auto it = attrs_.find({Mrp::MrpApplication::msrp, static_cast<std::uint8_t>(type), streamId});
    if (it == attrs_.end()) continue;
    for (const auto& [port, value] : it->second.registeredOn) {
      if (forwarding(port)) return port;
    }
  }
  return std::nullopt;
}

std::vector<std::pair<std::string, AttributeValue>> Bridge::declarations() const {
  std::vector<std::pair<std::string, AttributeValue>> out;
  for (const auto& [id, state] : attrs_) {
    for (const auto& [port, value] : state.declaredOn) out.emplace_back(port, value);
  }
  return out;
}

std::vector<Registration> Bridge::registrations() const {
  std::vector<Registration> out;
  for (const auto& [application, engine] : engines_) {
    Mrp::MrpSm& sm = engine->sm();
    if (!sm.active()) continue;
    for (const std::string& port : ports_) {
      const Velo::IntfId intfId(port);
      for (std::uint8_t type = 1; type <= sm.maxAttrTypes(); ++type) {
        const Quarn::Ptr<Mrp::MrpAttrIter> iter = sm.mrpAttrIter({intfId, type});
        if (!iter) continue;
        for (std::uint64_t key : iter->attributeKeys()) {
          const Quarn::Ptr<Mrp::MrpAttrDatabase> entry = sm.mrpGetAttrFromDatabase(intfId, type, key, true);
          if (!entry) continue;
          const std::optional<AttributeValue> value = AttributeValue::fromOctets(application, type, entry->attributeValues());
          if (!value) continue;
          out.push_back({port, application, *value, entry->registrarState(), entry->applicantState()});
        }
      }
    }
  }
  return out;
}

}  // namespace MrpAgent
