#include "interface/PamDesiredIntfDir.h"

namespace Interface {

bool PamDesiredIntfDir::intfDesired(const Velo::IntfId& intfId) const {
  auto it = intfDesired_.find(intfId);
  return it != intfDesired_.end() && it->second;
}

void PamDesiredIntfDir::intfDesiredIs(const Velo::IntfId& intfId, bool desired) {
  auto [it, inserted] = intfDesired_.try_emplace(intfId, desired);
  if (!inserted) {
    if (it->second == desired) return;
    it->second = desired;
  }
  notifyIntfDesired(intfId);
}

void PamDesiredIntfDir::intfDesiredDel(Velo::IntfId intfId) {
  if (intfDesired_.erase(intfId)) notifyIntfDesired(intfId);
}

void PamDesiredIntfDir::notifyIntfDesired(const Velo::IntfId& intfId) {
  notifiees_.forEach([&](Notifiee& n) { n.onIntfDesired(intfId); });
}

}  // namespace Interface
