#include "MrpSm/MrpPamSm.h"

#include "MrpSm/MrpSmTrace.h"

namespace Mrp {

MrpPamSm::MrpPamSm(bool standbyMode, MrpSm* mrpSm) : mrpSm_(mrpSm), standbyMode_(standbyMode) { handleInitialized(); }

void MrpPamSm::handleInitialized() {
  MRP_TRACE(8, "void Mrp::MrpPamSm::handleInitialized()");
  initializedIs();
}

// Port objects, which start and stop their LeaveAll timers here, arrive with
// the per-port sockets.
void MrpPamSm::handleStandbyMode() { MRP_TRACE(8, "void Mrp::MrpPamSm::handleStandbyMode()"); }

}  // namespace Mrp
