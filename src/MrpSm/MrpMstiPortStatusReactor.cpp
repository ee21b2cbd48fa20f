#include "MrpSm/MrpMstiPortStatusReactor.h"

#include "MrpSm/MrpMstiStatusReactor.h"

namespace Mrp {

MrpMstiPortStatusReactor::MrpMstiPortStatusReactor(Quarn::Ptr<Stp::MstiPortStatus> mstiPortStatus,
                                                   MrpMstiStatusReactor* parent)
    : mstiPortStatus_(std::move(mstiPortStatus)), parent_(parent) {
  notifierIs(mstiPortStatus_.ptr());
  parent_->handleRole(name());
}

void MrpMstiPortStatusReactor::onRole() { parent_->handleRole(name()); }

}  // namespace Mrp
