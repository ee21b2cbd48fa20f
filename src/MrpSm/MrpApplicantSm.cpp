#include "MrpSm/MrpApplicantSm.h"

#include "MrpSm/MrpSmTrace.h"

namespace Mrp {

MrpApplicantSm::MrpApplicantSm(MrpSm* mrpSm, Quarn::Ptr<MrpConfig> mrpConfig) : mrpSm_(mrpSm), mrpConfig_(std::move(mrpConfig)) { handleInitialized(); }

void MrpApplicantSm::handleInitialized() {
  MRP_TRACE(8, "void Mrp::MrpApplicantSm::handleInitialized()");
  initializedIs();
}

}  // namespace Mrp
