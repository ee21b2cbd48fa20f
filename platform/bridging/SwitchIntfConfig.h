#pragma once

#include <cstdint>
#include <utility>

#include "quarn/Notifiee.h"
#include "quarn/Ptr.h"
#include "velo/IntfId.h"

namespace Bridging {

// The bridging configuration of one switch port.
class SwitchIntfConfig : public Quarn::PtrInterface {
 public:
  class Notifiee : public Quarn::BaseNotifiee<SwitchIntfConfig> {
   public:
    virtual void onNativeVlan() {}
  };

  explicit SwitchIntfConfig(Velo::IntfId intfId) : intfId_(std::move(intfId)) {}

  const Velo::IntfId& intfId() const { return intfId_; }

  // The VLAN of untagged frames; 0 when the port has none.
  std::uint16_t nativeVlan() const { return nativeVlan_; }
  void nativeVlanIs(std::uint16_t vlanId);

  void notifieeAdd(Notifiee* n) { notifiees_.add(n); }
  void notifieeDel(Notifiee* n) { notifiees_.remove(n); }

 private:
  Velo::IntfId intfId_;
  std::uint16_t nativeVlan_ = 0;
  Quarn::NotifieeList<Notifiee> notifiees_;
};

}  // namespace Bridging
