#include "interface/EthPhyIntfStatus.h"

namespace Interface {

void EthPhyIntfStatus::mtuIs(std::uint32_t mtu) {
  if (mtu == mtu_) return;
  mtu_ = mtu;
  notifiees_.forEach([](Notifiee& n) { n.onMtu(); });
}

}  // namespace Interface
