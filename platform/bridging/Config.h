#pragma once

#include <cstddef>

#include "bridging/SwitchIntfConfig.h"
#include "quarn/Notifiee.h"
#include "quarn/PtrMap.h"
#include "velo/IntfId.h"

namespace Bridging {

// The bridging configuration of the switch ports.
class Config : public Quarn::PtrInterface {
 public:
  using SwitchIntfConfigMap = Quarn::PtrMap<Velo::IntfId, SwitchIntfConfig>::Map;

  // onSwitchIntfConfig(intfId) reports a port entry added or removed; changes
  // inside an entry are reported by the entry itself.
  class Notifiee : public Quarn::BaseNotifiee<Config> {
   public:
    virtual void onSwitchIntfConfig(const Velo::IntfId& /*intfId*/) {}
  };

  // The entry of port `intfId`, created when absent.
  Quarn::Ptr<SwitchIntfConfig> switchIntfConfigIs(const Velo::IntfId& intfId);
  // Null when absent.
  Quarn::Ptr<SwitchIntfConfig> switchIntfConfig(const Velo::IntfId& intfId) const {
    return switchIntfConfig_.find(intfId);
  }
  // By value: `intfId` may be the key of the entry being removed.
  void switchIntfConfigDel(Velo::IntfId intfId);
  std::size_t switchIntfConfigCount() const { return switchIntfConfig_.size(); }
  const SwitchIntfConfigMap& switchIntfConfigs() const { return switchIntfConfig_.map(); }

  void notifieeAdd(Notifiee* n) { notifiees_.add(n); }
  void notifieeDel(Notifiee* n) { notifiees_.remove(n); }

 private:
  void notifySwitchIntfConfig(const Velo::IntfId& intfId);

  Quarn::PtrMap<Velo::IntfId, SwitchIntfConfig> switchIntfConfig_;
  Quarn::NotifieeList<Notifiee> notifiees_;
};

}  // namespace Bridging
