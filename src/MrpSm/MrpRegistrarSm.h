#pragma once

#include <cstdint>
#include <map>

#include "MrpModel/MrpAttribute.h"
#include "MrpModel/MrpConfig.h"
#include "MrpModel/MrpParameters.h"
#include "MrpModel/MrpRegistrarEvent.h"
#include "MrpModel/MrpRegistrarState.h"
#include "MrpModel/MrpThreePackedEvent.h"
#include "MrpMsrp/MsrpAttrType.h"
#include "MrpSm/MrpExplicitLeaveSm.h"
#include "MrpSm/MrpExplicitLeaveSmMap.h"
#include "MrpSm/MrpLeaveSm.h"
#include "MrpSm/MrpRegistrarTransitions.h"
#include "brisk/TimerWheel.h"
#include "quarn/Lifecycle.h"
#include "quarn/Ptr.h"
#include "velo/IntfId.h"

namespace Mrp {

class MrpAttrDatabase;
class MrpSm;

// The registrar machine: one executor per engine acting on the engine's
// current attribute, whose registrar state lives in its database entry. It
// carries out the transitions of MrpRegistrarTable: it
// makes the join and leave indications, times LV with the leave machines,
// and owns the engine's 0.1 s transmit cycle.
class MrpRegistrarSm : public Quarn::PtrInterface, public Quarn::Lifecycle {
 public:
  using LeaveSmMap = std::map<MrpAttribute, Quarn::Ptr<MrpLeaveSm>>;

  // A txLA! uses txLeaveAllExpiryTime for its leave time unless it is this value.
  static constexpr Quarn::Seconds kDefaultTxLeaveAllExpiryTime = 0.6;

  // Starts the transmit cycle, which the engine's transmitter runs.
  MrpRegistrarSm(MrpSm* mrpSm, Quarn::Ptr<MrpConfig> mrpConfig, Quarn::Ptr<Brisk::TimerWheel> timerWheel);
  MrpRegistrarSm(const MrpRegistrarSm&) = delete;
  MrpRegistrarSm& operator=(const MrpRegistrarSm&) = delete;

  MrpSm* mrpSm() const { return mrpSm_; }
  const Quarn::Ptr<MrpConfig>& mrpConfig() const { return mrpConfig_; }
  const Quarn::Ptr<Brisk::TimerWheel>& timerWheel() const { return timerWheel_; }

  void handleInitialized();
  // Sends what the ports' packets hold and re-arms for now + 0.1 s.
  void handleTxTimer();
  Quarn::Seconds txTimerTime() const;
  void handleCfgTimersEnabled();

  // The event the next handleRegistrarEvent() applies; not cleared after use.
  MrpRegistrarEvent registrarEvent() const { return registrarEvent_; }
  void registrarEventIs(MrpRegistrarEvent event) { registrarEvent_ = event; }
  // One transition of the current attribute; nothing for one without an
  // entry. Always returns false.
  bool handleRegistrarEvent();
  // One transition of the current attribute, whose entry the caller found.
  bool handleRegistrarEvent(MrpAttrDatabase& entry);
  // Writes the current attribute's state if it has an entry; creates none.
  void mrpSetRegistrarState(MrpRegistrarState state);

  // A received attribute event as a registrar event: In and Mt (and any
  // unknown code) are noEvent, so they never reach the registrar.
  static constexpr MrpRegistrarEvent mrpMapRxRegistrarEvent(std::uint8_t attributeEvent) {
    switch (static_cast<MrpThreePackedEvent>(attributeEvent)) {
      case MrpThreePackedEvent::newEvent: return MrpRegistrarEvent::rNew;
      case MrpThreePackedEvent::joinIn: return MrpRegistrarEvent::rJoinIn;
      case MrpThreePackedEvent::joinMt: return MrpRegistrarEvent::rJoinMt;
      case MrpThreePackedEvent::lv: return MrpRegistrarEvent::rLv;
      case MrpThreePackedEvent::in:
      case MrpThreePackedEvent::mt: break;
    }
    return MrpRegistrarEvent::noEvent;
  }

  // Leave timing of the current attribute: a received Lv gets a machine of
  // its own, any other leave shares its port and type's machine.
  void mrpAddAttrToLeavePending();
  void mrpDeleteAttrFromLeavePending();
  // Drops every leave machine of the port with its pending keys.
  void mrpCancelLeavePending(const Velo::IntfId& intfId);

