#pragma once

#include <cstdint>
#include <map>

#include "MrpSm/MrpLeaveAllTimer.h"
#include "brisk/TimerWheel.h"
#include "quarn/Lifecycle.h"
#include "quarn/Ptr.h"
#include "quarn/Types.h"
#include "velo/IntfId.h"

namespace Mrp {

class MrpSm;

// The LeaveAll timing of one port: when each enabled attribute type is next
// due, and one timer that fires at the earliest of them. At expiry every
// type due (or due within 0.1 s) sends its LeaveAll and feeds txLA! to every
// registration of the port and type.
class MrpIntfLeaveAllSm : public Quarn::PtrInterface, public Quarn::Lifecycle {
 public:
  using LeaveAllTimerMap = std::map<std::uint8_t, Quarn::Ptr<MrpLeaveAllTimer>>;

  // A type is served up to this long before its expiry.
  static constexpr Quarn::Seconds kEarlyService = 0.1;

  // Starts with the timer disarmed.
  MrpIntfLeaveAllSm(Velo::IntfId intfId, MrpSm* mrpSm, Quarn::Ptr<Brisk::TimerWheel> timerWheel);
  MrpIntfLeaveAllSm(const MrpIntfLeaveAllSm&) = delete;
  MrpIntfLeaveAllSm& operator=(const MrpIntfLeaveAllSm&) = delete;

  const Velo::IntfId& intfId() const { return intfId_; }
  MrpSm* mrpSm() const { return mrpSm_; }

  void handleInitialized();

  // The enabled attribute types, ascending.
  const LeaveAllTimerMap& leaveAllPendings() const { return leaveAllPending_; }
  Quarn::Ptr<MrpLeaveAllTimer> leaveAllPending(std::uint8_t attrType) const;
  Quarn::Ptr<MrpLeaveAllTimer> leaveAllPendingIs(std::uint8_t attrType);
  void leaveAllPendingDel(std::uint8_t attrType) { leaveAllPending_.erase(attrType); }

  // When the port's timer fires; kInfinity when disarmed.
  Quarn::Seconds leaveAllTimerTime() const { return leaveAllTimer_.time(); }
  // Moves the timer to now + `period` if that is earlier: it only ever
  // moves earlier, to the soonest expiry of its types.
  void doScheduleLeaveAllTimer(Quarn::Seconds period);
  // The type's next LeaveAll at now + `period`, published; a type without
  // LeaveAll timing is left alone.
  void doRestartLeaveAllTimer(std::uint8_t attrType, Quarn::Seconds period);

  void handleLeaveAllTimer();
  void handleTxLeaveAll(std::uint8_t attrType, Quarn::Seconds period);
  // The configured period changed: every type restarts with a fresh period.
  void handleCfgIntfLeaveAllTime();

 protected:
  ~MrpIntfLeaveAllSm() override = default;

 private:
  class TimerReactor : public Brisk::TimerWheel::Notifiee {
   public:
    TimerReactor(Brisk::TimerWheel* wheel, MrpIntfLeaveAllSm* owner) : Notifiee(wheel), owner_(owner) {}
    void onTime() override { owner_->handleLeaveAllTimer(); }

   private:
    MrpIntfLeaveAllSm* owner_;
  };

  Quarn::Seconds now() const;
  // The period in the engine's status, for the port and type.
  void leaveAllTimePublish(std::uint8_t attrType, Quarn::Seconds period) const;

  const Velo::IntfId intfId_;
  MrpSm* mrpSm_;
  Quarn::Ptr<Brisk::TimerWheel> timerWheel_;
  LeaveAllTimerMap leaveAllPending_;
  TimerReactor leaveAllTimer_;
};

}  // namespace Mrp
