#include "sim/ApplicationPamFactory.h"

#include <stdexcept>

#include "MrpModel/MrpWireFormat.h"

namespace MrpCli {

void ApplicationPamFactory::pamIs(Mrp::MrpApplication application, const Quarn::Ptr<Velo::MemPam>& pam) {
  pams_[{pam->intfId(), Mrp::mrpDefaultApplicationFraming(application).macAddr}] = pam;
}

Quarn::Ptr<Velo::Pam> ApplicationPamFactory::pamNew(const Velo::IntfId& intfId, const Velo::PamConfig& config) {
  auto it = pams_.find({intfId, config.listenAddr});
  if (it == pams_.end()) {
    throw std::runtime_error("no port " + intfId.name() + " for group address " + config.listenAddr.toString());
  }
  it->second->rxLimitIs(Velo::pamRxLimit(config));
  return it->second;
}

}  // namespace MrpCli
