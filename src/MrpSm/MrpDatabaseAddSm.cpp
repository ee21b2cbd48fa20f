#include "MrpSm/MrpDatabaseAddSm.h"

#include "MrpSm/MrpSmTrace.h"

namespace Mrp {

MrpDatabaseAddSm::MrpDatabaseAddSm(MrpSm* mrpSm, MrpAttrLogSm* mrpAttrLogSm, Quarn::Ptr<Quarn::Clock> clock) : mrpSm_(mrpSm), mrpAttrLogSm_(mrpAttrLogSm), clock_(std::move(clock)) { handleInitialized(); }

void MrpDatabaseAddSm::handleInitialized() {
  MRP_TRACE(8, "MrpDatabaseAddSm::handleInitialized()");
  initializedIs();
}

}  // namespace Mrp
