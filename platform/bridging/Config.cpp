#include "bridging/Config.h"

namespace Bridging {

Quarn::Ptr<SwitchIntfConfig> Config::switchIntfConfigIs(const Velo::IntfId& intfId) {
  auto [entry, created] = switchIntfConfig_.emplace(intfId);
  if (created) notifySwitchIntfConfig(intfId);
  return entry;
}

void Config::switchIntfConfigDel(Velo::IntfId intfId) {
  if (switchIntfConfig_.erase(intfId)) notifySwitchIntfConfig(intfId);
}

void Config::notifySwitchIntfConfig(const Velo::IntfId& intfId) {
  notifiees_.forEach([&](Notifiee& n) { n.onSwitchIntfConfig(intfId); });
}

}  // namespace Bridging
