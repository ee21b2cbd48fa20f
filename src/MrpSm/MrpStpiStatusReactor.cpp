#include "MrpSm/MrpStpiStatusReactor.h"

namespace Mrp {

MrpStpiStatusReactor::MrpStpiStatusReactor(Quarn::Ptr<Stp::StpiStatus> stpiStatus, MrpPortRoles* portRoles)
    : stpiStatus_(std::move(stpiStatus)), portRoles_(portRoles) {
  notifierIs(stpiStatus_.ptr());
  for (const auto& [name, status] : stpiStatus_->mstiStatuses()) mstiStatusIs(name);
}

MrpMstiStatusReactor* MrpStpiStatusReactor::mstiStatus(const std::string& name) const {
  auto it = mstiStatus_.find(name);
  return it == mstiStatus_.end() ? nullptr : it->second.get();
}

void MrpStpiStatusReactor::mstiStatusIs(const std::string& name) {
  if (mstiStatus_.count(name)) return;
  if (Quarn::Ptr<Stp::MstiStatus> status = stpiStatus_->mstiStatus(name)) {
    mstiStatus_.emplace(name, std::make_unique<MrpMstiStatusReactor>(status, this));
  }
}

void MrpStpiStatusReactor::onMstiStatus(const std::string& name) {
  if (stpiStatus_->mstiStatus(name)) {
    mstiStatusIs(name);
  } else {
    mstiStatus_.erase(name);
  }
}

}  // namespace Mrp
