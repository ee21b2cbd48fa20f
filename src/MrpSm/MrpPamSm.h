#pragma once

#include <cstddef>
#include <map>
#include <memory>

#include "MrpSm/MrpIntfPamSm.h"
#include "MrpSm/MrpPamWiring.h"
#include "interface/EthDevPamCollection.h"
#include "quarn/Lifecycle.h"
#include "quarn/Ptr.h"
#include "velo/IntfId.h"
#include "velo/Pam.h"
#include "velo/Pkt.h"

namespace Mrp {

class MrpSm;

// Packet access over all ports of one engine: one port object per socket of
// the collection, created and deleted as sockets come and go, with the
// engine's standby mode passed down to them.
class MrpPamSm : public Quarn::PtrInterface, public Quarn::Lifecycle {
 public:
  using IntfPamSmMap = std::map<Velo::IntfId, Quarn::Ptr<MrpIntfPamSm>>;

  // Watches `pamCollection`; handleInitialized() then takes in its sockets.
  MrpPamSm(Quarn::Ptr<Interface::EthDevPamCollection> pamCollection, bool standbyMode, MrpSm* mrpSm);
  // The same over the sockets of `wiring`, which it keeps until wiringDel().
  MrpPamSm(std::unique_ptr<MrpPamWiring> wiring, bool standbyMode, MrpSm* mrpSm);
  MrpPamSm(const MrpPamSm&) = delete;
  MrpPamSm& operator=(const MrpPamSm&) = delete;

  const Quarn::Ptr<Interface::EthDevPamCollection>& pamCollection() const { return pamCollection_; }
  // What the sockets were wired from; null when built over a bare collection.
  const MrpPamWiring* wiring() const { return wiring_.get(); }
  // Lets go of the wiring first, so no socket is opened while the engine goes away.
  void wiringDel();
  MrpSm* mrpSm() const { return mrpSm_; }
  bool standbyMode() const { return standbyMode_; }
  void standbyModeIs(bool standbyMode) { standbyMode_ = standbyMode; }

  void handleInitialized();
  // Passes the standby mode to every port object whose own differs.
  void handleStandbyMode();
  // The socket of `intfId` came or went: creates or deletes its port object.
  void handlePam(const Velo::IntfId& intfId);
  // Sends `pkt` unchanged on every port but `intfId`.
  void floodMsrpdu(const Velo::IntfId& intfId, const Quarn::Ptr<Velo::Pkt>& pkt);
  // A LeaveAll for every attribute type of `intfId`, on management's request.
  void transmitAllLeaveAll(const Velo::IntfId& intfId);

  const IntfPamSmMap& mrpIntfPamSms() const { return mrpIntfPamSm_; }
  Quarn::Ptr<MrpIntfPamSm> mrpIntfPamSm(const Velo::IntfId& intfId) const;
  bool mrpIntfPamSmHas(const Velo::IntfId& intfId) const { return mrpIntfPamSm_.count(intfId) != 0; }
  // The port object, created and initialised when absent.
  Quarn::Ptr<MrpIntfPamSm> mrpIntfPamSmIs(const Velo::IntfId& intfId, Quarn::Ptr<Velo::Pam> pam, bool standbyMode);
  // Closes and deletes the port object. By value: `intfId` may be its own key.
  void mrpIntfPamSmDel(Velo::IntfId intfId);
  void mrpIntfPamSmDelAll();

 private:
  class CollectionReactor : public Interface::EthDevPamCollection::Notifiee {
   public:
    explicit CollectionReactor(MrpPamSm* owner) : owner_(owner) {}
    void onIntfPam(const Velo::IntfId& intfId) override { owner_->handlePam(intfId); }

   private:
    MrpPamSm* owner_;
  };

  std::unique_ptr<MrpPamWiring> wiring_;
  Quarn::Ptr<Interface::EthDevPamCollection> pamCollection_;
  MrpSm* mrpSm_;
  bool standbyMode_;
  IntfPamSmMap mrpIntfPamSm_;
  CollectionReactor collectionReactor_;
};

}  // namespace Mrp