  const LeaveSmMap& leaveSms() const { return leaveSm_; }
  Quarn::Ptr<MrpLeaveSm> leaveSm(const MrpAttribute& attribute) const;
  Quarn::Ptr<MrpLeaveSm> leaveSmIs(const MrpAttribute& attribute);
  void leaveSmDel(const MrpAttribute& attribute) { leaveSm_.erase(attribute); }
  void leaveSmDelAll() { leaveSm_.clear(); }
  const MrpExplicitLeaveSmMap& explicitLeaveSms() const { return explicitLeaveSm_; }
  MrpExplicitLeaveSm* explicitLeaveSm(const MrpAttribute& attribute) const {
    return explicitLeaveSm_.machine(attribute);
  }
  MrpExplicitLeaveSm* explicitLeaveSmIs(const MrpAttribute& attribute) { return &explicitLeaveSm_.machineIs(attribute); }
  void explicitLeaveSmDel(const MrpAttribute& attribute) { explicitLeaveSm_.machineDel(attribute); }
  void explicitLeaveSmDelAll() { explicitLeaveSm_.machineDelAll(); }

 protected:
  ~MrpRegistrarSm() override = default;

 private:
  // What the explicit leave machines do on the engine.
  class ExplicitLeaveEngine : public MrpExplicitLeaveSmMap::Engine {
   public:
    explicit ExplicitLeaveEngine(MrpSm* mrpSm) : mrpSm_(mrpSm) {}
    Quarn::Seconds leaveTime() const override;
    void drainPort(const Velo::IntfId& intfId) override;
    void leaveTimer(const MrpAttribute& attribute) override;

   private:
    MrpSm* mrpSm_;
  };

  class ConfigReactor : public MrpConfig::Notifiee {
   public:
    explicit ConfigReactor(MrpRegistrarSm* owner) : owner_(owner) {}
    void onTimersEnabled() override { owner_->handleCfgTimersEnabled(); }

   private:
    MrpRegistrarSm* owner_;
  };

  // The actions of a transition from `state`, in order; whether the
  // application discarded the join it was told of.
  bool carryOut(const MrpRegistrarTransition& transition, MrpRegistrarState state, MrpAttrDatabase& entry);

  // Join and leave indications of the current attribute; the join returns
  // whether it was discarded.
  bool joinIndication();
  void leaveIndication();
  // The parameters that name the current attribute to the application.
  MrpParameters parametersOf(std::uint8_t attributeEvent) const;
  // rJoinIn!/rJoinMt! in IN or LV: whether the application hears of it. An
  // MSRP Domain always is; another attribute only when its received value
  // differs from the stored one, which it then replaces; an unchanged MSRP
  // Listener goes to the application's listenerJoinWithoutIndication hook.
  bool valueChecked(MrpAttrDatabase& entry);
  // The current attribute is of this MSRP type.
  bool msrpTypeIs(MsrpAttrType type) const;
  void listenerJoinWithoutIndication();
  // The log lines of a received join and of a leave ("received" or "notified"),
  // of a join the application discarded, and the lines a handled event starts
  // with at trace level 7: kept out of line, off the path a registered value
  // takes again and again.
  [[gnu::noinline]] void logJoin(MrpRegistrarState state, MrpRegistrarEvent event) const;
  [[gnu::noinline]] void logLeave(const char* how, MrpRegistrarState state, MrpRegistrarEvent event) const;
  [[gnu::cold]] void reportDiscardedJoin() const;
  [[gnu::cold]] void traceEntered(MrpRegistrarState state) const;
  MrpAttribute currentAttribute() const;
  // The leave time of a leave the current event starts on the port.
  Quarn::Seconds leaveTimeOf(const Velo::IntfId& intfId) const;

  MrpSm* mrpSm_;
  Quarn::Ptr<MrpConfig> mrpConfig_;
  Quarn::Ptr<Brisk::TimerWheel> timerWheel_;
  MrpRegistrarEvent registrarEvent_ = MrpRegistrarEvent::noEvent;
  LeaveSmMap leaveSm_;
  ExplicitLeaveEngine explicitLeaveEngine_;
  MrpExplicitLeaveSmMap explicitLeaveSm_;
  ConfigReactor configReactor_;
};

}  // namespace Mrp
