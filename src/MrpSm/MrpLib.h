#pragma once

#include <cstdint>
#include <memory>

#include "MrpModel/MrpApplication.h"
#include "MrpModel/MrpParameters.h"
#include "MrpMsrp/MsrpDomainAttribute.h"
#include "MrpMsrp/MsrpListenerAttribute.h"
#include "MrpMsrp/MsrpTalkerAdvertiseAttribute.h"
#include "MrpMsrp/MsrpTalkerFailedAttribute.h"
#include "MrpMvrp/MvrpVlanAttribute.h"
#include "MrpSm/MrpTransmitter.h"
#include "MrpSm/MrpTxPacketContext.h"
#include "MrpSm/MrpTxPorts.h"
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
  using TxPacketContextMap = MrpTransmitter::TxPacketContextMap;

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

  // What turns the attribute events into MRPDUs: the ports' packets under
  // construction, their assembly and sending, and the transmit cycle.
  MrpTransmitter& transmitter() { return transmitter_; }
  const MrpTransmitter& transmitter() const { return transmitter_; }

  // Each port's first and second transmit packet under construction.
  const TxPacketContextMap& mrpTxPacketContexts() const { return transmitter_.mrpTxPacketContexts(); }
  Quarn::Ptr<MrpTxPacketContext> mrpTxPacketContext(const Velo::IntfId& intfId) const {
    return transmitter_.mrpTxPacketContext(intfId);
  }
  Quarn::Ptr<MrpTxPacketContext> mrpTxPacketContextIs(const Velo::IntfId& intfId, Quarn::Ptr<Velo::Pkt> pkt) {
    return transmitter_.mrpTxPacketContextIs(intfId, std::move(pkt));
  }
  void mrpTxPacketContextDel(const Velo::IntfId& intfId) { transmitter_.mrpTxPacketContextDel(intfId); }
  void mrpTxPacketContextDelAll() { transmitter_.mrpTxPacketContextDelAll(); }

  const TxPacketContextMap& mrpTxSecondPacketContexts() const { return transmitter_.mrpTxSecondPacketContexts(); }
  Quarn::Ptr<MrpTxPacketContext> mrpTxSecondPacketContext(const Velo::IntfId& intfId) const {
    return transmitter_.mrpTxSecondPacketContext(intfId);
  }
  Quarn::Ptr<MrpTxPacketContext> mrpTxSecondPacketContextIs(const Velo::IntfId& intfId, Quarn::Ptr<Velo::Pkt> pkt) {
    return transmitter_.mrpTxSecondPacketContextIs(intfId, std::move(pkt));
  }
  void mrpTxSecondPacketContextDel(const Velo::IntfId& intfId) { transmitter_.mrpTxSecondPacketContextDel(intfId); }
  void mrpTxSecondPacketContextDelAll() { transmitter_.mrpTxSecondPacketContextDelAll(); }

  // Ports that the next mrpSendAttribute acts on.
  const Quarn::LinkQueue<Velo::IntfId>& mrpOutIntfQueue() const { return mrpOutIntfQueue_; }
  std::uint32_t mrpOutIntfQueueEnq(const Velo::IntfId& intfId) { return mrpOutIntfQueue_.enq(intfId); }
  Velo::IntfId mrpOutIntfQueueDeq() { return mrpOutIntfQueue_.deq(); }
  void mrpOutIntfQueueIs(std::uint32_t index, const Velo::IntfId& intfId) { mrpOutIntfQueue_.is(index, intfId); }
  void mrpOutIntfQueueDel(std::uint32_t index) { mrpOutIntfQueue_.del(index); }
  void mrpOutIntfQueueDelAll() { mrpOutIntfQueue_.delAll(); }

  const Velo::IntfId& mrpCurrentTxIntf() const { return transmitter_.mrpCurrentTxIntf(); }
  void mrpCurrentTxIntfIs(const Velo::IntfId& intfId) { transmitter_.mrpCurrentTxIntfIs(intfId); }

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

  // ==== Requests (MrpLibSend.cpp) ====
  // The agent's request for the attribute in the transmit fields, once per
  // port in mrpOutIntfQueue, which it drains. New (0), JoinIn (1) and
  // JoinMt (3) declare, Lv (5) withdraws and 7 drops the attribute without
  // a word; for these the queued port only counts: they act on
  // `parameters.intfId`. LeaveAll (6) is sent on each queued port, and the
  // port's LeaveAll timer of the type the engine's context held before the
  // call is restarted. The engine's current attribute is restored after.
  void mrpSendAttribute(const MrpParameters& parameters);

  // Drop the engine's current attribute without sending anything: always,
  // or only when both its machines rest (applicant VO, registrar MT).
  void mrpHandleInternalLeave();
  void mrpDeleteAttrOnDefaultStates();
  // ==== end of requests ====

  // ==== Transmit assembly, done by the transmitter ====
  void mrpSendAttributeIntf(const MrpParameters& parameters, const Velo::IntfId& intfId, bool secondPktContext) {
    transmitter_.mrpSendAttributeIntf(parameters, intfId, secondPktContext);
  }
  void mrpSendMsrpAttributeIntf(const MrpParameters& parameters, const Velo::IntfId& intfId, bool secondPktContext) {
    transmitter_.mrpSendMsrpAttributeIntf(parameters, intfId, secondPktContext);
  }
  void mrpSendMvrpAttributeIntf(const MrpParameters& parameters, const Velo::IntfId& intfId, bool secondPktContext) {
    transmitter_.mrpSendMvrpAttributeIntf(parameters, intfId, secondPktContext);
  }
  void mrpSendTalkerAdvertise(std::uint8_t attributeEvent, const Velo::IntfId& intfId, bool secondPktContext) {
    transmitter_.mrpSendTalkerAdvertise(attributeEvent, intfId, secondPktContext);
  }
  void mrpSendTalkerFailed(std::uint8_t attributeEvent, const Velo::IntfId& intfId, bool secondPktContext) {
    transmitter_.mrpSendTalkerFailed(attributeEvent, intfId, secondPktContext);
  }
  void mrpSendListenerVector(std::uint8_t attributeEvent, const Velo::IntfId& intfId, bool secondPktContext) {
    transmitter_.mrpSendListenerVector(attributeEvent, intfId, secondPktContext);
  }
  void mrpSendDomainVector(std::uint8_t attributeEvent, const Velo::IntfId& intfId, bool secondPktContext) {
    transmitter_.mrpSendDomainVector(attributeEvent, intfId, secondPktContext);
  }
  void mrpSendVlanVector(std::uint8_t attributeEvent, const Velo::IntfId& intfId, bool secondPktContext) {
    transmitter_.mrpSendVlanVector(attributeEvent, intfId, secondPktContext);
  }
  void mrpSendLeaveAll(std::uint8_t attributeType, const Velo::IntfId& intfId) {
    transmitter_.mrpSendLeaveAll(attributeType, intfId);
  }
  // ==== end of transmit assembly ====

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

  // The engine, attached once by the engine itself; not owned. Its ports
  // become the transmitter's; detaching it also stops the transmit cycle.
  MrpSm* mrpSm() const { return mrpSm_; }
  void mrpSmIs(MrpSm* mrpSm);

 protected:
  ~MrpLib() override = default;

 private:
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
  Quarn::LinkQueue<Velo::IntfId> mrpOutIntfQueue_;
  MrpSm* mrpSm_ = nullptr;
  std::unique_ptr<MrpTxPorts> enginePorts_;
  MrpTransmitter transmitter_{*this};
};

// A new service object with every field zero or empty.
Quarn::Ptr<MrpLib> mrpLibFactory();

}  // namespace Mrp
