#include "MrpSm/MrpLeaveAllSm.h"

#include "MrpSm/MrpSmTrace.h"

namespace Mrp {

MrpLeaveAllSm::MrpLeaveAllSm(MrpSm* mrpSm, Quarn::Ptr<MrpConfig> mrpConfig, Quarn::Ptr<Brisk::TimerWheel> timerWheel) : mrpSm_(mrpSm), mrpConfig_(std::move(mrpConfig)), timerWheel_(std::move(timerWheel)) { handleInitialized(); }

void MrpLeaveAllSm::handleInitialized() {
  MRP_TRACE(8, "void Mrp::MrpLeaveAllSm::handleInitialized()");
  initializedIs();
}

}  // namespace Mrp
