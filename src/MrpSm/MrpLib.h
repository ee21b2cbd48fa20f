#pragma once

#include <cstdint>
#include <unordered_map>

#include "MrpModel/MrpApplication.h"
#include "MrpModel/MrpParameters.h"
#include "MrpMsrp/MsrpDomainAttribute.h"
#include "MrpMsrp/MsrpListenerAttribute.h"
#include "MrpMsrp/MsrpTalkerAdvertiseAttribute.h"
#include "MrpMsrp/MsrpTalkerFailedAttribute.h"
#include "MrpMvrp/MvrpVlanAttribute.h"
#include "MrpSm/MrpTxPacketContext.h"
#include "quarn/LinkQueue.h"
#include "quarn/Ptr.h"
#include "quarn/Types.h"
#include "velo/EthAddr.h"
#include "velo/IntfId.h"
#include "velo/Pkt.h"

namespace Mrp {

class MrpSm;

// The application-facing service object of one MRP application. An agent
// derives from it to hear join and leave indications, sets the application,
// its group address and EtherType, and hands it to the engine.
class MrpLib : public Quarn::PtrInterface {
 public:
  using TxPacketContextMap = std::unordered_map<Velo::IntfId, Quarn::Ptr<MrpTxPacketContext>>;

  MrpLib() = default;
  MrpLib(const MrpLib&) = delete;
  MrpLib& operator=(const MrpLib&) = delete;

  // Indications from the registrar; the base class ignores them. A join
  // indication returns true when the application discards the join: the
  // registration then stays empty.
  virtual bool mrpJoinIndication(const MrpParameters& joinIndication);
  virtual void mrpLeaveIndication(const MrpParameters& leaveIndication);
  virtual void mrpLeaveAllIndication(const MrpParameters& leaveAllIndication);
  // A registered MSRP Listener received again in a Join whose stored value
  // (its stream id) is unchanged, so that no join indication is made: the
  // received value, declaration included, is in msrpListenerVectorRx(). The
  // only way an agent hears that a Listener's declaration changed. The base
  // class ignores it.
  virtual void mrpListenerJoinWithoutIndication(const MrpParameters& join);

  // Present in the interface and deliberately empty: requests go through
  // mrpSendAttribute.
  void mrpJoinReq(const MrpParameters& joinReq);
  void mrpLeaveReq(const MrpParameters& leaveReq);

  MrpApplication application() const { return application_; }
  void applicationIs(MrpApplication application) { application_ = application; }
  const Velo::EthAddr& applicationMacAddr() const { return applicationMacAddr_; }
  void applicationMacAddrIs(const Velo::EthAddr& addr) { applicationMacAddr_ = addr; }
  std::uint16_t applicationEtype() const { return applicationEtype_; }
  void applicationEtypeIs(std::uint16_t etype) { applicationEtype_ = etype; }
  // The application with the group address and EtherType assigned to it,
  // which is what almost every agent runs.
  void applicationWithDefaultFramingIs(MrpApplication application);

  // The value last parsed from a received vector, by attribute type.
  MsrpTalkerAdvertiseAttribute& msrpTalkerAdvertiseRx() { return msrpTalkerAdvertiseRx_; }
  MsrpTalkerFailedAttribute& msrpTalkerFailedRx() { return msrpTalkerFailedRx_; }
  MsrpListenerAttribute& msrpListenerVectorRx() { return msrpListenerVectorRx_; }
  MsrpDomainAttribute& msrpDomainVectorRx() { return msrpDomainVectorRx_; }
  MvrpVlanAttribute& mvrpVlanVectorRx() { return mvrpVlanVectorRx_; }

  // The value being declared or transmitted, by attribute type.
  MsrpTalkerAdvertiseAttribute& msrpTalkerAdvertiseTx() { return msrpTalkerAdvertiseTx_; }
  MsrpTalkerFailedAttribute& msrpTalkerFailedTx() { return msrpTalkerFailedTx_; }
  MsrpListenerAttribute& msrpListenerVectorTx() { return msrpListenerVectorTx_; }
  MsrpDomainAttribute& msrpDomainVectorTx() { return msrpDomainVectorTx_; }
  MvrpVlanAttribute& mvrpVlanVectorTx() { return mvrpVlanVectorTx_; }

