#include "Bridge.h"

#include <algorithm>
#include <stdexcept>

#include "BridgeId.h"
#include "ListenerMerge.h"
#include "MrpModel/MrpThreePackedEvent.h"
#include "MrpMsrp/MsrpAttrType.h"
#include "quarn/System.h"
#include "stp/Status.h"
#include "velo/PamFactoryScope.h"

namespace MrpAgent {

namespace {

using Role = Stp::MstiPortStatus::Role;

// The spanning tree the bridge runs: one rapid tree, whose instance the
// engines know as "Cist".
constexpr const char* kStpiName = "rstp";
constexpr const char* kMstiName = "Cist";

bool forwardingRole(Role role) { return role == Role::root || role == Role::designated; }

constexpr std::uint8_t kTalkerAdvertise = static_cast<std::uint8_t>(Mrp::MsrpAttrType::talkerAdvertise);
constexpr std::uint8_t kTalkerFailed = static_cast<std::uint8_t>(Mrp::MsrpAttrType::talkerFailed);
constexpr std::uint8_t kListener = static_cast<std::uint8_t>(Mrp::MsrpAttrType::listenerVector);
constexpr std::uint8_t kDomain = static_cast<std::uint8_t>(Mrp::MsrpAttrType::domainVector);
constexpr std::uint8_t kStreamTypes[] = {kTalkerAdvertise, kTalkerFailed, kListener};

// The attribute types of a stream: talkers and listeners, keyed by stream id.
bool streamType(Mrp::MrpApplication application, std::uint8_t type) {
  return application == Mrp::MrpApplication::msrp &&
         (type == kTalkerAdvertise || type == kTalkerFailed || type == kListener);
}

bool listenerAsksToReserve(const AttributeValue& listener) {
  const std::optional<Mrp::MsrpListenerEvent> declaration = listener.declaration();
  return declaration == Mrp::MsrpListenerEvent::ready || declaration == Mrp::MsrpListenerEvent::readyFailed;
}

}  // namespace

// One application's engine, with the service object that reports to the bridge.
class Bridge::Engine {
 public:
  Engine(Bridge& bridge, Mrp::MrpApplication application) : lib_(new BridgeMrpLib(&bridge)) {
    lib_->applicationWithDefaultFramingIs(application);
    sm_ = Mrp::mrpSmFactory(bridge.records_.withMrpLib(lib_), false);
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
      records_(Mrp::mrpSmRecordsNew(nullptr, name_)),
      bridgeId_(config_.bridgeId.value_or(bridgeIdOfName(name_))),
      propagation_(&Quarn::System::clock(), this) {
  Mrp::MrpConfig& mrpConfig = *records_.mrpConfig;
  mrpConfig.leaveTimeIs(config_.leaveTime);
  mrpConfig.leaveAllTimeIs(config_.leaveAllTime);
  for (const auto& [port, seconds] : config_.portLeaveTime) mrpConfig.intfLeaveTimeIs(Velo::IntfId(port), seconds);
  for (const auto& [port, seconds] : config_.portLeaveAllTime) {
    mrpConfig.intfLeaveAllTimeIs(Velo::IntfId(port), seconds);
  }
  mrpConfig.mrpFloodingIs(config_.flooding);
  records_.stpStatus->modeIs(Stp::kModeRstp);
  msti_ = records_.stpStatus->stpiStatusIs(kStpiName)->mstiStatusIs(kMstiName);
  {
    // An engine's packet access keeps the process factory of its creation.
    const Velo::PamFactoryScope factoryScope(pamFactory ? pamFactory : Velo::pamFactory());
    for (Mrp::MrpApplication application : applications) {
      if (!engines_.count(application)) engines_.emplace(application, std::make_unique<Engine>(*this, application));
    }
  }
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
  reservations_.try_emplace(port, config_.speedOf(port), config_.deltaBandwidth);
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
  while (!reservations_.at(port).reservations().empty()) {
    doRelease(reservations_.at(port).reservations().front().streamId, port);
  }
  reservations_.erase(port);
  for (auto& [streamId, declared] : talkerDeclared_) declared.erase(port);
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

void Bridge::handleListenerJoin(const Mrp::MrpParameters& join, const AttributeValue& value) {
  const std::string port = join.intfId.name();
  auto it = attrs_.find(attrIdOf(value));
  if (it == attrs_.end()) return;
  auto registered = it->second.registeredOn.find(port);
  if (registered == it->second.registeredOn.end() || registered->second == value) return;
  registered->second = value;
  dirtyIs(it->first);
  if (observer_) observer_->onListenerDeclaration(*this, port, std::get<Mrp::MsrpListenerAttribute>(value.record()));
}

void Bridge::dirtyIs(const AttrId& id) {
  if (streamType(id.application, id.attributeType)) {
    for (std::uint8_t type : kStreamTypes) dirty_.insert({id.application, type, id.attributeKey});
  } else {
    dirty_.insert(id);
  }
  // Domains decide where a stream may go.
  if (id.application == Mrp::MrpApplication::msrp && id.attributeType == kDomain) dirtyAllStreams();
  if (propagation_.time() == Quarn::kInfinity) propagation_.timeIs(Quarn::System::currentTime());
}

void Bridge::dirtyAllStreams() {
  for (const auto& [id, state] : attrs_) {
    if (streamType(id.application, id.attributeType)) dirty_.insert(id);
  }
  for (const auto& [streamId, declared] : talkerDeclared_) {
    for (std::uint8_t type : kStreamTypes) dirty_.insert({Mrp::MrpApplication::msrp, type, streamId});
  }
}

void Bridge::doPropagate() {
  for (;;) {
    while (!dirty_.empty()) {
      const AttrId id = *dirty_.begin();
      if (streamType(id.application, id.attributeType)) {
        for (std::uint8_t type : kStreamTypes) dirty_.erase({id.application, type, id.attributeKey});
        doPropagateStream(id.attributeKey);
      } else {
        dirty_.erase(dirty_.begin());
        doPropagate(id);
      }
    }
    // Reservations made or released change where the other streams fit:
    // they are looked at again once, not after each one.
    if (!reservationsChanged_) return;
    reservationsChanged_ = false;
    dirtyAllStreams();
  }
}

void Bridge::doPropagateStream(std::uint64_t streamId) {
  const std::optional<HeardTalker> talker = talkerOf(streamId);
  std::map<std::string, AttributeValue>& declared = talkerDeclared_[streamId];
  for (const std::string& port : ports_) {
    const std::optional<AttributeValue> decision = talkerDeclarationOf(streamId, talker, port);
    auto before = declared.find(port);
    const bool changed = decision ? before == declared.end() || before->second != *decision : before != declared.end();
    if (!changed) continue;
    if (!decision) {
      declared.erase(before);
      continue;
    }
    declared.insert_or_assign(port, *decision);
    // A refusal of this bridge's own, not one passed on.
    const auto* failed = std::get_if<Mrp::MsrpTalkerFailedAttribute>(&decision->record());
    if (failed && failed->failureInformation().bridgeId() == bridgeId_ && observer_) {
      observer_->onTalkerFailed(*this, port, *failed);
    }
  }
  if (declared.empty()) talkerDeclared_.erase(streamId);
  for (const std::uint8_t type : {kTalkerAdvertise, kTalkerFailed}) {
    const AttrId id{Mrp::MrpApplication::msrp, type, streamId};
    attrs_[id];  // so that a declaration of a type not heard of yet is made
    doPropagate(id);
  }
  for (const std::string& port : ports_) doReserve(streamId, port);
  doPropagate({Mrp::MrpApplication::msrp, kListener, streamId});
}

std::optional<AttributeValue> Bridge::talkerDeclarationOf(std::uint64_t streamId,
                                                          const std::optional<HeardTalker>& talker,
                                                          const std::string& port) const {
  if (withdrawnAll_) return std::nullopt;
  // The bridge's own talker (an end station's) is admitted on its port as
  // declared; one it passes on gets the port's latency.
  std::optional<AttributeValue> heard = ownTalkerOn(streamId, port);
  std::uint32_t latency = 0;
  if (!heard) {
    if (!talker || talker->port == port || !forwarding(port)) return std::nullopt;
    heard = talker->value;
    latency = config_.latencyOf(port);
  }
  const auto* advertise = std::get_if<Mrp::MsrpTalkerAdvertiseAttribute>(&heard->record());
  if (!advertise) return heard;
  return talkerDeclarationOn(*advertise, streamClassOn(*advertise, port), EgressPort{reservations_.at(port), latency},
                             bridgeId_);
}

std::optional<AttributeValue> Bridge::ownTalkerOn(std::uint64_t streamId, const std::string& port) const {
  for (const std::uint8_t type : {kTalkerAdvertise, kTalkerFailed}) {
    auto it = attrs_.find({Mrp::MrpApplication::msrp, type, streamId});
    if (it == attrs_.end()) continue;
    if (auto own = it->second.portDeclared.find(port); own != it->second.portDeclared.end()) return own->second;
    if (it->second.bridgeWide) return it->second.bridgeWide;
  }
  return std::nullopt;
}

std::optional<SrClass> Bridge::srClassOfPriority(std::uint8_t priority) const {
  for (const Mrp::MsrpDomainAttribute& domain : config_.msrpDomains) {
    if (domain.srClassPriority() == priority) return srClassOfId(domain.srClassId());
  }
  return std::nullopt;
}

StreamClass Bridge::streamClassOn(const Mrp::MsrpTalkerAdvertiseAttribute& talker, const std::string& port) const {
  StreamClass streamClass{srClassOfPriority(talker.priorityAndRank().priority())};
  if (!streamClass.srClass) return streamClass;
  const AttributeValue* neighbour =
      registered({Mrp::MrpApplication::msrp, kDomain, streamClass.srClass->classId}, port);
  streamClass.boundary =
      !neighbour ||
      std::get<Mrp::MsrpDomainAttribute>(neighbour->record()).srClassPriority() != talker.priorityAndRank().priority();
  return streamClass;
}

const AttributeValue* Bridge::registered(const AttrId& id, const std::string& port) const {
  auto it = attrs_.find(id);
  if (it == attrs_.end()) return nullptr;
  auto registered = it->second.registeredOn.find(port);
  return registered == it->second.registeredOn.end() ? nullptr : &registered->second;
}

const Mrp::MsrpTalkerAdvertiseAttribute* Bridge::advertisedOn(std::uint64_t streamId, const std::string& port) const {
  auto stream = talkerDeclared_.find(streamId);
  if (stream == talkerDeclared_.end()) return nullptr;
  auto decided = stream->second.find(port);
  if (decided == stream->second.end()) return nullptr;
  const auto* advertise = std::get_if<Mrp::MsrpTalkerAdvertiseAttribute>(&decided->second.record());
  auto talker = attrs_.find({Mrp::MrpApplication::msrp, kTalkerAdvertise, streamId});
  if (!advertise || talker == attrs_.end()) return nullptr;
  auto declared = talker->second.declaredOn.find(port);
  return declared != talker->second.declaredOn.end() && declared->second == decided->second ? advertise : nullptr;
}

void Bridge::doReserve(std::uint64_t streamId, const std::string& port) {
  const Mrp::MsrpTalkerAdvertiseAttribute* advertise = advertisedOn(streamId, port);
  const AttributeValue* listener = registered({Mrp::MrpApplication::msrp, kListener, streamId}, port);
  if (!advertise || !listener || !listenerAsksToReserve(*listener)) {
    doRelease(streamId, port);
    return;
  }
  PortReservations& reservations = reservations_.at(port);
  if (reservations.reserved(streamId)) return;
  const SrClass srClass = *srClassOfPriority(advertise->priorityAndRank().priority());
  const PortReservations::Reservation reservation{streamId, srClass, streamBandwidth(advertise->tSpec(), srClass),
                                                  advertise->tSpec().maxFrameSize() + kFrameOverheadOctets};
  reservations.reserve(reservation);
  reservationsChanged_ = true;
  if (observer_) {
    observer_->onReservation(*this, port,
                             {streamId, true, srClass, reservation.bandwidth, reservations.reservedUpTo(srClass),
                              reservations.limit(srClass)});
  }
}

void Bridge::doRelease(std::uint64_t streamId, const std::string& port) {
  PortReservations& reservations = reservations_.at(port);
  const std::optional<PortReservations::Reservation> released = reservations.release(streamId);
  if (!released) return;
  reservationsChanged_ = true;
  if (observer_) {
    observer_->onReservation(*this, port,
                             {streamId, false, released->srClass, released->bandwidth,
                              reservations.reservedUpTo(released->srClass), reservations.limit(released->srClass)});
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
  const bool msrp = id.application == Mrp::MrpApplication::msrp;
  // The bridge's own talkers are admitted as the ones it passes on are.
  if (msrp && (id.attributeType == kTalkerAdvertise || id.attributeType == kTalkerFailed)) {
    auto stream = talkerDeclared_.find(id.attributeKey);
    if (stream == talkerDeclared_.end()) return std::nullopt;
    auto declared = stream->second.find(port);
    if (declared == stream->second.end() || declared->second.attributeType() != id.attributeType) return std::nullopt;
    return declared->second;
  }
  if (auto own = state.portDeclared.find(port); own != state.portDeclared.end()) return own->second;
  if (state.bridgeWide) return state.bridgeWide;
  if (!forwarding(port)) return std::nullopt;
  // A bridge declares its own domains; it does not pass on its neighbours'.
  if (msrp && id.attributeType == kDomain) return std::nullopt;
  if (msrp && id.attributeType == kListener) {
    const std::optional<HeardTalker> talker = talkerOf(id.attributeKey);
    if (!talker || talker->port != port) return std::nullopt;
    return mergedListener(id.attributeKey, state, port);
  }
  for (const auto& [other, value] : state.registeredOn) {
    if (other != port && forwarding(other)) return value;
  }
  return std::nullopt;
}

std::optional<AttributeValue> Bridge::mergedListener(std::uint64_t streamId, const AttrState& state,
                                                    const std::string& talkerPort) const {
  std::vector<PortListener> listeners;
  const auto stream = talkerDeclared_.find(streamId);
  for (const auto& [other, value] : state.registeredOn) {
    if (other == talkerPort || !forwarding(other)) continue;
    PortListener listener{*value.declaration(), reservations_.at(other).reserved(streamId), false};
    if (stream != talkerDeclared_.end()) {
      auto declared = stream->second.find(other);
      listener.talkerFailedDeclared =
          declared != stream->second.end() && declared->second.attributeType() == kTalkerFailed;
    }
    listeners.push_back(listener);
  }
  const std::optional<Mrp::MsrpListenerEvent> merged = mergedListenerDeclaration(listeners);
  if (!merged) return std::nullopt;
  return AttributeValue(Mrp::MsrpListenerAttribute(streamId, *merged));
}

std::optional<Bridge::HeardTalker> Bridge::talkerOf(std::uint64_t streamId) const {
  for (const std::uint8_t type : {kTalkerAdvertise, kTalkerFailed}) {
    auto it = attrs_.find({Mrp::MrpApplication::msrp, type, streamId});
    if (it == attrs_.end()) continue;
    for (const auto& [port, value] : it->second.registeredOn) {
      if (forwarding(port)) return HeardTalker{port, value};
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

StreamTable Bridge::streamTable() const {
  StreamTable table;
  std::set<std::uint64_t> streamIds;
  for (const auto& [id, state] : attrs_) {
    if (streamType(id.application, id.attributeType) && !state.empty()) streamIds.insert(id.attributeKey);
  }
  for (const std::uint64_t streamId : streamIds) {
    StreamTable::Stream stream;
    stream.streamId = streamId;
    const std::optional<HeardTalker> talker = talkerOf(streamId);
    std::optional<Mrp::MsrpTalkerAdvertiseAttribute> advertise;
    if (talker) {
      stream.talkerPort = talker->port;
      stream.talker = talker->value;
      const auto* failed = std::get_if<Mrp::MsrpTalkerFailedAttribute>(&talker->value.record());
      advertise = failed ? failed->talkerAdvertiseAttribute()
                         : std::get<Mrp::MsrpTalkerAdvertiseAttribute>(talker->value.record());
    }
    if (auto listener = attrs_.find({Mrp::MrpApplication::msrp, kListener, streamId}); listener != attrs_.end()) {
      for (const auto& [port, value] : listener->second.declaredOn) stream.listenerDeclared = value.declaration();
    }
    const auto declared = talkerDeclared_.find(streamId);
    for (const std::string& port : ports_) {
      if (talker && port == talker->port) continue;
      StreamTable::PortRow row;
      row.port = port;
      if (const AttributeValue* listener = registered({Mrp::MrpApplication::msrp, kListener, streamId}, port)) {
        row.listener = listener->declaration();
      }
      if (declared != talkerDeclared_.end()) {
        if (auto it = declared->second.find(port); it != declared->second.end()) row.declared = it->second;
      }
      if (!row.listener && !row.declared) continue;
      if (const PortReservations::Reservation* reservation = reservations_.at(port).find(streamId)) {
        row.reserved = true;
        row.srClass = reservation->srClass;
        row.bandwidth = reservation->bandwidth;
      } else if (advertise) {
        row.srClass = srClassOfPriority(advertise->priorityAndRank().priority());
        if (row.srClass) row.bandwidth = streamBandwidth(advertise->tSpec(), *row.srClass);
      }
      stream.ports.push_back(std::move(row));
    }
    table.streams.push_back(std::move(stream));
  }
  for (const std::string& port : ports_) {
    const PortReservations& reservations = reservations_.at(port);
    for (const SrClass& srClass : kSrClasses) {
      const std::optional<CbsParameters> shaper = reservations.shaper(srClass);
      if (!shaper) continue;
      table.classes.push_back({port, srClass, reservations.speed(), reservations.reservedIn(srClass),
                               reservations.reservedUpTo(srClass), reservations.limit(srClass), *shaper,
                               tcCommand(port, srClass, reservations.speed(), *shaper)});
    }
  }
  return table;
}

std::vector<Registration> Bridge::registrations() const {
  std::vector<Registration> out;
  for (const auto& [application, engine] : engines_) {
    Mrp::MrpSm& sm = engine->sm();
    if (!sm.active()) continue;
    for (const std::string& port : ports_) {
      const Velo::IntfId intfId(port);
      for (std::uint8_t type = 1; type <= sm.maxAttrTypes(); ++type) {
        const Quarn::Ptr<Mrp::MrpAttrIter> iter = sm.attributeStore().mrpAttrIter({intfId, type});
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
