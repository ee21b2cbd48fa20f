#pragma once

#include "MrpModel/MrpConfig.h"
#include "brisk/TimerWheel.h"
#include "quarn/Lifecycle.h"
#include "quarn/Ptr.h"

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

 private:
  MrpSm* mrpSm_;
  Quarn::Ptr<MrpConfig> mrpConfig_;
  Quarn::Ptr<Brisk::TimerWheel> timerWheel_;
};

}  // namespace Mrp
