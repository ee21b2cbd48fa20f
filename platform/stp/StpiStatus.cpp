#include "stp/StpiStatus.h"

namespace Stp {

Quarn::Ptr<MstiStatus> StpiStatus::mstiStatusIs(const std::string& name) {
  auto [entry, created] = mstiStatus_.emplace(name);
  if (created) notifyMstiStatus(name);
  return entry;
}

void StpiStatus::mstiStatusDel(std::string name) {
  if (mstiStatus_.erase(name)) notifyMstiStatus(name);
}

void StpiStatus::notifyMstiStatus(const std::string& name) {
  notifiees_.forEach([&](Notifiee& n) { n.onMstiStatus(name); });
}

}  // namespace Stp
