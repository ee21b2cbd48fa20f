#pragma once

#include <array>
#include <cstdint>

#include "MrpModel/MrpApplication.h"
#include "velo/EthAddr.h"

namespace Mrp {

// The MRPDU as this engine reads and writes it (all integers big-endian):
//
//   MRPDU:           ProtocolVersion(1) Message... EndMark(2)=0x0000
//   Message:         AttributeType(1) AttributeLength(1)
//                    [AttributeListLength(2), MSRP only] VectorAttribute... EndMark(2)
//   VectorAttribute: VectorHeader(2) FirstValue(AttributeLength)
//                    ThreePackedEvents(ceil(n/3)) [FourPackedEvents(ceil(n/4)), MSRP Listener only]
//   VectorHeader:    bit 13 LeaveAll, bits 12..0 NumberOfValues n

inline constexpr std::uint16_t kMrpLeaveAllBit = 0x2000;
inline constexpr std::uint16_t kMrpNumberOfValuesMask = 0x1FFF;
inline constexpr std::size_t kMrpVectorHeaderOctets = 2;
inline constexpr std::size_t kMrpEndMarkOctets = 2;

// FirstValue length of an attribute type: 0, with a trace, for a type or an
// application the engine does not know.
std::uint16_t mrpSizeOfAttribute(std::uint8_t attributeType, std::uint8_t application);
std::uint16_t mrpSizeOfMsrpAttribute(std::uint8_t attributeType);
std::uint16_t mrpSizeOfMvrpAttribute(std::uint8_t attributeType);

// NumberOfValues of the two-octet VectorHeader at `vectorHeader`.
inline std::uint16_t mrpGetNumOfValues(const std::uint8_t* vectorHeader) {
  return static_cast<std::uint16_t>(((vectorHeader[0] << 8) | vectorHeader[1]) & kMrpNumberOfValuesMask);
}

// Octets that carry `numberOfValues` events packed three or four to an octet.
constexpr std::uint16_t mrpThreePackedOctets(std::uint16_t numberOfValues) {
  return static_cast<std::uint16_t>((numberOfValues + 2) / 3);
}
constexpr std::uint16_t mrpFourPackedOctets(std::uint16_t numberOfValues) {
  return static_cast<std::uint16_t>((numberOfValues + 3) / 4);
}

// The three events (e1, e2, e3) of a three-packed octet, (e1 * 6 + e2) * 6 + e3.
// Computed by multiply-and-shift, one octet at a time on the receive path:
// x / 36 == (x * 57) >> 11 and x / 6 == (x * 171) >> 10 for every octet x.
// Octets above 215 give e1 of 6 or 7, which no machine knows.
constexpr std::array<std::uint8_t, 3> mrpUnpackThreePacked(std::uint8_t octet) {
  const unsigned e1 = (octet * 57u) >> 11;
  const unsigned sixths = (octet * 171u) >> 10;
  const unsigned e2 = sixths - ((e1 * 6u));
  const unsigned e3 = octet - sixths * 6u;
  return {static_cast<std::uint8_t>(e1), static_cast<std::uint8_t>(e2), static_cast<std::uint8_t>(e3)};
}

// The two-bit Listener declaration at `position` (0..3, from bits 7..6) of a
// four-packed octet.
constexpr std::uint8_t mrpUnpackFourPacked(std::uint8_t octet, unsigned position) {
  return static_cast<std::uint8_t>((octet >> (6 - 2 * (position & 3u))) & 0x3u);
}

// The group address and EtherType an application's frames use unless the
// agent configures others: what the standard assigns to MSRP and MVRP.
struct MrpApplicationFraming {
  Velo::EthAddr macAddr;
  std::uint16_t etype = 0;
};
// All zero for an application the engine does not know.
MrpApplicationFraming mrpDefaultApplicationFraming(MrpApplication application);

}  // namespace Mrp
