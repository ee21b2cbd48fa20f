#include "interface/AllEthPhyIntfStatusDir.h"

namespace Interface {

Quarn::Ptr<EthPhyIntfStatus> AllEthPhyIntfStatusDir::ethPhyIntfStatusIs(const Velo::IntfId& intfId) {
  auto [entry, created] = ethPhyIntfStatus_.emplace(intfId);
  if (created) notifyEthPhyIntfStatus(intfId);
  return entry;
}

void AllEthPhyIntfStatusDir::ethPhyIntfStatusDel(Velo::IntfId intfId) {
  if (ethPhyIntfStatus_.erase(intfId)) notifyEthPhyIntfStatus(intfId);
}

void AllEthPhyIntfStatusDir::notifyEthPhyIntfStatus(const Velo::IntfId& intfId) {
  notifiees_.forEach([&](Notifiee& n) { n.onEthPhyIntfStatus(intfId); });
}

}  // namespace Interface
