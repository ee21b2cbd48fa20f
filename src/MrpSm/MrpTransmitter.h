#pragma once

#include <cstdint>
#include <unordered_map>

#include "MrpModel/MrpParameters.h"
#include "MrpSm/MrpTxPacketContext.h"
#include "MrpSm/MrpTxPorts.h"
#include "brisk/TimerWheel.h"
#include "quarn/Ptr.h"
#include "quarn/Types.h"
#include "velo/IntfId.h"
#include "velo/Pkt.h"

namespace Mrp {

class MrpLib;

// Turns attribute events into MRPDUs, per port. Every port has up to two
// packets under construction, the first and the second; an event goes into
// one of them, extending its last vector when the value follows it, else
// starting a vector, or a message when the attribute type changes. A packet
// is closed and sent on its port when it is nearly full, before an attribute
// of an earlier type would go into it, when asked, and on every turn of the
// 0.1 s transmit cycle.
//
// The service object gives the application, its framing, the values to send
// (its transmit fields) and the vector writers; the ports it is attached to
// give the packet access and the rest (MrpTxPorts). Without ports nothing
// can be sent, as for a port without packet access.
class MrpTransmitter {
 public:
  using TxPacketContextMap = std::unordered_map<Velo::IntfId, Quarn::Ptr<MrpTxPacketContext>>;

  // A packet holds at most this many octets of messages; it is sent once
  // what it holds plus kTxHeadroom (room for the next attribute's message
  // and the end marks) reaches this or the port's MTU.
  static constexpr std::uint16_t kTxPktBytes = 1500;
  static constexpr std::uint16_t kTxHeadroom = 64;
  static constexpr Quarn::Seconds kTxInterval = 0.1;

  explicit MrpTransmitter(MrpLib& lib) : lib_(lib), txTimer_(this) {}
  MrpTransmitter(const MrpTransmitter&) = delete;
  MrpTransmitter& operator=(const MrpTransmitter&) = delete;

  MrpTxPorts* txPorts() const { return txPorts_; }
  // Not owned; null detaches.
  void txPortsIs(MrpTxPorts* ports) { txPorts_ = ports; }

  // Each port's first and second packet under construction.
  const TxPacketContextMap& mrpTxPacketContexts() const { return mrpTxPacketContext_; }
  Quarn::Ptr<MrpTxPacketContext> mrpTxPacketContext(const Velo::IntfId& intfId) const;
  // Creates the port's context for `pkt`, or returns the one holding it;
  // throws std::invalid_argument when the port's context holds another.
  Quarn::Ptr<MrpTxPacketContext> mrpTxPacketContextIs(const Velo::IntfId& intfId, Quarn::Ptr<Velo::Pkt> pkt);
  void mrpTxPacketContextDel(const Velo::IntfId& intfId) { mrpTxPacketContext_.erase(intfId); }
  void mrpTxPacketContextDelAll() { mrpTxPacketContext_.clear(); }

  const TxPacketContextMap& mrpTxSecondPacketContexts() const { return mrpTxSecondPacketContext_; }
  Quarn::Ptr<MrpTxPacketContext> mrpTxSecondPacketContext(const Velo::IntfId& intfId) const;
  Quarn::Ptr<MrpTxPacketContext> mrpTxSecondPacketContextIs(const Velo::IntfId& intfId, Quarn::Ptr<Velo::Pkt> pkt);
  void mrpTxSecondPacketContextDel(const Velo::IntfId& intfId) { mrpTxSecondPacketContext_.erase(intfId); }
  void mrpTxSecondPacketContextDelAll() { mrpTxSecondPacketContext_.clear(); }

  // The port the last MRPDU went out on.
  const Velo::IntfId& mrpCurrentTxIntf() const { return mrpCurrentTxIntf_; }
  void mrpCurrentTxIntfIs(const Velo::IntfId& intfId) { mrpCurrentTxIntf_ = intfId; }

