#include "bridging/SwitchIntfConfig.h"

namespace Bridging {

void SwitchIntfConfig::nativeVlanIs(std::uint16_t vlanId) {
  if (vlanId == nativeVlan_) return;
  nativeVlan_ = vlanId;
  notifiees_.forEach([](Notifiee& n) { n.onNativeVlan(); });
}

}  // namespace Bridging
