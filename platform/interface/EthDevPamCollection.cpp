#include "interface/EthDevPamCollection.h"

#include "quarn/Assert.h"

namespace Interface {

void EthDevPamCollection::intfPamIs(const Velo::IntfId& intfId, Quarn::Ptr<Velo::Pam> pam) {
  // A port without a socket has no entry; it is never stored as null.
  QASSERT(pam);
  if (intfPam_.assign(intfId, std::move(pam))) notifyIntfPam(intfId);
}

void EthDevPamCollection::intfPamDel(Velo::IntfId intfId) {
  if (intfPam_.erase(intfId)) notifyIntfPam(intfId);
}

void EthDevPamCollection::notifyIntfPam(const Velo::IntfId& intfId) {
  notifiees_.forEach([&](Notifiee& n) { n.onIntfPam(intfId); });
}

}  // namespace Interface
