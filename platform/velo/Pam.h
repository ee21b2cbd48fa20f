#pragma once

#include <cstdint>
#include <utility>

#include "quarn/Notifiee.h"
#include "quarn/Ptr.h"
#include "velo/EthAddr.h"
#include "velo/IntfId.h"
#include "velo/Pkt.h"

namespace Velo {

// One port's frame socket: it receives and sends whole Ethernet frames,
// header included. Implementations: PacketSocketPam (a Linux packet socket)
// and MemPam (an in-memory wire, for tests and the simulator).
//
// Readability is reported one frame at a time: onReadableCount() says a
// frame is waiting, and the notifiee takes it with rxPkt() while it is being
// notified. What an implementation does with a frame nobody takes is its own
// (see there).
class Pam : public Quarn::PtrInterface {
 public:
  class Notifiee : public Quarn::BaseNotifiee<Pam> {
   public:
    // readableCount() went up: a frame is waiting.
    virtual void onReadableCount() {}
    // The port is gone for good; the Pam receives and sends nothing more.
    virtual void onClosed() {}
  };

  Pam(const Pam&) = delete;
  Pam& operator=(const Pam&) = delete;

  const IntfId& intfId() const { return intfId_; }
  // The port's own MAC address.
  const EthAddr& ethAddr() const { return ethAddr_; }

  // How often a waiting frame was announced.
  std::uint64_t readableCount() const { return readableCount_; }
  bool closed() const { return closed_; }

  // The next received frame, or null when none is waiting.
  Quarn::Ptr<Pkt> rxPkt();
  bool hasDataOnSocket() const { return !closed_ && mediumHasData(); }
  // Sends `frame` unchanged; false when it could not be sent.
  bool txPkt(const Pkt& frame);

  // Frames handed out by rxPkt, frames the Pam discarded (see the
  // implementation), frames sent and frames that could not be sent.
  std::uint64_t rxPkts() const { return rxPkts_; }
  std::uint64_t rxDropped() const { return rxDropped_; }
  std::uint64_t txPkts() const { return txPkts_; }
  std::uint64_t txErrors() const { return txErrors_; }

  void notifieeAdd(Notifiee* n) { notifiees_.add(n); }
  void notifieeDel(Notifiee* n) { notifiees_.remove(n); }

 protected:
  Pam(IntfId intfId, const EthAddr& ethAddr) : intfId_(std::move(intfId)), ethAddr_(ethAddr) {}

  // The medium: the next frame (null when none), whether one is waiting,
  // and sending one.
  virtual Quarn::Ptr<Pkt> pktRead() = 0;
  virtual bool mediumHasData() const = 0;
  virtual bool pktWrite(const Pkt& frame) = 0;

  // For an implementation that learns its address only once it is open.
  void ethAddrIs(const EthAddr& ethAddr) { ethAddr_ = ethAddr; }
  // Announces a waiting frame to the notifiees.
  void readableCountInc();
  // Marks the Pam closed (once) and tells the notifiees.
  void closedIs();
  void rxDroppedInc() { ++rxDropped_; }

 private:
  IntfId intfId_;
  EthAddr ethAddr_;
  std::uint64_t readableCount_ = 0;
  bool closed_ = false;
  std::uint64_t rxPkts_ = 0;
  std::uint64_t rxDropped_ = 0;
  std::uint64_t txPkts_ = 0;
  std::uint64_t txErrors_ = 0;
  Quarn::NotifieeList<Notifiee> notifiees_;
};

}  // namespace Velo
