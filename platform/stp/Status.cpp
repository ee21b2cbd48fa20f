#include "stp/Status.h"

namespace Stp {

void Status::modeIs(Mode mode) {
  if (mode == mode_) return;
  mode_ = mode;
  notifiees_.forEach([](Notifiee& n) { n.onMode(); });
}

Quarn::Ptr<StpiStatus> Status::stpiStatusIs(const std::string& name) {
  auto [entry, created] = stpiStatus_.emplace(name);
  if (created) notifyStpiStatus(name);
  return entry;
}

void Status::stpiStatusDel(std::string name) {
  if (stpiStatus_.erase(name)) notifyStpiStatus(name);
}

void Status::notifyStpiStatus(const std::string& name) {
  notifiees_.forEach([&](Notifiee& n) { n.onStpiStatus(name); });
}

}  // namespace Stp
