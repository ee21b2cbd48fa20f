#include "agent/CountingPamFactory.h"

namespace MrpCli {

Quarn::Ptr<Velo::Pam> CountingPamFactory::pamNew(const Velo::IntfId& intfId, const Velo::PamConfig& config) {
  Quarn::Ptr<Velo::Pam> socket = sockets_->pamNew(intfId, config);
  return new CountingPam(std::move(socket), portCounters_[intfId.name()], decoder_, engineCounters_);
}

}  // namespace MrpCli
