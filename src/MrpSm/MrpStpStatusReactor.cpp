#include "MrpSm/MrpStpStatusReactor.h"

#include "MrpSm/MrpSm.h"

namespace Mrp {

void MrpStpStatusReactor::onStpiStatus(const std::string& name) {
  if (mrpSm_) mrpSm_->handleStpiStatus(name);
}

}  // namespace Mrp
