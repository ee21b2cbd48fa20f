#include "MrpSm/MrpRegistrarSm.h"

#include <charconv>
#include <cstdio>
#include <ios>
#include <vector>

#include "MrpMsrp/MsrpAttrType.h"
#include "MrpSm/MrpConfigTime.h"
#include "MrpSm/MrpSm.h"
#include "MrpSm/MrpSmLog.h"
#include "MrpSm/MrpSmTrace.h"
#include "quarn/Collection.h"

namespace Mrp {

using Event = MrpRegistrarEvent;
using State = MrpRegistrarState;

namespace {

// The fields of the join and leave log lines, formatted without streams:
// a line is written for every registration. `attribute` must outlive them.
struct LogFields {
  LogFields(const MrpAttribute& attribute, MrpRegistrarState state, MrpRegistrarEvent event)
      : port(attribute.intfId.name().c_str()), state(enumText(state)), event(enumText(event)) {
    *std::to_chars(type, type + sizeof type - 1, attribute.attributeType).ptr = '\0';
    key[0] = '0';
    key[1] = 'x';
    *std::to_chars(key + 2, key + sizeof key - 1, attribute.attributeKey, 16).ptr = '\0';
  }
  const char* port;
  const char* state;
  const char* event;
  char type[4];
  char key[19];
};

}  // namespace

MrpRegistrarSm::MrpRegistrarSm(MrpSm* mrpSm, Quarn::Ptr<MrpConfig> mrpConfig,
                               Quarn::Ptr<Brisk::TimerWheel> timerWheel)
    : mrpSm_(mrpSm),
      mrpConfig_(std::move(mrpConfig)),
      timerWheel_(std::move(timerWheel)),
      explicitLeaveEngine_(mrpSm_),
      explicitLeaveSm_(&explicitLeaveEngine_, timerWheel_),
      configReactor_(this) {
  configReactor_.notifierIs(mrpConfig_.ptr());
  mrpSm_->transmitter().txTimerWheelIs(timerWheel_.ptr());
  handleInitialized();
}

void MrpRegistrarSm::handleInitialized() {
  MRP_TRACE(8, "void Mrp::MrpRegistrarSm::handleInitialized()");
  initializedIs();
  handleTxTimer();
}

void MrpRegistrarSm::handleTxTimer() { mrpSm_->transmitter().handleTxTimer(); }

Quarn::Seconds MrpRegistrarSm::txTimerTime() const { return mrpSm_->transmitter().txTimerTime(); }

// The timers run whatever the switch says; the change is only traced.
void MrpRegistrarSm::handleCfgTimersEnabled() { MRP_TRACE(8, "void Mrp::MrpRegistrarSm::handleCfgTimersEnabled()"); }

void MrpRegistrarSm::mrpSetRegistrarState(MrpRegistrarState state) {
  if (Quarn::Ptr<MrpAttrDatabase> entry = mrpSm_->mrpGetAttribute(false)) entry->registrarStateIs(state);
}

MrpAttribute MrpRegistrarSm::currentAttribute() const {
  const MrpParseContext& context = *mrpSm_->parseContext();
  return {context.intfId(), context.attributeType(), context.attributeKey()};
}

bool MrpRegistrarSm::handleRegistrarEvent() {
  const Quarn::Ptr<MrpAttrDatabase> entry = mrpSm_->mrpGetAttribute(false);
  if (!entry) {
    MRP_TRACE(8, " attribute not found, returning@!!! ");
    return false;
  }
  return handleRegistrarEvent(*entry);
}

bool MrpRegistrarSm::handleRegistrarEvent(MrpAttrDatabase& entry) {
  const Event event = registrarEvent_;
  const State state = entry.registrarState();
  if (mrpSmTrace.enabled(7)) [[unlikely]] traceEntered(state);
  if (event == Event::rLv) logLeave("received", state, event);

  bool discarded = false;
  if (state > State::mt) {
    MRP_TRACE(8, "Invalid registrar State = " << state);
  } else {
    discarded = carryOut(mrpRegistrarTransition(state, event), state, entry);
  }
  MRP_TRACE(7, " Exit: state = " << entry.registrarState());

  if (discarded) {
    reportDiscardedJoin();
    entry.registrarStateIs(State::mt);
  }
  // An attribute that neither machine holds any more goes away.
  if (entry.applicantState() == MrpApplicantState::vo && entry.registrarState() == State::mt) {
    mrpDeleteAttrFromLeavePending();
    mrpSm_->mrpDeleteAttrFromDatabase();
  }
  return false;
}

void MrpRegistrarSm::traceEntered(State state) const {
  const MrpParseContext& context = *mrpSm_->parseContext();
  MRP_TRACE(7, "void Mrp::MrpRegistrarSm::handleRegistrarEvent()");
  MRP_TRACE(7, " Key = 0x" << std::hex << context.attributeKey() << std::dec
                           << " Type= " << static_cast<unsigned>(context.attributeType())
                           << " intf = " << context.intfId());
  MRP_TRACE(7, " Enter: state = " << state << " event = " << registrarEvent_);
}

void MrpRegistrarSm::reportDiscardedJoin() const {
  const MrpAttribute attribute = currentAttribute();
  char text[256];
  std::snprintf(text, sizeof text, "Join was discarded by MSRP, interface: %s, attrType: %d, attrEvent: %d",
                attribute.intfId.name().c_str(), attribute.attributeType, mrpSm_->parseContext()->attributeEvent());
  MRP_TRACE(4, text);
  Quarn::log(MRP_ERROR, text);
}

bool MrpRegistrarSm::carryOut(const MrpRegistrarTransition& transition, State state, MrpAttrDatabase& entry) {
  using Action = MrpRegistrarTransition::Action;
  const Event event = registrarEvent_;
  bool discarded = false;
  for (const Action action : transition.actions()) {
    switch (action) {
      case Action::logJoinReceived: logJoin(state, event); break;
      case Action::logLeaveNotified: logLeave("notified", state, event); break;
      case Action::enterNext: entry.registrarStateIs(transition.next); break;
      case Action::addToLeavePending: mrpAddAttrToLeavePending(); break;
      case Action::deleteFromLeavePending: mrpDeleteAttrFromLeavePending(); break;
      case Action::traceJoinIndication: MRP_TRACE(7, "JoinIndication called"); break;
      case Action::traceLeaveIndication: MRP_TRACE(7, "LeaveIndication called"); break;
      case Action::joinIndication: discarded = joinIndication(); break;
      case Action::checkedJoinIndication: discarded = valueChecked(entry) && joinIndication(); break;
      case Action::countJoin: mrpSm_->mrpCounters()->numOfJoinIndicationsInc(); break;
      case Action::leaveIndication: leaveIndication(); break;
      case Action::countLeave: mrpSm_->mrpCounters()->numOfLeaveIndicationsInc(); break;
    }
  }
  return discarded;
}

bool MrpRegistrarSm::valueChecked(MrpAttrDatabase& entry) {
  const bool msrp = mrpSm_->mrpLib()->application() == MrpApplication::msrp;
  if (msrp && msrpTypeIs(MsrpAttrType::domainVector)) return true;
  if (mrpSm_->mrpRxVectorSameAsDatabaseAttr(entry)) {
    if (msrp && msrpTypeIs(MsrpAttrType::listenerVector)) listenerJoinWithoutIndication();
    return false;
  }
  mrpSm_->mrpPopulateValueInDatabase(&entry, false);
  return true;
}

bool MrpRegistrarSm::msrpTypeIs(MsrpAttrType type) const {
  return static_cast<MsrpAttrType>(mrpSm_->parseContext()->attributeType()) == type;
}

void MrpRegistrarSm::listenerJoinWithoutIndication() {
  mrpSm_->mrpLib()->mrpListenerJoinWithoutIndication(parametersOf(mrpSm_->parseContext()->attributeEvent()));
}

bool MrpRegistrarSm::joinIndication() {
  return mrpSm_->mrpLib()->mrpJoinIndication(parametersOf(mrpSm_->parseContext()->attributeEvent()));
}

void MrpRegistrarSm::leaveIndication() {
  mrpSm_->mrpLib()->mrpLeaveIndication(parametersOf(static_cast<std::uint8_t>(MrpThreePackedEvent::lv)));
}

MrpParameters MrpRegistrarSm::parametersOf(std::uint8_t attributeEvent) const {
  const MrpAttribute attribute = currentAttribute();
  return {attribute.intfId, attribute.attributeType, attributeEvent, attribute.attributeKey};
}

void MrpRegistrarSm::logJoin(State state, Event event) const {
  const MrpAttribute attribute = currentAttribute();
  const LogFields f(attribute, state, event);
  Quarn::log(MRP_JOIN, f.port, f.type, f.key, f.state, f.event);
}

void MrpRegistrarSm::logLeave(const char* how, State state, Event event) const {
  const MrpAttribute attribute = currentAttribute();
  const LogFields f(attribute, state, event);
  Quarn::log(MRP_LV, how, f.port, f.type, f.key, f.state, f.event);
}

// ---- Leave timing.

void MrpRegistrarSm::mrpAddAttrToLeavePending() {
  MRP_TRACE(8, "void Mrp::MrpRegistrarSm::mrpAddAttrToLeavePending()");
  const MrpAttribute attribute = currentAttribute();
  const auto leavePending = [&](auto& machine) {
    machine.leavePendingIs(attribute.attributeKey, true);
    machine.doScheduleLeaveTimer(leaveTimeOf(attribute.intfId));
  };
  if (registrarEvent_ == Event::rLv) {
    leavePending(explicitLeaveSm_.machineIs(attribute));
  } else {
    leavePending(*leaveSmIs({attribute.intfId, attribute.attributeType, 0}));
  }
}

Quarn::Seconds MrpRegistrarSm::leaveTimeOf(const Velo::IntfId& intfId) const {
  if (registrarEvent_ == Event::txLvAll) {
    const Quarn::Seconds txLeaveAllExpiryTime = mrpConfig_->txLeaveAllExpiryTime();
    if (txLeaveAllExpiryTime != kDefaultTxLeaveAllExpiryTime) {
      return mrpConfigTime("txLeaveAllExpiryTime", txLeaveAllExpiryTime);
    }
  }
  return mrpSm_->mrpGetLeaveTime(intfId);
}

void MrpRegistrarSm::mrpDeleteAttrFromLeavePending() {
  const MrpAttribute attribute = currentAttribute();
  if (Quarn::Ptr<MrpLeaveSm> machine = leaveSm({attribute.intfId, attribute.attributeType, 0})) {
    machine->leavePendingDel(attribute.attributeKey);
  }
  if (MrpExplicitLeaveSm* machine = explicitLeaveSm(attribute)) machine->leavePendingDel(attribute.attributeKey);
}

void MrpRegistrarSm::mrpCancelLeavePending(const Velo::IntfId& intfId) {
  const auto traceCancelled = [&](const std::vector<std::uint64_t>& keys) {
    for (std::uint64_t key : keys) MRP_TRACE(8, "Intf: " << intfId << " Leave pending deleted: " << key);
  };
  // The map is ordered by port first: the port's machines are one run.
  auto it = leaveSm_.lower_bound({intfId, 0, 0});
  while (it != leaveSm_.end() && it->first.intfId == intfId) {
    MrpLeaveSm& machine = *it->second;
    traceCancelled(machine.leavePendingKeys());
    machine.leavePendingDelAll();
    it = leaveSm_.erase(it);
  }
  for (const MrpExplicitLeaveSm* machine : explicitLeaveSm_.machinesOf(intfId)) {
    traceCancelled(machine->leavePendingKeys());
  }
  explicitLeaveSm_.machinesOfDel(intfId);
}

Quarn::Ptr<MrpLeaveSm> MrpRegistrarSm::leaveSm(const MrpAttribute& attribute) const {
  return Quarn::entryOf(leaveSm_, attribute);
}

Quarn::Ptr<MrpLeaveSm> MrpRegistrarSm::leaveSmIs(const MrpAttribute& attribute) {
  return Quarn::entryIs(leaveSm_, attribute, [&] { return new MrpLeaveSm(attribute, mrpSm_, timerWheel_); });
}

Quarn::Seconds MrpRegistrarSm::ExplicitLeaveEngine::leaveTime() const {
  return mrpConfigTime("leaveTime", mrpSm_->mrpConfig()->leaveTime());
}

void MrpRegistrarSm::ExplicitLeaveEngine::drainPort(const Velo::IntfId& intfId) {
  MrpLeaveSm::doDrainPort(*mrpSm_, intfId);
}

void MrpRegistrarSm::ExplicitLeaveEngine::leaveTimer(const MrpAttribute& attribute) {
  MrpLeaveSm::doLeaveTimer(*mrpSm_, attribute);
}

}  // namespace Mrp
