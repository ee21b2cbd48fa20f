#pragma once

#include "quarn/Lifecycle.h"
#include "quarn/Ptr.h"

namespace Mrp {

class MrpSm;

// Packet access over all ports of one engine: one port object per socket,
// with the engine's standby mode passed down to them.
class MrpPamSm : public Quarn::PtrInterface, public Quarn::Lifecycle {
 public:
  MrpPamSm(bool standbyMode, MrpSm* mrpSm);
  MrpPamSm(const MrpPamSm&) = delete;
  MrpPamSm& operator=(const MrpPamSm&) = delete;

  MrpSm* mrpSm() const { return mrpSm_; }
  bool standbyMode() const { return standbyMode_; }
  void standbyModeIs(bool standbyMode) { standbyMode_ = standbyMode; }

  void handleInitialized();
  void handleStandbyMode();

 private:
  MrpSm* mrpSm_;
  bool standbyMode_;
};

}  // namespace Mrp
