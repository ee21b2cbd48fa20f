#include "MrpSm/MrpMstiStatusReactor.h"

#include "MrpSm/MrpPortRoles.h"
#include "MrpSm/MrpStpiStatusReactor.h"

namespace Mrp {

MrpMstiStatusReactor::MrpMstiStatusReactor(Quarn::Ptr<Stp::MstiStatus> mstiStatus, MrpStpiStatusReactor* parent)
    : mstiStatus_(std::move(mstiStatus)), parent_(parent) {
  notifierIs(mstiStatus_.ptr());
  for (const auto& [name, status] : mstiStatus_->mstiPortStatuses()) mstiPortStatusIs(name);
}

MrpMstiPortStatusReactor* MrpMstiStatusReactor::mstiPortStatus(const std::string& name) const {
  auto it = mstiPortStatus_.find(name);
  return it == mstiPortStatus_.end() ? nullptr : it->second.get();
}

void MrpMstiStatusReactor::mstiPortStatusIs(const std::string& name) {
  if (mstiPortStatus_.count(name)) return;
  if (Quarn::Ptr<Stp::MstiPortStatus> status = mstiStatus_->mstiPortStatus(name)) {
    mstiPortStatus_.emplace(name, std::make_unique<MrpMstiPortStatusReactor>(status, this));
  }
}

void MrpMstiStatusReactor::onMstiPortStatus(const std::string& name) {
  if (mstiStatus_->mstiPortStatus(name)) {
    mstiPortStatusIs(name);
  } else {
    mstiPortStatus_.erase(name);
  }
}

void MrpMstiStatusReactor::handleRole(const std::string& portName) const {
  if (MrpPortRoles* roles = parent_->portRoles()) roles->handleRole(portName, name(), parent_->name());
}

}  // namespace Mrp
