#pragma once

#include <cstddef>
#include <deque>
#include <map>

#include "quarn/Clock.h"
#include "quarn/Ptr.h"
#include "velo/Pam.h"
#include "velo/PamFactory.h"

namespace Velo {

// A port on an in-memory wire: what one end sends arrives at the other end,
// with no kernel in between, so tests and the simulator run deterministically
// on a simulated clock.
//
// Delivery goes through the clock: a frame sent now is announced at the
// receiving end by a clock notification due now (so a SimClock delivers it on
// advance(0)), never from inside the sender's txPkt. A handler that sends
// while it handles a frame therefore never re-enters itself or its peer.
// Frames are announced one per notification, oldest first. A frame nobody
// takes stays queued for rxPkt(), and the next arrival announces again.
//
// There is no kernel filter: every frame is delivered, so the receiver's own
// checks see wrong addresses and EtherTypes. Frames shorter than an Ethernet
// header are refused by txPkt; frames longer than the receive limit are
// dropped on arrival (counted in rxDropped).
class MemPam : public Pam {
 public:
  // Sees every frame that goes onto the wire from this end, as it is sent:
  // the simulator writes captures with it, tests record what was sent.
  class Tap {
   public:
    virtual ~Tap() = default;
    virtual void onFrame(const MemPam& sender, const Pkt& frame) = 0;
  };

  MemPam(IntfId intfId, const EthAddr& ethAddr, Quarn::Ptr<Quarn::Clock> clock);
  ~MemPam() override;

  // The other end of the wire, not owned; null when unplugged. Connects both ways.
  MemPam* peer() const { return peer_; }
  void peerIs(MemPam* peer);

  std::size_t rxLimit() const { return rxLimit_; }
  void rxLimitIs(std::size_t bytes) { rxLimit_ = bytes; }
  std::size_t rxQueueLength() const { return rxQueue_.size(); }

  // The tap of this end, not owned; null for none.
  Tap* tap() const { return tap_; }
  void tapIs(Tap* tap) { tap_ = tap; }

  // The port disappears: the Pam closes, drops what it queued and tells its notifiees.
  void close();

  // A frame arrives from the wire as if the peer had sent it, plugged in or
  // not: the simulator injects frames and replays captures with it.
  void pktArrive(const Pkt& frame);

 private:
  class Delivery : public Quarn::Clock::Notifiee {
   public:
    Delivery(Quarn::Clock* clock, MemPam* owner) : Notifiee(clock), owner_(owner) {}
    void onTime() override { owner_->handleDelivery(); }

   private:
    MemPam* owner_;
  };

  Quarn::Ptr<Pkt> pktRead() override;
  bool mediumHasData() const override { return !rxQueue_.empty(); }
  bool pktWrite(const Pkt& frame) override;

  void handleDelivery();

  Quarn::Ptr<Quarn::Clock> clock_;
  Delivery delivery_;
  MemPam* peer_ = nullptr;
  Tap* tap_ = nullptr;
  std::size_t rxLimit_ = kDefaultMaxRxPktData;
  std::deque<Quarn::Ptr<Pkt>> rxQueue_;
};

// Two MemPams plugged into each other.
class MemWire : public Quarn::PtrInterface {
 public:
  MemWire(const IntfId& a, const EthAddr& aAddr, const IntfId& b, const EthAddr& bAddr,
          Quarn::Ptr<Quarn::Clock> clock);

  const Quarn::Ptr<MemPam>& a() const { return a_; }
  const Quarn::Ptr<MemPam>& b() const { return b_; }

 private:
  Quarn::Ptr<MemPam> a_;
  Quarn::Ptr<MemPam> b_;
};

// Opens the MemPams plugged into it, by port; for tests and the simulator.
class MemPamFactory : public PamFactory {
 public:
  void pamIs(const Quarn::Ptr<MemPam>& pam) { pams_[pam->intfId()] = pam; }
  void pamDel(const IntfId& intfId) { pams_.erase(intfId); }
  Quarn::Ptr<MemPam> pam(const IntfId& intfId) const;

  // The plugged port, with its receive limit set from `config`; throws
  // std::runtime_error for a port that is not plugged in or was closed.
  Quarn::Ptr<Pam> pamNew(const IntfId& intfId, const PamConfig& config) override;

 private:
  std::map<IntfId, Quarn::Ptr<MemPam>> pams_;
};

}  // namespace Velo
