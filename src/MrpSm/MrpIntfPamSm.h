#pragma once

#include <cstdint>

#include "quarn/Lifecycle.h"
#include "quarn/Ptr.h"
#include "velo/IntfId.h"
#include "velo/Pam.h"
#include "velo/Pkt.h"

namespace Mrp {

class MrpPamSm;
class MrpSm;

// Packet access of one port: takes each frame its socket announces, checks
// address, VLAN tag and EtherType, and hands MRPDUs to the parser and the
// received-event dispatch; starts the port's LeaveAll timers while active.
class MrpIntfPamSm : public Quarn::PtrInterface, public Quarn::Lifecycle {
 public:
  // Watches `pam`; the creator then calls handleInitialized().
  MrpIntfPamSm(Velo::IntfId intfId, Quarn::Ptr<Velo::Pam> pam, bool standbyMode, MrpPamSm* mrpPamSm);
  MrpIntfPamSm(const MrpIntfPamSm&) = delete;
  MrpIntfPamSm& operator=(const MrpIntfPamSm&) = delete;

  const Velo::IntfId& intfId() const { return intfId_; }
  const Quarn::Ptr<Velo::Pam>& pam() const { return pam_; }
  MrpPamSm* mrpPamSm() const { return mrpPamSm_; }
  bool standbyMode() const { return standbyMode_; }
  void standbyModeIs(bool standbyMode) { standbyMode_ = standbyMode; }
  // Published and never incremented: numOfPktsProcessed of the engine's
  // counters is the receive counter in use.
  std::uint64_t rxMrpdus() const { return rxMrpdus_; }

  void handleInitialized();
  // While active, starts the port's LeaveAll timers.
  void handleStandbyMode();
  // Handles one frame from the socket.
  void handleMrpdu();
  // The port's socket is gone: stops its LeaveAll timers while active.
  void doClose();
  // A LeaveAll for every attribute type of the port, each type's timer restarted.
  void transmitAllLeaveAll();
  // txLA! to every attribute of the port and type, then the LeaveAll itself.
  void mrpAllLeaveAllSm(std::uint8_t attributeType);

 private:
  class PamReactor : public Velo::Pam::Notifiee {
   public:
    explicit PamReactor(MrpIntfPamSm* owner) : owner_(owner) {}
    void onReadableCount() override { owner_->handleMrpdu(); }

   private:
    MrpIntfPamSm* owner_;
  };

  MrpSm& mrpSm() const;
  // Destination address, VLAN tag and EtherType; false, with the drop
  // counted, for a frame that is not an MRPDU of the application.
  bool frameAccepted(Velo::Pkt& pkt) const;

  Velo::IntfId intfId_;
  Quarn::Ptr<Velo::Pam> pam_;
  bool standbyMode_;
  std::uint64_t rxMrpdus_ = 0;
  MrpPamSm* mrpPamSm_;
  PamReactor pamReactor_;
};

}  // namespace Mrp
