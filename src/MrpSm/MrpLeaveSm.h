#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "MrpModel/MrpAttribute.h"
#include "brisk/TimerWheel.h"
#include "quarn/Lifecycle.h"
#include "quarn/Ptr.h"
#include "quarn/SortedMap.h"
#include "quarn/Types.h"

namespace Mrp {

class MrpSm;

// Times the registrar's LV state for a set of attribute keys of one port
// and type with one shared timer. The registrar keeps one per port and type
// (attribute key 0) for leaves caused by LeaveAll and Re-declare!; a leave
// caused by a received Lv has a machine of its own (MrpExplicitLeaveSm). At
// expiry every key still pending gets leavetimer! and the machine is
// discarded.
class MrpLeaveSm : public Quarn::PtrInterface, public Quarn::Lifecycle {
 public:
  // Arms the timer with the configured leaveTime.
  MrpLeaveSm(const MrpAttribute& mrpAttribute, MrpSm* mrpSm, Quarn::Ptr<Brisk::TimerWheel> timerWheel);
  MrpLeaveSm(const MrpLeaveSm&) = delete;
  MrpLeaveSm& operator=(const MrpLeaveSm&) = delete;

  // The machine's key in the registrar's map.
  const MrpAttribute& mrpAttribute() const { return mrpAttribute_; }
  MrpSm* mrpSm() const { return mrpSm_; }

  void handleInitialized();

  // The attribute keys waiting for the timer.
  bool leavePending(std::uint64_t key) const { return leavePending_.contains(key); }
  void leavePendingIs(std::uint64_t key, bool pending) {
    pending ? leavePending_.insert(key) : leavePending_.erase(key);
  }
  void leavePendingDel(std::uint64_t key) { leavePending_.erase(key); }
  void leavePendingDelAll() { leavePending_.clear(); }
  // The keys pending, ascending.
  std::vector<std::uint64_t> leavePendingKeys() const { return {leavePending_.begin(), leavePending_.end()}; }

  // (Re)starts the one timer at now + `seconds`: a later leave postpones the
  // expiry of every key already pending.
  void doScheduleLeaveTimer(Quarn::Seconds seconds);
  // When the timer fires; kInfinity when it is not armed.
  Quarn::Seconds leaveTimerTime() const { return leaveTimer_.time(); }

  // Expiry: the port's waiting frames first, then leavetimer! for every key
  // still pending, then the machine leaves the registrar's map.
  void handleLeaveTimer();
  // leavetimer! for one pending key.
  void handleLeavePending(std::uint64_t key);

  // What every leave machine's expiry does on the engine. A frame waiting on
  // the port, which arrived just before the expiry, is processed first, so
  // that a Join in it keeps its registration.
  static void doDrainPort(MrpSm& mrpSm, const Velo::IntfId& intfId);
  // leavetimer! for the attribute, made current from its database entry.
  static void doLeaveTimer(MrpSm& mrpSm, const MrpAttribute& attribute);

 protected:
  ~MrpLeaveSm() override = default;

 private:
  class TimerReactor : public Brisk::TimerWheel::Notifiee {
   public:
    TimerReactor(Brisk::TimerWheel* wheel, MrpLeaveSm* owner) : Notifiee(wheel), owner_(owner) {}
    void onTime() override { owner_->handleLeaveTimer(); }

   private:
    MrpLeaveSm* owner_;
  };


  const MrpAttribute mrpAttribute_;
  MrpSm* mrpSm_;
  Quarn::Ptr<Brisk::TimerWheel> timerWheel_;
  // A LeaveAll puts a port's keys here in ascending order, and the frame's
  // joins take most of them out again.
  Quarn::SortedSet<std::uint64_t> leavePending_;
  TimerReactor leaveTimer_;
};

}  // namespace Mrp
