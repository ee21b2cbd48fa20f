#pragma once

#include <cstdint>

#include "MrpModel/MrpConfig.h"
#include "brisk/TimerWheel.h"
#include "quarn/Lifecycle.h"
#include "quarn/Ptr.h"
#include "quarn/Types.h"
#include "velo/IntfId.h"

namespace Mrp {

class MrpSm;

// The LeaveAll coordinator: one per engine, over the per-port LeaveAll machines.
class MrpLeaveAllSm : public Quarn::PtrInterface, public Quarn::Lifecycle {
 public:
  MrpLeaveAllSm(MrpSm* mrpSm, Quarn::Ptr<MrpConfig> mrpConfig, Quarn::Ptr<Brisk::TimerWheel> timerWheel);
  MrpLeaveAllSm(const MrpLeaveAllSm&) = delete;
  MrpLeaveAllSm& operator=(const MrpLeaveAllSm&) = delete;

  MrpSm* mrpSm() const { return mrpSm_; }
  const Quarn::Ptr<MrpConfig>& mrpConfig() const { return mrpConfig_; }
  const Quarn::Ptr<Brisk::TimerWheel>& timerWheel() const { return timerWheel_; }

  void handleInitialized();

  // Starts and stops the LeaveAll timers of every attribute type of a port.
  void mrpEnableLeaveAllPending(const Velo::IntfId& intfId);
  void mrpDisableLeaveAllPending(const Velo::IntfId& intfId);
  // Restarts the port's timer of `attrType` at now + `period`: the type's
  // expiry, then the port machine's doScheduleLeaveAllTimer(period).
  void mrpRestartLeaveAllTimer(const Velo::IntfId& intfId, std::uint8_t attrType, Quarn::Seconds period);

 private:
  MrpSm* mrpSm_;
  Quarn::Ptr<MrpConfig> mrpConfig_;
  Quarn::Ptr<Brisk::TimerWheel> timerWheel_;
};

// The LeaveAll period of a port, drawn afresh on every call.
Quarn::Seconds getLeaveAllTime(const MrpSm& mrpSm, const Velo::IntfId& intfId);

}  // namespace Mrp
