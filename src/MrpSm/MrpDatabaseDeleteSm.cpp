#include "MrpSm/MrpDatabaseDeleteSm.h"

#include "MrpSm/MrpSmTrace.h"

namespace Mrp {

MrpDatabaseDeleteSm::MrpDatabaseDeleteSm(MrpSm* mrpSm, MrpAttrLogSm* mrpAttrLogSm, Quarn::Ptr<Quarn::Clock> clock) : mrpSm_(mrpSm), mrpAttrLogSm_(mrpAttrLogSm), clock_(std::move(clock)) { handleInitialized(); }

void MrpDatabaseDeleteSm::handleInitialized() {
  MRP_TRACE(8, "MrpDatabaseDeleteSm::handleInitialized()");
  initializedIs();
}

}  // namespace Mrp
