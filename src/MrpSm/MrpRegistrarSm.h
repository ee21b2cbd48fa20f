#pragma once

#include "MrpModel/MrpConfig.h"
#include "brisk/TimerWheel.h"
#include "quarn/Lifecycle.h"
#include "quarn/Ptr.h"

namespace Mrp {

class MrpSm;

// The registrar machine: one executor per engine acting on the current attribute.
class MrpRegistrarSm : public Quarn::PtrInterface, public Quarn::Lifecycle {
 public:
  MrpRegistrarSm(MrpSm* mrpSm, Quarn::Ptr<MrpConfig> mrpConfig, Quarn::Ptr<Brisk::TimerWheel> timerWheel);
  MrpRegistrarSm(const MrpRegistrarSm&) = delete;
  MrpRegistrarSm& operator=(const MrpRegistrarSm&) = delete;

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
