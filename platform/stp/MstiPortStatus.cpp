#include "stp/MstiPortStatus.h"

namespace Stp {

void MstiPortStatus::roleIs(Role role) {
  if (role == role_) return;
  role_ = role;
  notifiees_.forEach([](Notifiee& n) { n.onRole(); });
}

}  // namespace Stp
