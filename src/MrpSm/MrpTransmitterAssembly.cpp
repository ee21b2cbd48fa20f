#include <ios>

#include "MrpModel/MrpValueBytes.h"
#include "MrpModel/MrpWireFormat.h"
#include "MrpMsrp/MsrpValueSequence.h"
#include "MrpSm/MrpLib.h"
#include "MrpSm/MrpSmTrace.h"
#include "MrpSm/MrpTransmitter.h"
#include "MrpSm/MrpVectorEncoder.h"

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
void sendValue(MrpLib& lib, MrpTxPacketContext& ctx, std::uint8_t attributeEvent, const Velo::IntfId& intfId) {
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

void MrpTransmitter::mrpSendTalkerAdvertise(std::uint8_t attributeEvent, const Velo::IntfId& intfId,
                                            bool secondPktContext) {
  sendValue<TalkerAdvertiseSender>(lib_, *contexts(secondPktContext).at(intfId), attributeEvent, intfId);
}

void MrpTransmitter::mrpSendTalkerFailed(std::uint8_t attributeEvent, const Velo::IntfId& intfId,
                                         bool secondPktContext) {
  sendValue<TalkerFailedSender>(lib_, *contexts(secondPktContext).at(intfId), attributeEvent, intfId);
}

void MrpTransmitter::mrpSendListenerVector(std::uint8_t attributeEvent, const Velo::IntfId& intfId,
                                           bool secondPktContext) {
  sendValue<ListenerSender>(lib_, *contexts(secondPktContext).at(intfId), attributeEvent, intfId);
}

void MrpTransmitter::mrpSendDomainVector(std::uint8_t attributeEvent, const Velo::IntfId& intfId,
                                         bool secondPktContext) {
  sendValue<DomainSender>(lib_, *contexts(secondPktContext).at(intfId), attributeEvent, intfId);
}

void MrpTransmitter::mrpSendVlanVector(std::uint8_t attributeEvent, const Velo::IntfId& intfId, bool secondPktContext) {
  sendValue<VlanSender>(lib_, *contexts(secondPktContext).at(intfId), attributeEvent, intfId);
}

void MrpTransmitter::mrpSendMsrpAttributeIntf(const MrpParameters& parameters, const Velo::IntfId& intfId,
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

void MrpTransmitter::mrpSendMvrpAttributeIntf(const MrpParameters& parameters, const Velo::IntfId& intfId,
                                              bool secondPktContext) {
  if (static_cast<MvrpAttrType>(parameters.attributeType) != MvrpAttrType::vlanVector) {
    MRP_TRACE(8, " Invalid Attribute type in mrpSendMvrpAttributeIntf for " << intfId);
    return;
  }
  mrpSendVlanVector(parameters.attributeEvent, intfId, secondPktContext);
}

}  // namespace Mrp
