#include <exception>
#include <ios>

#include "MrpModel/MrpValueBytes.h"
#include "MrpModel/MrpWireFormat.h"
#include "MrpMsrp/MsrpValueSequence.h"
#include "MrpSm/MrpLib.h"
#include "MrpSm/MrpSm.h"
#include "MrpSm/MrpSmTrace.h"
#include "MrpSm/MrpVectorEncoder.h"
#include "lumen/TraceRing.h"
#include "quarn/Assert.h"
#include "velo/PktManager.h"

namespace Mrp {

namespace {

constexpr std::size_t kAttributeListLengthOffset = 2;

// How each attribute type goes into a packet: its value in the transmit
// fields, the message it opens, whether a value continues the current
// vector (n values from `first`), and the primitives that start a vector
// or extend one.
struct TalkerAdvertiseSender {
  using Record = MsrpTalkerAdvertiseAttribute;
  static constexpr const char* kName = "mrpSendTalkerAdvertise";
  static constexpr MsrpAttrType kType = MsrpAttrType::talkerAdvertise;
  static Record& value(MrpLib& lib) { return lib.msrpTalkerAdvertiseTx(); }
  static bool follows(const Record& first, const Record& value, std::uint16_t n) {
    return mrpTalkerValueInSequence(first.streamId(), value.streamId(), first.frame().dmac(), value.frame().dmac(), n);
  }
  static std::uint16_t encode(MrpLib& lib, MrpTxPacketContext& ctx, const Record& value, std::uint8_t event) {
    return lib.mrpEncodeTalkerVector(ctx, value, event);
  }
  static std::uint16_t extend(MrpTxPacketContext& ctx, const Record&, std::uint8_t event) {
    return mrpPackThreePackedEvent(ctx, static_cast<std::uint8_t>(kType), event,
                                   static_cast<std::uint8_t>(MrpApplication::msrp));
  }
  static std::uint64_t streamId(const Record& value) { return value.streamId(); }
};

struct TalkerFailedSender {
  using Record = MsrpTalkerFailedAttribute;
  static constexpr const char* kName = "mrpSendTalkerFailed";
  static constexpr MsrpAttrType kType = MsrpAttrType::talkerFailed;
  static Record& value(MrpLib& lib) { return lib.msrpTalkerFailedTx(); }
  static bool follows(const Record& first, const Record& value, std::uint16_t n) {
    return TalkerAdvertiseSender::follows(first.talkerAdvertiseAttribute(), value.talkerAdvertiseAttribute(), n);
  }
  static std::uint16_t encode(MrpLib& lib, MrpTxPacketContext& ctx, const Record& value, std::uint8_t event) {
    return lib.mrpEncodeTalkerFailedVector(ctx, value, event);
  }
  static std::uint16_t extend(MrpTxPacketContext& ctx, const Record&, std::uint8_t event) {
    return mrpPackThreePackedEvent(ctx, static_cast<std::uint8_t>(kType), event,
                                   static_cast<std::uint8_t>(MrpApplication::msrp));
  }
  static std::uint64_t streamId(const Record& value) { return value.talkerAdvertiseAttribute().streamId(); }
};

struct ListenerSender {
  using Record = MsrpListenerAttribute;
  static constexpr const char* kName = "mrpSendListenerVector";
  static constexpr MsrpAttrType kType = MsrpAttrType::listenerVector;
  static Record& value(MrpLib& lib) { return lib.msrpListenerVectorTx(); }
  static bool follows(const Record& first, const Record& value, std::uint16_t n) {
    return first.streamId() + n == value.streamId();
  }
  static std::uint16_t encode(MrpLib& lib, MrpTxPacketContext& ctx, const Record& value, std::uint8_t event) {
    return lib.mrpEncodeListenerVector(ctx, value, event);
  }
  static std::uint16_t extend(MrpTxPacketContext& ctx, const Record& value, std::uint8_t event) {
    return mrpPackThreeAndFourPackedEvent(ctx, event, value.listenerEvent());
  }
  static std::uint64_t streamId(const Record& value) { return value.streamId(); }
};

struct DomainSender {
  using Record = MsrpDomainAttribute;
  static constexpr const char* kName = "mrpSendDomainVector";
  static constexpr MsrpAttrType kType = MsrpAttrType::domainVector;
  static Record& value(MrpLib& lib) { return lib.msrpDomainVectorTx(); }
  static bool follows(const Record& first, const Record& value, std::uint16_t n) {
    return mrpDomainValueInSequence(first.srClassId(), value.srClassId(), first.srClassPriority(),
                                    value.srClassPriority(), n);
  }
  static std::uint16_t encode(MrpLib& lib, MrpTxPacketContext& ctx, const Record& value, std::uint8_t event) {
    return lib.mrpEncodeDomainVector(ctx, value, event);
  }
  static std::uint16_t extend(MrpTxPacketContext& ctx, const Record&, std::uint8_t event) {
    return mrpPackThreePackedEvent(ctx, static_cast<std::uint8_t>(kType), event,
                                   static_cast<std::uint8_t>(MrpApplication::msrp));
  }
};

struct VlanSender {
  using Record = MvrpVlanAttribute;
  static constexpr const char* kName = "mrpSendVlanVector";
  static constexpr MvrpAttrType kType = MvrpAttrType::vlanVector;
  static Record& value(MrpLib& lib) { return lib.mvrpVlanVectorTx(); }
  static bool follows(const Record& first, const Record& value, std::uint16_t n) {
    return first.vlanId() + n == value.vlanId();
  }
  static std::uint16_t encode(MrpLib& lib, MrpTxPacketContext& ctx, const Record& value, std::uint8_t event) {
    return lib.mrpEncodeVlanVector(ctx, value, event);
  }
  static std::uint16_t extend(MrpTxPacketContext& ctx, const Record&, std::uint8_t event) {
    return mrpPackThreePackedEvent(ctx, static_cast<std::uint8_t>(kType), event,
                                   static_cast<std::uint8_t>(MrpApplication::mvrp));
  }
};

constexpr bool isMsrp(MsrpAttrType) { return true; }
constexpr bool isMsrp(MvrpAttrType) { return false; }

void openMessage(MrpTxPacketContext& ctx, MsrpAttrType type) { mrpCreateNewMsrpHeader(ctx, type); }
void openMessage(MrpTxPacketContext& ctx, MvrpAttrType type) { mrpCreateNewMvrpHeader(ctx, type); }

// The value that the stored vector holds at its first position.
template <class Sender>
typename Sender::Record firstValueOf(const MrpTxPacketContext& ctx, std::size_t vector) {
  const auto type = static_cast<std::uint8_t>(Sender::kType);
  const std::uint16_t length = isMsrp(Sender::kType) ? mrpSizeOfMsrpAttribute(type) : mrpSizeOfMvrpAttribute(type);
  return valueFromBytes<typename Sender::Record>(ctx.octets(vector + kMrpVectorHeaderOctets, length));
}

// Where a new vector of the current message goes: behind the last one.
std::size_t nextVectorPosition(const MrpTxPacketContext& ctx, bool msrp) {
  if (msrp) {
    const std::size_t message = *ctx.curMessage();
    return message + kMsrpMessageHeaderOctets + ctx.u16At(message + kAttributeListLengthOffset);
  }
  const std::size_t vector = ctx.curVectorOrThrow();
  return vector + mvrpGetSizeOfVector(ctx.u16At(vector));
}

// The octets a vector was given count in its MSRP message's AttributeListLength.
void attributeListLengthAdd(const MrpTxPacketContext& ctx, std::uint16_t added) {
  const std::size_t field = *ctx.curMessage() + kAttributeListLengthOffset;
  const std::uint16_t length = ctx.u16At(field);
  MRP_TRACE(8, " Cur Attribute List Length encoded = " << length << " Added bytes = " << added);
  ctx.u16AtIs(field, static_cast<std::uint16_t>(length + added));
  MRP_TRACE(8, " Updated Attribute List Length encoded = " << length + added);
}

template <class Sender>
void traceValue(const typename Sender::Record& value) {
  if constexpr (requires { Sender::streamId(value); }) {
    MRP_TRACE(8, "streamId = 0x" << std::hex << Sender::streamId(value));
  } else {
    MRP_TRACE(8, "value = " << value);
  }
}

template <class Sender>
void sendValue(MrpLib& lib, std::uint8_t attributeEvent, const Velo::IntfId& intfId, bool secondPktContext) {
  MrpTxPacketContext& ctx =
      *(secondPktContext ? lib.mrpTxSecondPacketContext(intfId) : lib.mrpTxPacketContext(intfId));
  const typename Sender::Record& value = Sender::value(lib);
  MRP_TRACE(8, Sender::kName << " on " << intfId << " event=" << static_cast<unsigned>(attributeEvent));
  traceValue<Sender>(value);
  constexpr bool msrp = isMsrp(Sender::kType);
  const auto type = static_cast<std::uint8_t>(Sender::kType);
  const MrpTxPacketContext::Position message = ctx.curMessage();
  std::uint16_t added = 0;
  // A LeaveAll always opens a message of its own.
  if (attributeEvent != kMrpLeaveAllOnlyEvent && message && ctx.octets(*message, 1)[0] == type) {
    const std::size_t vector = ctx.curVectorOrThrow();
    const auto n = static_cast<std::uint16_t>(ctx.u16At(vector) & kMrpNumberOfValuesMask);
    if (Sender::follows(firstValueOf<Sender>(ctx, vector), value, n)) {
      added = Sender::extend(ctx, value, attributeEvent);
    } else {
      ctx.curVectorIs(static_cast<std::uint16_t>(nextVectorPosition(ctx, msrp)));
      added = Sender::encode(lib, ctx, value, attributeEvent);
    }
  } else {
    openMessage(ctx, Sender::kType);
    added = Sender::encode(lib, ctx, value, attributeEvent);
  }
  if (msrp) attributeListLengthAdd(ctx, added);
}

}  // namespace

void MrpLib::mrpSendTalkerAdvertise(std::uint8_t attributeEvent, const Velo::IntfId& intfId, bool secondPktContext) {
  sendValue<TalkerAdvertiseSender>(*this, attributeEvent, intfId, secondPktContext);
}

void MrpLib::mrpSendTalkerFailed(std::uint8_t attributeEvent, const Velo::IntfId& intfId, bool secondPktContext) {
  sendValue<TalkerFailedSender>(*this, attributeEvent, intfId, secondPktContext);
}

void MrpLib::mrpSendListenerVector(std::uint8_t attributeEvent, const Velo::IntfId& intfId, bool secondPktContext) {
  sendValue<ListenerSender>(*this, attributeEvent, intfId, secondPktContext);
}

void MrpLib::mrpSendDomainVector(std::uint8_t attributeEvent, const Velo::IntfId& intfId, bool secondPktContext) {
  sendValue<DomainSender>(*this, attributeEvent, intfId, secondPktContext);
}

void MrpLib::mrpSendVlanVector(std::uint8_t attributeEvent, const Velo::IntfId& intfId, bool secondPktContext) {
  sendValue<VlanSender>(*this, attributeEvent, intfId, secondPktContext);
}

void MrpLib::mrpSendLeaveAll(std::uint8_t attributeType, const Velo::IntfId& intfId) {
  MRP_TRACE(7, " \n mrpSendLeaveAll: type = " << static_cast<char>(attributeType) << " intfId = " << intfId);
  mrpSendAttributeIntf({intfId, attributeType, MrpParameters::kLeaveAllEvent}, intfId, false);
}

void MrpLib::mrpSendAttributeIntf(const MrpParameters& parameters, const Velo::IntfId& intfId,
                                  bool secondPktContext) {
  QASSERT(mrpSm());
  MrpSm& sm = *mrpSm();
  if (!sm.pamCollection()->intfPam(intfId)) {
    MRP_TRACE(4, " Tx is being Attempted before the PAM is enabled ");
    return;
  }
  // Nothing but the wire's events and a LeaveAll can be encoded.
  if (parameters.attributeEvent > MrpParameters::kLeaveAllEvent) {
    MRP_TRACE(4, " Invalid attribute event in mrpSendAttributeIntf " << parameters);
    return;
  }
  TxPacketContextMap& contexts = secondPktContext ? mrpTxSecondPacketContext_ : mrpTxPacketContext_;
  auto open = contexts.find(intfId);
  // Messages of a packet go in ascending attribute type.
  if (open != contexts.end() && open->second->currentAttrType() > parameters.attributeType) {
    sm.mrpTransmitTxPacket(intfId, secondPktContext);
    open = contexts.find(intfId);
  }
  const bool fresh = open == contexts.end();
  if (fresh) {
    Quarn::Ptr<Velo::Pkt> pkt = Velo::pktManager().pktNew(kTxPktBytes);
    if (!pkt) {
      MRP_TRACE(4, "Packet allocation failed for " << parameters);
      Lumen::fastTrace().record("MrpSm: packet allocation failed", parameters.attributeType,
                                parameters.attributeEvent);
      return;
    }
    secondPktContext ? mrpTxSecondPacketContextIs(intfId, std::move(pkt)) : mrpTxPacketContextIs(intfId, std::move(pkt));
  }
  try {
    switch (application_) {
      case MrpApplication::msrp:
        mrpSendMsrpAttributeIntf(parameters, intfId, secondPktContext);
        break;
      case MrpApplication::mvrp:
        mrpSendMvrpAttributeIntf(parameters, intfId, secondPktContext);
        break;
      default:
        MRP_TRACE(8, " Not supported Application:  " << static_cast<unsigned>(application_));
        Lumen::fastTrace().record("MrpSm: application not supported", static_cast<std::int64_t>(application_));
        break;
    }
  } catch (const std::exception& error) {
    // The size flush keeps every write inside the packet; should one still
    // be refused, the packet under construction cannot be trusted.
    MRP_TRACE(4, " Encoding failed on " << intfId << ": " << error.what() << "; packet dropped");
    contexts.erase(intfId);
    return;
  }
  const Quarn::Ptr<MrpTxPacketContext> context = Quarn::entryOf(contexts, intfId);
  // A packet that nothing was put into is not kept: it would go out empty.
  if (fresh && !context->curMessage()) {
    contexts.erase(intfId);
    return;
  }
  const auto size = static_cast<std::uint16_t>(mrpGetNumOfPackedBytes(*context, static_cast<std::uint8_t>(application_)) +
                                               kTxHeadroom);
  const Quarn::Ptr<Interface::EthPhyIntfStatus> status = sm.ethPhyIntfStatusDir()->ethPhyIntfStatus(intfId);
  // An MTU of 0 is one the port has not reported yet.
  const bool overMtu = status && status->mtu() != 0 && size >= status->mtu();
  if (size >= kTxPktBytes || overMtu) sm.mrpTransmitTxPacket(intfId, secondPktContext);
}

void MrpLib::mrpSendMsrpAttributeIntf(const MrpParameters& parameters, const Velo::IntfId& intfId,
                                      bool secondPktContext) {
  const std::uint8_t event = parameters.attributeEvent;
  switch (static_cast<MsrpAttrType>(parameters.attributeType)) {
    case MsrpAttrType::talkerAdvertise:
      mrpSendTalkerAdvertise(event, intfId, secondPktContext);
      return;
    case MsrpAttrType::talkerFailed:
      mrpSendTalkerFailed(event, intfId, secondPktContext);
      return;
    case MsrpAttrType::listenerVector:
      mrpSendListenerVector(event, intfId, secondPktContext);
      return;
    case MsrpAttrType::domainVector:
      mrpSendDomainVector(event, intfId, secondPktContext);
      return;
    case MsrpAttrType::invalidAttribute:
      break;
  }
  MRP_TRACE(8, " Invalid Attribute type in mrpSendAttributeIntf for " << intfId);
}

void MrpLib::mrpSendMvrpAttributeIntf(const MrpParameters& parameters, const Velo::IntfId& intfId,
                                      bool secondPktContext) {
  if (static_cast<MvrpAttrType>(parameters.attributeType) != MvrpAttrType::vlanVector) {
    MRP_TRACE(8, " Invalid Attribute type in mrpSendMvrpAttributeIntf for " << intfId);
    return;
  }
  mrpSendVlanVector(parameters.attributeEvent, intfId, secondPktContext);
}

// ---- The agent's requests.

void MrpLib::mrpSendAttribute(const MrpParameters& parameters) {
  QASSERT(mrpSm());
  MrpSm& sm = *mrpSm();
  MRP_TRACE(8, "sendAttribute called");
  // A standby engine has no machines to drive and sends nothing.
  if (!sm.active()) {
    mrpOutIntfQueueDelAll();
    return;
  }
  MrpParseContext& context = *sm.parseContext();
  const MrpAttribute saved{context.intfId(), context.attributeType(), context.attributeKey()};
  const Quarn::Seconds leaveAllTime = getLeaveAllTime(sm, saved.intfId);
  MrpApplicantSm& applicant = *sm.applicantSm();
  while (!mrpOutIntfQueue_.empty()) {
    const Velo::IntfId outIntf = mrpOutIntfQueueDeq();
    context.intfIdIs(parameters.intfId);
    context.attributeTypeIs(parameters.attributeType);
    context.attributeKeyIs(sm.mrpGetTxAttributeKey());
    switch (parameters.attributeEvent) {
      case static_cast<std::uint8_t>(MrpThreePackedEvent::newEvent):
      case static_cast<std::uint8_t>(MrpThreePackedEvent::joinIn):
      case static_cast<std::uint8_t>(MrpThreePackedEvent::joinMt): {
        const bool declareNew = parameters.attributeEvent == static_cast<std::uint8_t>(MrpThreePackedEvent::newEvent);
        applicant.applicantEventIs(declareNew ? MrpApplicantEvent::newReq : MrpApplicantEvent::joinReq);
        applicant.handleApplicantEvent();
        if (const Quarn::Ptr<MrpAttrDatabase> entry = sm.mrpGetAttribute(false)) {
          sm.mrpPopulateValueInDatabase(entry, true);
        }
        break;
      }
      case static_cast<std::uint8_t>(MrpThreePackedEvent::lv):
        applicant.applicantEventIs(MrpApplicantEvent::lvReq);
        applicant.handleApplicantEvent();
        mrpDeleteAttrOnDefaultStates();
        break;
      case MrpParameters::kLeaveAllEvent: {
        MRP_TRACE(7, "mrpSendAttribute: lvAllEvent_. intfId = " << outIntf << " attrType = "
                                                                 << static_cast<unsigned>(parameters.attributeType));
        mrpSendAttributeIntf(parameters, outIntf, false);
        // The type the engine's context held before the call, on purpose.
        sm.mrpStatus()->applicationDatabaseIs(application_)->leaveAllTimeIs({outIntf, saved.attributeType}, leaveAllTime);
        sm.leaveAllSm()->mrpRestartLeaveAllTimer(outIntf, saved.attributeType, leaveAllTime);
        break;
      }
      case MrpParameters::kInternalLeaveEvent:
        mrpHandleInternalLeave();
        break;
      default:
        MRP_TRACE(4, "Event = " << static_cast<char>(parameters.attributeEvent) << " not handled in sendAttributeIntf ");
        break;
    }
  }
  context.intfIdIs(saved.intfId);
  context.attributeTypeIs(saved.attributeType);
  context.attributeKeyIs(saved.attributeKey);
}

void MrpLib::mrpHandleInternalLeave() {
  MrpSm& sm = *mrpSm();
  MRP_TRACE(8, " Type = " << static_cast<char>(sm.parseContext()->attributeType()) << " Adv streamId = "
                          << std::hex << msrpTalkerAdvertiseTx_.streamId() << " Failed streamId = "
                          << msrpTalkerFailedTx_.talkerAdvertiseAttribute().streamId() << std::dec
                          << " Listener Stream Id = " << MsrpAttrType::listenerVector);
  sm.registrarSm()->mrpDeleteAttrFromLeavePending();
  sm.mrpDeleteAttrFromDatabase();
}

void MrpLib::mrpDeleteAttrOnDefaultStates() {
  MrpSm& sm = *mrpSm();
  const Quarn::Ptr<MrpAttrDatabase> entry = sm.mrpGetAttribute(false);
  if (!entry) return;
  MRP_TRACE(6, " mrpDeleteAttrOnDefaultStates called. reg state= " << entry->registrarState());
  if (entry->applicantState() != MrpApplicantState::vo || entry->registrarState() != MrpRegistrarState::mt) return;
  sm.registrarSm()->mrpDeleteAttrFromLeavePending();
  sm.mrpDeleteAttrFromDatabase();
}

}  // namespace Mrp