  // ==== Taking attribute events (MrpTransmitter.cpp) ====
  // One attribute event (0..5, or 6 for LeaveAll) of the attribute in the
  // transmit fields into the port's first or second packet, which is sent
  // first when it holds a later attribute type, and after when it is full.
  void mrpSendAttributeIntf(const MrpParameters& parameters, const Velo::IntfId& intfId, bool secondPktContext);
  // Puts a LeaveAll of `attributeType` into the port's first packet.
  void mrpSendLeaveAll(std::uint8_t attributeType, const Velo::IntfId& intfId);
  // ==== end of taking attribute events ====

  // ==== Assembly (MrpTransmitterAssembly.cpp) ====
  // The application's and the attribute type's sender for an event.
  void mrpSendMsrpAttributeIntf(const MrpParameters& parameters, const Velo::IntfId& intfId, bool secondPktContext);
  void mrpSendMvrpAttributeIntf(const MrpParameters& parameters, const Velo::IntfId& intfId, bool secondPktContext);
  // The senders of the attribute types: extend the packet's last vector when
  // the value follows it, else start a vector, or a message when the type
  // changes or the event is a LeaveAll. The port's context must exist.
  void mrpSendTalkerAdvertise(std::uint8_t attributeEvent, const Velo::IntfId& intfId, bool secondPktContext);
  void mrpSendTalkerFailed(std::uint8_t attributeEvent, const Velo::IntfId& intfId, bool secondPktContext);
  void mrpSendListenerVector(std::uint8_t attributeEvent, const Velo::IntfId& intfId, bool secondPktContext);
  void mrpSendDomainVector(std::uint8_t attributeEvent, const Velo::IntfId& intfId, bool secondPktContext);
  void mrpSendVlanVector(std::uint8_t attributeEvent, const Velo::IntfId& intfId, bool secondPktContext);
  // ==== end of assembly ====

  // ==== Closing and sending (MrpTransmitter.cpp) ====
  // Closes the port's first (or second) packet and sends it on the port;
  // the next attribute starts a fresh one. While flooding, the packet is
  // dropped instead; without the port's packet access it is kept.
  void mrpTransmitTxPacket(const Velo::IntfId& intfId, bool secondPktContext);
  // The first packet of the port, then its second.
  void mrpTransmitTxAttributes(const Velo::IntfId& intfId);
  // Every port with a first packet open.
  void mrpTransmitTxAttributes();
  // ==== end of closing and sending ====

  // ==== The transmit cycle ====
  // Runs the cycle on `wheel` from the next handleTxTimer(); null stops it.
  void txTimerWheelIs(Brisk::TimerWheel* wheel) { txTimer_.notifierIs(wheel); }
  // Sends what the ports' packets hold and comes back in kTxInterval.
  void handleTxTimer();
  Quarn::Seconds txTimerTime() const { return txTimer_.time(); }
  // ==== end of the transmit cycle ====

 private:
  class TxTimerReactor : public Brisk::TimerWheel::Notifiee {
   public:
    explicit TxTimerReactor(MrpTransmitter* owner) : owner_(owner) {}
    void onTime() override { owner_->handleTxTimer(); }

   private:
    MrpTransmitter* owner_;
  };

  TxPacketContextMap& contexts(bool secondPktContext) {
    return secondPktContext ? mrpTxSecondPacketContext_ : mrpTxPacketContext_;
  }
  // The port's packet access; null without one or without ports.
  Quarn::Ptr<Velo::Pam> txPam(const Velo::IntfId& intfId) const;
  // Opens a context on a new packet; false when no packet could be had.
  bool contextOpen(const MrpParameters& parameters, const Velo::IntfId& intfId, bool secondPktContext);
  // The size rule: what the packet holds plus the headroom reaches 1500
  // octets or the port's MTU.
  bool full(const MrpTxPacketContext& context) const;

  MrpLib& lib_;
  MrpTxPorts* txPorts_ = nullptr;
  TxPacketContextMap mrpTxPacketContext_;
  TxPacketContextMap mrpTxSecondPacketContext_;
  Velo::IntfId mrpCurrentTxIntf_;
  TxTimerReactor txTimer_;
};

}  // namespace Mrp
