#pragma once

#include <cstddef>

#include "interface/EthPhyIntfStatus.h"
#include "quarn/Notifiee.h"
#include "quarn/PtrMap.h"
#include "velo/IntfId.h"

namespace Interface {

// The status of every physical Ethernet port.
class AllEthPhyIntfStatusDir : public Quarn::PtrInterface {
 public:
  using EthPhyIntfStatusMap = Quarn::PtrMap<Velo::IntfId, EthPhyIntfStatus>::Map;

  // onEthPhyIntfStatus(intfId) reports a port added or removed; changes
  // inside an entry are reported by the entry itself.
  class Notifiee : public Quarn::BaseNotifiee<AllEthPhyIntfStatusDir> {
   public:
    virtual void onEthPhyIntfStatus(const Velo::IntfId& /*intfId*/) {}
  };

  // The entry of port `intfId`, created when absent.
  Quarn::Ptr<EthPhyIntfStatus> ethPhyIntfStatusIs(const Velo::IntfId& intfId);
  // Null when absent.
  Quarn::Ptr<EthPhyIntfStatus> ethPhyIntfStatus(const Velo::IntfId& intfId) const {
    return ethPhyIntfStatus_.find(intfId);
  }
  // By value: `intfId` may be the key of the entry being removed.
  void ethPhyIntfStatusDel(Velo::IntfId intfId);
  std::size_t ethPhyIntfStatusCount() const { return ethPhyIntfStatus_.size(); }
  const EthPhyIntfStatusMap& ethPhyIntfStatuses() const { return ethPhyIntfStatus_.map(); }

  void notifieeAdd(Notifiee* n) { notifiees_.add(n); }
  void notifieeDel(Notifiee* n) { notifiees_.remove(n); }

 private:
  void notifyEthPhyIntfStatus(const Velo::IntfId& intfId);

  Quarn::PtrMap<Velo::IntfId, EthPhyIntfStatus> ethPhyIntfStatus_;
  Quarn::NotifieeList<Notifiee> notifiees_;
};

}  // namespace Interface
