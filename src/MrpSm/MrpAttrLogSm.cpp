#include "MrpSm/MrpAttrLogSm.h"

#include "MrpSm/MrpSmTrace.h"

namespace Mrp {

MrpAttrLogSm::MrpAttrLogSm(Quarn::Ptr<Quarn::NboAttrLog::SocketOutSm> socketOutput)
    : socketOutput_(std::move(socketOutput)) {
  handleInitialized();
}

void MrpAttrLogSm::handleInitialized() {
  MRP_TRACE(8, "void Mrp::MrpAttrLogSm::handleInitialized()");
  initializedIs();
}

}  // namespace Mrp
