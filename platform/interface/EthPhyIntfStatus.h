#pragma once

#include <cstdint>
#include <utility>

#include "quarn/Notifiee.h"
#include "quarn/Ptr.h"
#include "velo/IntfId.h"

namespace Interface {

// The status of one physical Ethernet port.
class EthPhyIntfStatus : public Quarn::PtrInterface {
 public:
  class Notifiee : public Quarn::BaseNotifiee<EthPhyIntfStatus> {
   public:
    virtual void onMtu() {}
  };

  explicit EthPhyIntfStatus(Velo::IntfId intfId) : intfId_(std::move(intfId)) {}

  const Velo::IntfId& intfId() const { return intfId_; }

  // The largest frame the port sends, in bytes; 0 until the port reports it.
  std::uint32_t mtu() const { return mtu_; }
  void mtuIs(std::uint32_t mtu);

  void notifieeAdd(Notifiee* n) { notifiees_.add(n); }
  void notifieeDel(Notifiee* n) { notifiees_.remove(n); }

 private:
  Velo::IntfId intfId_;
  std::uint32_t mtu_ = 0;
  Quarn::NotifieeList<Notifiee> notifiees_;
};

}  // namespace Interface
