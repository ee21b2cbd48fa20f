#include "MrpSm/MrpPduParser.h"

#include <algorithm>
#include <cstdio>
#include <type_traits>
#include <vector>

#include "MrpModel/MrpValueBytes.h"
#include "MrpModel/MrpWireFormat.h"
#include "MrpMsrp/MsrpAttrType.h"
#include "MrpMvrp/MvrpAttrType.h"
#include "MrpSm/MrpParsedRunValue.h"
#include "MrpSm/MrpPduReader.h"
#include "MrpSm/MrpReceivedFrame.h"
#include "MrpSm/MrpSm.h"
#include "MrpSm/MrpSmLog.h"
#include "MrpSm/MrpSmTrace.h"
#include "MrpSm/MrpValueAt.h"
#include "MrpSm/MrpValueFields.h"
#include "quarn/Collection.h"

namespace Mrp {

// The receive parser: recursive descent over the MRPDU layout of
// MrpWireFormat.h, consuming the packet from its head. Each level returns
// parseContinue while octets remain, parseEndOfPdu at the PDU's EndMark and
// parseMalformed when the PDU cannot be read further.

namespace {

constexpr auto kContinue = MrpParseStatus::parseContinue;
constexpr auto kEndOfPdu = MrpParseStatus::parseEndOfPdu;
constexpr auto kMalformed = MrpParseStatus::parseMalformed;

// Room for the log texts below with a port name of any practical length.
constexpr std::size_t kLogTextOctets = 256;

MrpParseStatus malformed(MrpCounters& counters) {
  counters.numOfMalformedPktsInc();
  return kMalformed;
}

// An attribute type the application does not know, in a message whose
// AttributeLength (0) matched it: counted and passed over.
MrpParseStatus unidentifiedAttributeType(const MrpParseContext& context, MrpCounters& counters) {
  const std::uint8_t type = context.attributeType();
  MRP_TRACE(4, " ######## Unidentified attribute type = " << static_cast<unsigned>(type));
  counters.numOfUnknownAttributeTypeInc();
  char text[kLogTextOctets];
  std::snprintf(text, sizeof text, "Unidentified attribute type %d received on %s", type,
                context.intfId().name().c_str());
  Quarn::log(MRP_ERROR, text);
  return kContinue;
}

// A LeaveAll-only vector (no values) leaves these marks in the context for
// the received-event dispatch: key 0, one event counted, event 6 then 2.
void noteValuelessVector(MrpParseContext& context) {
  context.attributeKeyIs(0);
  if (context.leaveAll() != 1) return;
  context.attributeEventIs(6);
  context.eventsCounterInc(1);
  context.attributeEventIs(2);
}

// The events of `numberOfValues` values from their three-packed octets.
void unpackThreePacked(std::span<const std::uint8_t> packed, std::uint16_t numberOfValues,
                       std::vector<std::uint8_t>& events) {
  events.resize(std::size_t{packed.size()} * 3);
  std::uint8_t* out = events.data();
  for (const std::uint8_t octet : packed) {
    const auto triple = mrpUnpackThreePacked(octet);
    out[0] = triple[0];
    out[1] = triple[1];
    out[2] = triple[2];
    out += 3;
  }
  events.resize(numberOfValues);
}

// The value's octets from index 0, replacing those of an earlier occurrence.
void saveValueBytes(MrpParsedAttribute& parsedAttribute, std::span<const std::uint8_t> bytes) {
  parsedAttribute.attributeValueIs(bytes);
}

}  // namespace

// Inline: asked for every value, and the library's own calls would go
// through its symbol table otherwise.
inline bool MrpPduParser::collecting() const { return !frame_.recycledPkt() && !config_.mrpFlooding(); }

// While level 8 is traced, values are collected one by one, which traces
// how each is derived.
inline bool MrpPduParser::collectsRuns() const {
  return collecting() && !mrpSmTrace.enabled(8) && frame_.collectsRuns();
}

MrpParseStatus MrpPduParser::parseEndedEarly(const char* what) {
  MRP_TRACE(4, " ######## MRPDU ends inside its " << what);
  frame_.parseEndedEarlyIs(true);
  return malformed(counters_);
}

MrpParseStatus MrpPduParser::packedEventsTooLong(std::size_t packedOctets, std::size_t bytesLeft) {
  context_.attributeListBytesLeftIs(0);
  char text[kLogTextOctets];
  std::snprintf(text, sizeof text, "Number of values %d does not match with the packet bytes %d received on %s",
                static_cast<int>(packedOctets), static_cast<int>(bytesLeft),
                context_.intfId().name().c_str());
  Quarn::log(MRP_ERROR, text);
  return malformed(counters_);
}

void MrpPduParser::parseMrpdu(const Quarn::Ptr<Velo::Pkt>& pkt) {
  MrpPduReader in(*pkt);
  MRP_TRACE(8, "parseMrpdu payload= " << in.bytesLeft() << " bytes! ");
  frame_.parseEndedEarlyIs(false);
  MrpParseStatus status = kContinue;
  std::uint8_t version = 0;
  if (in.readU8(version)) {
    if (version != engine_.protocolVersion()) {
      MRP_TRACE(4, "MRPDU protocol version" << static_cast<unsigned>(version)
                                            << " is greater than the current supported version ");
      frame_.futureProtocolVersionIs(true);
      counters_.numOfIncorrectPduVersionInc();
    }
    while (in.bytesLeft() > 0 && status == kContinue) status = parseMessage(pkt);
  } else {
    status = parseEndedEarly("ProtocolVersion");
  }
  frame_.recycledPktIs(false);
  MRP_TRACE(8, "End of Mark/End of Packet reached, coming out \n");
  MRP_TRACE(8, "parse status = " << status);
}

MrpParseStatus MrpPduParser::parseMessage(const Quarn::Ptr<Velo::Pkt>& pkt) {
  MrpPduReader in(*pkt);
  std::uint8_t type = 0;
  std::uint8_t length = 0;
  if (!in.readU8(type) || !in.readU8(length)) return parseEndedEarly("message header");
  context_.attributeTypeIs(type);
  context_.attributeLengthIs(length);
  const MrpApplication application = lib_.application();
  if (application == MrpApplication::msrp) {
    std::uint16_t listLength = 0;
    if (!in.readU16(listLength)) return parseEndedEarly("AttributeListLength");
    context_.attributeListBytesLeftIs(listLength);
    MRP_TRACE(8, "AttributeListLength = " << listLength);
    if (listLength == 0) return malformed(counters_);
  }
  if (mrpSizeOfAttribute(type, static_cast<std::uint8_t>(application)) == length) {
    const MrpParseStatus status = parseAttributeList(pkt);
    if (status != kContinue) return status;
  } else {
    MRP_TRACE(
        4, " ######## Invalid attribute length = " << static_cast<unsigned>(length)
                                                   << " or Invalid attribute type = " << static_cast<unsigned>(type));
    if (!frame_.futureProtocolVersion()) return malformed(counters_);
    skipMessageDueToFutureProtocolVersion(pkt);
    if (frame_.parseEndedEarly()) return kMalformed;
  }
  // The PDU's EndMark is recognised, not consumed: padding behind it is never read.
  std::uint16_t next = 0;
  if (!in.peekU16(next)) return parseEndedEarly("EndMark");
  return next == 0 ? kEndOfPdu : kContinue;
}

void MrpPduParser::skipMessageDueToFutureProtocolVersion(const Quarn::Ptr<Velo::Pkt>& pkt) {
  MRP_TRACE(8, "void Mrp::MrpSm::skipMessageDueToFutureProtocolVersion(const Quarn::Ptr<Velo::Pkt>&)");
  MrpPduReader in(*pkt);
  switch (lib_.application()) {
    case MrpApplication::msrp:
      if (!in.skip(context_.attributeListBytesLeft())) parseEndedEarly("AttributeList");
      return;
    case MrpApplication::mvrp:
      break;
    default:
      return;
  }
  // MVRP messages carry no length: skip vector by vector, by the size that
  // each header implies.
  std::uint16_t word = 0;
  if (!in.peekU16(word)) {
    parseEndedEarly("VectorHeader");
    return;
  }
  do {
    const std::uint16_t numberOfValues = word & kMrpNumberOfValuesMask;
    // Sizes are taken modulo 256, deliberately: a vector of 256 octets or
    // more is skipped short and the rest is read as vectors.
    auto skip = static_cast<std::uint8_t>(mrpThreePackedOctets(numberOfValues) + context_.attributeLength() +
                                          kMrpVectorHeaderOctets);
    if (skip > in.bytesLeft()) skip = static_cast<std::uint8_t>(in.bytesLeft());
    // A step of 0 leaves the same word at the head: the message ends there
    // when it is an EndMark, otherwise the skip would never end.
    if (skip == 0 && word != 0) {
      parseEndedEarly("vector skipped by a step of 0 octets");
      return;
    }
    in.skip(skip);
    if (in.bytesLeft() == 0) return;
    if (!in.peekU16(word)) {
      parseEndedEarly("EndMark");
      return;
    }
  } while (word != 0);
  in.skip(kMrpEndMarkOctets);
}

MrpParseStatus MrpPduParser::parseAttributeList(const Quarn::Ptr<Velo::Pkt>& pkt) {
  MrpPduReader in(*pkt);
  MrpParseStatus status = kContinue;
  bool listEnded = false;
  for (;;) {
    status = parseVectorAttribute(pkt);
    if (frame_.parseEndedEarly()) return kMalformed;
    std::uint16_t next = 0;
    if (!in.peekU16(next)) return parseEndedEarly("EndMark");
    if (next == 0) {
      listEnded = true;
      break;
    }
    if (status != kContinue || in.bytesLeft() <= kMrpEndMarkOctets) break;
  }
  if (!listEnded) return malformed(counters_);
  // An MSRP list must come out at exactly its EndMark's own two octets.
  if (lib_.application() == MrpApplication::msrp && context_.attributeListBytesLeft() != kMrpEndMarkOctets) {
    return malformed(counters_);
  }
  in.skip(kMrpEndMarkOctets);
  return status;
}

MrpParseStatus MrpPduParser::parseVectorAttribute(const Quarn::Ptr<Velo::Pkt>& pkt) {
  MrpPduReader in(*pkt);
  std::uint16_t header = 0;
  if (!in.peekU16(header)) return parseEndedEarly("VectorHeader");
  const std::uint16_t numberOfValues = header & kMrpNumberOfValuesMask;
  if ((header & kMrpLeaveAllBit) == 0) {
    if (numberOfValues == 0) {
      context_.attributeListBytesLeftIs(0);
      return malformed(counters_);
    }
    context_.leaveAllIs(0);
  } else {
    MRP_TRACE(7, "leaveAllEvent is True for " << context_.intfId());
    MRP_TRACE(7, " leaveAllEvent is True");
    context_.leaveAllIs(1);
    if (!frame_.recycledPkt()) frame_.mrpRxLeaveAllIs(context_.attributeType(), true);
  }
  context_.numberOfValuesIs(numberOfValues);
  in.skip(kMrpVectorHeaderOctets);
  switch (lib_.application()) {
    case MrpApplication::msrp:
      return parseMsrpVector(pkt);
    case MrpApplication::mvrp:
      return parseMvrpVector(pkt);
  }
  MRP_TRACE(4, "Application " << lib_.application() << " not supported");
  counters_.numOfUnknownApplicationInc();
  return kContinue;
}

MrpParseStatus MrpPduParser::parseMsrpVector(const Quarn::Ptr<Velo::Pkt>& pkt) {
  MrpPduReader in(*pkt);
  switch (static_cast<MsrpAttrType>(context_.attributeType())) {
    case MsrpAttrType::talkerAdvertise: {
      const std::optional<MsrpTalkerAdvertiseAttribute> talker = parseTalkerAdvertise(pkt);
      if (!talker) return parseEndedEarly("Talker Advertise FirstValue");
      lib_.msrpTalkerAdvertiseRx() = *talker;
      return parseThreePackedEvents(pkt);
    }
    case MsrpAttrType::talkerFailed: {
      const std::optional<MsrpTalkerAdvertiseAttribute> talker = parseTalkerAdvertise(pkt);
      std::uint64_t bridgeId = 0;
      std::uint8_t failureCode = 0;
      if (!talker || !in.readU64(bridgeId) || !in.readU8(failureCode)) {
        return parseEndedEarly("Talker Failed FirstValue");
      }
      MsrpTalkerFailedAttribute& failed = lib_.msrpTalkerFailedRx();
      failed.talkerAdvertiseAttributeIs(*talker);
      failed.failureInformationIs(FailureInformation(bridgeId, failureCode));
      MRP_TRACE(8, " TalkerFailedAttribute = " << failed);
      return parseThreePackedEvents(pkt);
    }
    case MsrpAttrType::listenerVector: {
      std::uint64_t streamId = 0;
      if (!in.readU64(streamId)) return parseEndedEarly("Listener FirstValue");
      lib_.msrpListenerVectorRx().streamIdIs(streamId);
      MRP_TRACE(8, " ListenerVector stream Id =0x " << std::hex << streamId);
      return parseThreeFourPackedEvents(pkt);
    }
    case MsrpAttrType::domainVector: {
      std::uint8_t srClassId = 0;
      std::uint8_t srClassPriority = 0;
      std::uint16_t srClassVID = 0;
      if (!in.readU8(srClassId) || !in.readU8(srClassPriority) || !in.readU16(srClassVID)) {
        return parseEndedEarly("Domain FirstValue");
      }
      lib_.msrpDomainVectorRx() = MsrpDomainAttribute(srClassId, srClassPriority, srClassVID);
      MRP_TRACE(8, "DomainVector stream Id = " << static_cast<unsigned>(srClassId));
      return parseThreePackedEvents(pkt);
    }
    case MsrpAttrType::invalidAttribute:
      break;
  }
  return unidentifiedAttributeType(context_, counters_);
}

MrpParseStatus MrpPduParser::parseMvrpVector(const Quarn::Ptr<Velo::Pkt>& pkt) {
  if (static_cast<MvrpAttrType>(context_.attributeType()) != MvrpAttrType::vlanVector) {
    return unidentifiedAttributeType(context_, counters_);
  }
  MrpPduReader in(*pkt);
  std::uint16_t vlanId = 0;
  if (!in.readU16(vlanId)) return parseEndedEarly("VLAN FirstValue");
  lib_.mvrpVlanVectorRx().vlanIdIs(vlanId);
  MRP_TRACE(8, "VlanVector vlanId = " << vlanId);
  return parseThreePackedEvents(pkt);
}

MrpParseStatus MrpPduParser::parseThreePackedEvents(const Quarn::Ptr<Velo::Pkt>& pkt) {
  MrpPduReader in(*pkt);
  const std::uint16_t numberOfValues = context_.numberOfValues();
  const std::uint16_t packedOctets = mrpThreePackedOctets(numberOfValues);
  if (numberOfValues == 0) noteValuelessVector(context_);
  std::span<const std::uint8_t> packed;
  if (!in.peekBytes(packedOctets, packed)) return packedEventsTooLong(packedOctets, in.bytesLeft());
  const bool collected = numberOfValues > 0 && collectsRuns() && [&] {
    unpackThreePacked(packed, numberOfValues, vectorEvents_);
    vectorDeclarations_.clear();
    return collectRun();
  }();
  if (!collected) {
    frame_.materializeParsedRuns();
    std::uint16_t valueIndex = 0;
    for (const std::uint8_t octet : packed) {
      for (const std::uint8_t event : mrpUnpackThreePacked(octet)) {
        if (valueIndex == numberOfValues) break;
        processMrpEvent(event, valueIndex++);
      }
    }
  }
  context_.attributeListBytesLeftDec(
      static_cast<std::uint16_t>(kMrpVectorHeaderOctets + context_.attributeLength() + packedOctets));
  in.skip(packedOctets);
  return kContinue;
}

MrpParseStatus MrpPduParser::parseThreeFourPackedEvents(const Quarn::Ptr<Velo::Pkt>& pkt) {
  MrpPduReader in(*pkt);
  const std::uint16_t numberOfValues = context_.numberOfValues();
  if (numberOfValues == 0) {
    noteValuelessVector(context_);
    context_.attributeListBytesLeftDec(static_cast<std::uint16_t>(context_.attributeLength() + kMrpVectorHeaderOctets));
    return kContinue;
  }
  const std::uint16_t threePacked = mrpThreePackedOctets(numberOfValues);
  const std::uint16_t packedOctets = static_cast<std::uint16_t>(threePacked + mrpFourPackedOctets(numberOfValues));
  std::span<const std::uint8_t> packed;
  if (!in.peekBytes(packedOctets, packed)) return packedEventsTooLong(packedOctets, in.bytesLeft());
  const bool collected = collectsRuns() && [&] {
    unpackThreePacked(packed.first(threePacked), numberOfValues, vectorEvents_);
    vectorDeclarations_.clear();
    for (std::uint16_t valueIndex = 0; valueIndex < numberOfValues; ++valueIndex) {
      vectorDeclarations_.push_back(mrpUnpackFourPacked(packed[threePacked + valueIndex / 4u], valueIndex % 4u));
    }
    return collectRun();
  }();
  if (!collected) {
    frame_.materializeParsedRuns();
    std::uint16_t valueIndex = 0;
    for (const std::uint8_t octet : packed.first(threePacked)) {
      for (const std::uint8_t event : mrpUnpackThreePacked(octet)) {
        if (valueIndex == numberOfValues) break;
        processThreeAndFourPacked(pkt, event, valueIndex++, threePacked);
        if (frame_.parseEndedEarly()) return kMalformed;
      }
    }
  }
  MRP_TRACE(8, " attributeListBytesLeft before accounting this vector =" << context_.attributeListBytesLeft());
  context_.attributeListBytesLeftDec(
      static_cast<std::uint16_t>(kMrpVectorHeaderOctets + context_.attributeLength() + packedOctets));
  in.skip(packedOctets);
  MRP_TRACE(8, packedOctets << "  bytes deleted that are three packed and 4 packed");
  MRP_TRACE(8, " attributeListBytesLeft " << context_.attributeListBytesLeft());
  return kContinue;
}

void MrpPduParser::processThreeAndFourPacked(const Quarn::Ptr<Velo::Pkt>& pkt, std::uint8_t event,
                                             std::uint16_t valueIndex, std::uint16_t threePackedOctets) {
  MrpPduReader in(*pkt);
  std::uint8_t octet = 0;
  if (!in.peekU8(std::size_t{threePackedOctets} + valueIndex / 4u, octet)) {
    parseEndedEarly("FourPackedEvents");
    return;
  }
  lib_.msrpListenerVectorRx().listenerEventIs(
      static_cast<MsrpListenerEvent>(mrpUnpackFourPacked(octet, valueIndex % 4u)));
  processMrpEvent(event, valueIndex);
}

void MrpPduParser::processMrpEvent(std::uint8_t event, std::uint16_t valueIndex) {
  lib_.mrpValueFromFirstValue(valueIndex);
  context_.attributeKeyIs(engine_.mrpGetRxAttributeKey());
  context_.attributeEventIs(event);
  context_.eventsCounterInc(1);
  if (!collecting()) {
    MRP_TRACE(8, "Recycled Pkt. Returning after parsing");
    return;
  }
  saveParsedMrpAttribute();
}

bool MrpPduParser::collectRun() {
  const std::uint8_t type = context_.attributeType();
  const std::uint64_t firstKey = engine_.mrpGetRxAttributeKey();
  const std::size_t count = vectorEvents_.size();
  bool taken = false;
  withReceiveField(lib_, type, [&](auto& received) {
    if (!frame_.collectRun(type, valueBytes(received), firstKey, mrpKeyLimitOf(received), vectorEvents_,
                           vectorDeclarations_)) {
      return;
    }
    taken = true;
    // The receive slot holds the last value, as after collecting one by one.
    received = mrpValueAt(received, count - 1);
    if constexpr (std::is_same_v<std::remove_cvref_t<decltype(received)>, MsrpListenerAttribute>) {
      received.listenerEventIs(static_cast<MsrpListenerEvent>(vectorDeclarations_.back()));
    }
  });
  if (!taken) return false;
  context_.attributeKeyIs(firstKey + count - 1);
  context_.attributeEventIs(vectorEvents_.back());
  context_.eventsCounterInc(static_cast<std::uint32_t>(count));
  return true;
}

void MrpPduParser::saveParsedMrpAttribute() {
  const MrpParsedAttributeKey key{context_.attributeType(), context_.attributeKey()};
  Quarn::Ptr<MrpParsedAttribute> parsedAttribute = frame_.mrpParsedAttributeIs(key);
  // A later occurrence in the frame overwrites the event and the value.
  parsedAttribute->attributeEventIs(context_.attributeEvent());
  saveParsedMrpAttributeValue(*parsedAttribute);
  frame_.parsedKeyEnq(key);
}

void MrpPduParser::saveParsedMrpAttributeValue(MrpParsedAttribute& parsedAttribute) {
  switch (lib_.application()) {
    case MrpApplication::msrp:
      saveParsedMsrpAttributeValue(parsedAttribute);
      return;
    case MrpApplication::mvrp:
      saveParsedMvrpAttributeValue(parsedAttribute);
      return;
  }
}

void MrpPduParser::saveParsedMsrpAttributeValue(MrpParsedAttribute& parsedAttribute) {
  switch (static_cast<MsrpAttrType>(parsedAttribute.key().attributeType)) {
    case MsrpAttrType::talkerAdvertise:
      saveValueBytes(parsedAttribute, valueBytes(lib_.msrpTalkerAdvertiseRx()));
      return;
    case MsrpAttrType::talkerFailed:
      saveValueBytes(parsedAttribute, valueBytes(lib_.msrpTalkerFailedRx()));
      return;
    case MsrpAttrType::listenerVector:
      saveValueBytes(parsedAttribute, valueBytes(lib_.msrpListenerVectorRx()));
      return;
    case MsrpAttrType::domainVector:
      saveValueBytes(parsedAttribute, valueBytes(lib_.msrpDomainVectorRx()));
      return;
    case MsrpAttrType::invalidAttribute:
      return;
  }
}

void MrpPduParser::saveParsedMvrpAttributeValue(MrpParsedAttribute& parsedAttribute) {
  if (static_cast<MvrpAttrType>(parsedAttribute.key().attributeType) != MvrpAttrType::vlanVector) return;
  saveValueBytes(parsedAttribute, valueBytes(lib_.mvrpVlanVectorRx()));
}

}  // namespace Mrp
