#include "MrpSm/MrpSmTxPorts.h"

#include "MrpSm/MrpSm.h"

namespace Mrp {

Quarn::Ptr<Velo::Pam> MrpSmTxPorts::txPam(const Velo::IntfId& intfId) const {
  const Interface::EthDevPamCollection* pams = sm_.pamCollection();
  return pams ? pams->intfPam(intfId) : nullptr;
}

std::uint32_t MrpSmTxPorts::txMtu(const Velo::IntfId& intfId) const {
  const Quarn::Ptr<Interface::EthPhyIntfStatus> status = sm_.ethPhyIntfStatusDir()->ethPhyIntfStatus(intfId);
  return status ? status->mtu() : 0;
}

bool MrpSmTxPorts::txFlooding() const { return sm_.mrpConfig()->mrpFlooding(); }

std::uint8_t MrpSmTxPorts::txProtocolVersion() const { return sm_.protocolVersion(); }

void MrpSmTxPorts::numOfPktsTransmittedInc() { sm_.mrpCounters()->numOfPktsTransmittedInc(); }

}  // namespace Mrp
