#include "MrpSm/MrpStpStatusReactor.h"

#include "MrpSm/MrpPortRoles.h"

namespace Mrp {

void MrpStpStatusReactor::onStpiStatus(const std::string& name) {
  if (portRoles_) portRoles_->handleStpiStatus(name);
}

}  // namespace Mrp
