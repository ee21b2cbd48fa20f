#include "MrpSm/MrpRegistrarSm.h"

#include "MrpSm/MrpSmTrace.h"

namespace Mrp {

MrpRegistrarSm::MrpRegistrarSm(MrpSm* mrpSm, Quarn::Ptr<MrpConfig> mrpConfig, Quarn::Ptr<Brisk::TimerWheel> timerWheel) : mrpSm_(mrpSm), mrpConfig_(std::move(mrpConfig)), timerWheel_(std::move(timerWheel)) { handleInitialized(); }

void MrpRegistrarSm::handleInitialized() {
  MRP_TRACE(8, "void Mrp::MrpRegistrarSm::handleInitialized()");
  initializedIs();
}

}  // namespace Mrp
