#include "stp/MstiStatus.h"

namespace Stp {

Quarn::Ptr<MstiPortStatus> MstiStatus::mstiPortStatusIs(const std::string& name) {
  auto [entry, created] = mstiPortStatus_.emplace(name);
  if (created) notifyMstiPortStatus(name);
  return entry;
}

void MstiStatus::mstiPortStatusDel(std::string name) {
  if (mstiPortStatus_.erase(name)) notifyMstiPortStatus(name);
}

void MstiStatus::notifyMstiPortStatus(const std::string& name) {
  notifiees_.forEach([&](Notifiee& n) { n.onMstiPortStatus(name); });
}

}  // namespace Stp
