#include "MrpSm/MrpVectorEncoder.h"

#include <algorithm>
#include <stdexcept>

#include "MrpModel/MrpPackedEvents.h"
#include "MrpModel/MrpWireFormat.h"
#include "MrpSm/MrpSmTrace.h"

namespace Mrp {

namespace {

constexpr std::size_t kAttributeListLengthOffset = 2;

// The header and NumberOfValues of the current vector, which must have room
// for one more value.
std::uint16_t currentHeaderBeforeAppend(const MrpTxPacketContext& ctx, std::size_t vector) {
  const std::uint16_t header = ctx.u16At(vector);
  if ((header & kMrpNumberOfValuesMask) == kMrpNumberOfValuesMask) {
    throw std::out_of_range("NumberOfValues > 8191 not allowed");
  }
  return header;
}

void appendedHeaderIs(const MrpTxPacketContext& ctx, std::size_t vector, std::uint16_t header) {
  const auto n = static_cast<std::uint16_t>(header & kMrpNumberOfValuesMask);
  ctx.u16AtIs(vector, static_cast<std::uint16_t>((header & kMrpLeaveAllBit) | (n + 1)));
}

// Makes the message at `message` current and writes its type and length; the
// caller has checked that its header fits.
void openMessage(MrpTxPacketContext& ctx, std::size_t message, std::uint16_t headerOctets, std::uint8_t type,
                 std::uint16_t length) {
  ctx.curMessageIs(static_cast<std::uint16_t>(message));
  ctx.curVectorIs(static_cast<std::uint16_t>(message + headerOctets));
  ctx.currentAttrTypeIs(type);
  if (length == 0) {
    MRP_TRACE(4, " Invalid Attribute " << static_cast<unsigned>(type) << " to be encoded");
    return;
  }
  const auto typeAndLength = ctx.octets(message, 2);
  typeAndLength[0] = type;
  typeAndLength[1] = static_cast<std::uint8_t>(length);
}

}  // namespace

void mrpCreateNewMsrpHeader(MrpTxPacketContext& ctx, MsrpAttrType type) {
  std::size_t message = 0;
  if (const auto current = ctx.curMessage()) {
    const std::size_t lengthField = *current + kAttributeListLengthOffset;
    const std::uint16_t listLength = ctx.u16At(lengthField);
    const std::size_t endMark = *current + kMsrpMessageHeaderOctets + listLength;
    message = endMark + kMrpEndMarkOctets;
    ctx.octets(endMark, kMrpEndMarkOctets + kMsrpMessageHeaderOctets);  // checks room before any write
    ctx.u16AtIs(endMark, 0);
    ctx.u16AtIs(lengthField, static_cast<std::uint16_t>(listLength + kMrpEndMarkOctets));
  }
  ctx.u16AtIs(message + kAttributeListLengthOffset, 0);
  const auto code = static_cast<std::uint8_t>(type);
  openMessage(ctx, message, kMsrpMessageHeaderOctets, code, mrpSizeOfMsrpAttribute(code));
}

void mrpCreateNewMvrpHeader(MrpTxPacketContext& ctx, MvrpAttrType type) {
  std::size_t message = 0;
  if (const auto current = ctx.curMessage()) {
    const std::uint16_t lastVector = mvrpGetSizeOfVector(ctx.u16At(ctx.curVectorOrThrow()));
    const std::size_t endMark = *current + kMvrpMessageHeaderOctets + lastVector;
    message = endMark + kMrpEndMarkOctets;
    ctx.octets(endMark, kMrpEndMarkOctets + kMvrpMessageHeaderOctets);  // checks room before any write
    ctx.u16AtIs(endMark, 0);
  }
  ctx.octets(message, kMvrpMessageHeaderOctets);  // checks room before any write
  const auto code = static_cast<std::uint8_t>(type);
  openMessage(ctx, message, kMvrpMessageHeaderOctets, code, mrpSizeOfMvrpAttribute(code));
}

std::uint16_t mrpPackThreePackedEvent(MrpTxPacketContext& ctx, std::uint8_t attributeType, std::uint8_t event,
                                      std::uint8_t application) {
  mrpCheckThreePackedEvent(event);
  const std::size_t vector = ctx.curVectorOrThrow();
  const std::uint16_t header = currentHeaderBeforeAppend(ctx, vector);
  const auto n = static_cast<std::uint16_t>(header & kMrpNumberOfValuesMask);
  const std::size_t threePacked = vector + kMrpVectorHeaderOctets + mrpSizeOfAttribute(attributeType, application);
  const auto area = ctx.octets(threePacked, mrpThreePackedOctets(static_cast<std::uint16_t>(n + 1)));
  mrpEncodeThreePackedEvent(area.data(), event, static_cast<std::uint16_t>(n + 1));
  appendedHeaderIs(ctx, vector, header);
  return n % 3 == 0 ? 1 : 0;
}

std::uint16_t mrpPackThreeAndFourPackedEvent(MrpTxPacketContext& ctx, std::uint8_t event,
                                             MsrpListenerEvent declaration) {
  mrpCheckThreePackedEvent(event);
  mrpCheckFourPackedEvent(declaration);
  const std::size_t vector = ctx.curVectorOrThrow();
  const std::uint16_t header = currentHeaderBeforeAppend(ctx, vector);
  const auto n = static_cast<std::uint16_t>(header & kMrpNumberOfValuesMask);
  const auto next = static_cast<std::uint16_t>(n + 1);
  const std::size_t threePacked =
      vector + kMrpVectorHeaderOctets + mrpSizeOfMsrpAttribute(static_cast<std::uint8_t>(MsrpAttrType::listenerVector));
  // The whole packed area as it will be after the append, checked up front.
  const auto area = ctx.octets(threePacked, mrpThreePackedOctets(next) + mrpFourPackedOctets(next));
  const std::uint16_t threeOctets = mrpThreePackedOctets(n);
  const std::uint16_t fourOctets = mrpFourPackedOctets(next);

  mrpEncodeFourPackedEvent(area.data() + threeOctets, declaration, next);
  std::uint16_t added = n % 4 == 0 ? 1 : 0;
  if (n % 3 == 0) {
    const auto four = area.begin() + threeOctets;
    std::copy_backward(four, four + fourOctets, four + fourOctets + 1);
    *four = 0;
    ++added;
  }
  mrpEncodeThreePackedEvent(area.data(), event, next);
  appendedHeaderIs(ctx, vector, header);
  return added;
}

std::uint16_t mvrpGetSizeOfVector(std::uint16_t vectorHeader) {
  const auto n = static_cast<std::uint16_t>(vectorHeader & kMrpNumberOfValuesMask);
  const std::uint16_t firstValue = mrpSizeOfMvrpAttribute(static_cast<std::uint8_t>(MvrpAttrType::vlanVector));
  if (n > 0) return static_cast<std::uint16_t>(kMrpVectorHeaderOctets + firstValue + mrpThreePackedOctets(n));
  return (vectorHeader & kMrpLeaveAllBit) ? static_cast<std::uint16_t>(kMrpVectorHeaderOctets + firstValue) : 0;
}

std::uint16_t msrpGetNumOfPackedBytes(const MrpTxPacketContext& ctx) {
  const auto message = ctx.curMessage();
  if (!ctx.pkt() || !message) return 0;
  return static_cast<std::uint16_t>(*message + kMsrpMessageHeaderOctets +
                                    ctx.u16At(*message + kAttributeListLengthOffset));
}

std::uint16_t mvrpGetNumOfPackedBytes(const MrpTxPacketContext& ctx) {
  if (!ctx.pkt() || !ctx.curMessage()) return 0;
  const std::size_t vector = ctx.curVectorOrThrow();
  return static_cast<std::uint16_t>(vector + mvrpGetSizeOfVector(ctx.u16At(vector)));
}

std::uint16_t mrpGetNumOfPackedBytes(const MrpTxPacketContext& ctx, std::uint8_t application) {
  switch (static_cast<MrpApplication>(application)) {
    case MrpApplication::msrp:
      return msrpGetNumOfPackedBytes(ctx);
    case MrpApplication::mvrp:
      return mvrpGetNumOfPackedBytes(ctx);
  }
  return 0;
}

}  // namespace Mrp