  // Each port's first and second transmit packet under construction.
  const TxPacketContextMap& mrpTxPacketContexts() const { return mrpTxPacketContext_; }
  Quarn::Ptr<MrpTxPacketContext> mrpTxPacketContext(const Velo::IntfId& intfId) const;
  Quarn::Ptr<MrpTxPacketContext> mrpTxPacketContextIs(const Velo::IntfId& intfId, Quarn::Ptr<Velo::Pkt> pkt);
  void mrpTxPacketContextDel(const Velo::IntfId& intfId) { mrpTxPacketContext_.erase(intfId); }
  void mrpTxPacketContextDelAll() { mrpTxPacketContext_.clear(); }

  const TxPacketContextMap& mrpTxSecondPacketContexts() const { return mrpTxSecondPacketContext_; }
  Quarn::Ptr<MrpTxPacketContext> mrpTxSecondPacketContext(const Velo::IntfId& intfId) const;
  Quarn::Ptr<MrpTxPacketContext> mrpTxSecondPacketContextIs(const Velo::IntfId& intfId, Quarn::Ptr<Velo::Pkt> pkt);
  void mrpTxSecondPacketContextDel(const Velo::IntfId& intfId) { mrpTxSecondPacketContext_.erase(intfId); }
  void mrpTxSecondPacketContextDelAll() { mrpTxSecondPacketContext_.clear(); }

  // Ports that the next mrpSendAttribute acts on.
  const Quarn::LinkQueue<Velo::IntfId>& mrpOutIntfQueue() const { return mrpOutIntfQueue_; }
  std::uint32_t mrpOutIntfQueueEnq(const Velo::IntfId& intfId) { return mrpOutIntfQueue_.enq(intfId); }
  Velo::IntfId mrpOutIntfQueueDeq() { return mrpOutIntfQueue_.deq(); }
  void mrpOutIntfQueueIs(std::uint32_t index, const Velo::IntfId& intfId) { mrpOutIntfQueue_.is(index, intfId); }
  void mrpOutIntfQueueDel(std::uint32_t index) { mrpOutIntfQueue_.del(index); }
  void mrpOutIntfQueueDelAll() { mrpOutIntfQueue_.delAll(); }

  const Velo::IntfId& mrpCurrentTxIntf() const { return mrpCurrentTxIntf_; }
  void mrpCurrentTxIntfIs(const Velo::IntfId& intfId) { mrpCurrentTxIntf_ = intfId; }

  // ==== Attribute values: increments and value derivation (MrpLibValues.cpp) ====
  // Advance the receive slot of a type to the next value of its vector.
  void mrpIncrementTalkerAdvertise();
  void mrpIncrementTalkerFailed();
  void mrpIncrementListenerVector();
  void mrpIncrementDomainVector();
  void mrpIncrementVlanVector();

  // Derives the value of index `valueIndex` of the vector being parsed in the
  // receive slot of the parse context's attribute type. Index 0 is the
  // FirstValue and changes nothing; any other index advances the slot by one,
  // so calls for 1, 2, ... n in that order leave FirstValue + n.
  void mrpValueFromFirstValue(std::uint16_t valueIndex);
  void mrpMsrpValueFromFirstValue();
  void mrpMvrpValueFromFirstValue();
  // ==== end of attribute values ====

  // ==== Vector encoder (MrpLibEncode.cpp) ====
  // A new one-value vector for `value` with `event` (0..5) at the context's
  // current vector position: header, FirstValue, one three-packed octet and,
  // for a Listener, one four-packed octet with its declaration. A LeaveAll
  // that the receive side asked for (the parse context's sendTxLvAll) rides
  // on the vector and is cleared. Event 6 writes a LeaveAll-only vector
  // instead: header 0x2000 and an all-zero FirstValue. Return the octets
  // written: 28, 37, 12, 7 and 5; LeaveAll-only 27, 36, 10, 6 and 4.
  std::uint16_t mrpEncodeTalkerVector(MrpTxPacketContext& ctx, const MsrpTalkerAdvertiseAttribute& value,
                                      std::uint8_t event);
  std::uint16_t mrpEncodeTalkerFailedVector(MrpTxPacketContext& ctx, const MsrpTalkerFailedAttribute& value,
                                            std::uint8_t event);
  std::uint16_t mrpEncodeListenerVector(MrpTxPacketContext& ctx, const MsrpListenerAttribute& value,
                                        std::uint8_t event);
  std::uint16_t mrpEncodeDomainVector(MrpTxPacketContext& ctx, const MsrpDomainAttribute& value, std::uint8_t event);
  std::uint16_t mrpEncodeVlanVector(MrpTxPacketContext& ctx, const MvrpVlanAttribute& value, std::uint8_t event);
  // ==== end of vector encoder ====

  // ==== Requests and transmit assembly (MrpLibSend.cpp) ====
  // A transmit packet holds at most this many octets of messages; it is sent
  // once what it holds plus kTxHeadroom reaches this or the port's MTU.
  static constexpr std::uint16_t kTxPktBytes = 1500;
  static constexpr std::uint16_t kTxHeadroom = 64;

  // The agent's request for the attribute in the transmit fields, once per
  // port in mrpOutIntfQueue, which it drains. New (0), JoinIn (1) and
  // JoinMt (3) declare, Lv (5) withdraws and 7 drops the attribute without
  // a word; for these the queued port only counts: they act on
  // `parameters.intfId`. LeaveAll (6) is sent on each queued port, and the
  // port's LeaveAll timer of the type the engine's context held before the
  // call is restarted. The engine's current attribute is restored after.
  void mrpSendAttribute(const MrpParameters& parameters);
  // One attribute event (0..5, or 6 for LeaveAll) of the attribute in the
  // transmit fields into the port's first or second packet, which is sent
  // first when it holds a later attribute type, and after when it is full.
  void mrpSendAttributeIntf(const MrpParameters& parameters, const Velo::IntfId& intfId, bool secondPktContext);
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
  // Puts a LeaveAll of `attributeType` into the port's first transmit packet.
  void mrpSendLeaveAll(std::uint8_t attributeType, const Velo::IntfId& intfId);

  // Drop the engine's current attribute without sending anything: always,
  // or only when both its machines rest (applicant VO, registrar MT).
  void mrpHandleInternalLeave();
  void mrpDeleteAttrOnDefaultStates();
  // ==== end of requests and transmit assembly ====

  // ==== Ports (MrpLibPorts.cpp) ====
  // Opens the port for the application: declares it desired in the engine's
  // packet access, which opens its socket.
  void mrpInterfaceEnable(const Velo::IntfId& intfId);
  // Sends what the port's transmit packets hold, drops them, cleans the
  // port's registrations and withdraws the port from the packet access.
  void mrpInterfaceDisable(const Velo::IntfId& intfId);
  // Queues every registration of the port, or one, for batched deletion;
  // nothing on an engine in standby.
  void mrpCleanUpIntfDatabase(const Velo::IntfId& intfId);
  void mrpCleanUpIntfDatabaseAttribute(const Velo::IntfId& intfId, std::uint8_t attributeType,
                                       const std::uint64_t& attrKey);
  // The port's native VLAN; 0 when it has none.
  std::uint16_t getNativeVlanId(const Velo::IntfId& intfId) const;
  // The spanning-tree topology whose port role governs the port: "Cist" for
  // the single-tree modes, "NoStp" without spanning tree, else the one that
  // carries the port's native VLAN (empty when it has none). Throws
  // std::range_error for a native VLAN outside 1..4094.
  Quarn::String baseSpanningTreeTopo(const Velo::IntfId& intfId) const;
  // ==== end of ports ====

  // The engine, attached once by the engine itself; not owned.
  MrpSm* mrpSm() const { return mrpSm_; }
  void mrpSmIs(MrpSm* mrpSm) { mrpSm_ = mrpSm; }

 protected:
  ~MrpLib() override = default;

 private:
  static Quarn::Ptr<MrpTxPacketContext> contextIs(TxPacketContextMap& map, const Velo::IntfId& intfId,
                                                   Quarn::Ptr<Velo::Pkt> pkt);

  MrpApplication application_{};
  Velo::EthAddr applicationMacAddr_;
  std::uint16_t applicationEtype_ = 0;
  MsrpTalkerAdvertiseAttribute msrpTalkerAdvertiseRx_;
  MsrpTalkerFailedAttribute msrpTalkerFailedRx_;
  MsrpListenerAttribute msrpListenerVectorRx_;
  MsrpDomainAttribute msrpDomainVectorRx_;
  MvrpVlanAttribute mvrpVlanVectorRx_;
  MsrpTalkerAdvertiseAttribute msrpTalkerAdvertiseTx_;
  MsrpTalkerFailedAttribute msrpTalkerFailedTx_;
  MsrpListenerAttribute msrpListenerVectorTx_;
  MsrpDomainAttribute msrpDomainVectorTx_;
  MvrpVlanAttribute mvrpVlanVectorTx_;
  TxPacketContextMap mrpTxPacketContext_;
  TxPacketContextMap mrpTxSecondPacketContext_;
  Quarn::LinkQueue<Velo::IntfId> mrpOutIntfQueue_;
  Velo::IntfId mrpCurrentTxIntf_;
  MrpSm* mrpSm_ = nullptr;
};

// A new service object with every field zero or empty.
Quarn::Ptr<MrpLib> mrpLibFactory();

}  // namespace Mrp
