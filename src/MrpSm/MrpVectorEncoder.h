#pragma once

#include <cstdint>

#include "MrpMsrp/MsrpAttrType.h"
#include "MrpMsrp/MsrpListenerEvent.h"
#include "MrpMvrp/MvrpAttrType.h"
#include "MrpSm/MrpTxPacketContext.h"

namespace Mrp {

// Primitives that write messages, vectors and packed events into a transmit
// packet under construction. They decide nothing about what is sent: the
// transmit assembly chooses when to open a message, extend a vector or start
// a new one, and adds the octet counts they return to the MSRP message's
// AttributeListLength. A position outside the packet, an event or
// declaration that does not fit, or a full vector throws std::out_of_range
// before anything is written; writing without a current vector throws
// std::logic_error.
//
//   MSRP message: AttributeType(1) AttributeLength(1) AttributeListLength(2) vectors... EndMark(2)
//   MVRP message: AttributeType(1) AttributeLength(1) vectors... EndMark(2)

inline constexpr std::uint16_t kMsrpMessageHeaderOctets = 4;
inline constexpr std::uint16_t kMvrpMessageHeaderOctets = 2;

// The event code that asks the vector writers for a LeaveAll-only vector.
inline constexpr std::uint8_t kMrpLeaveAllOnlyEvent = 6;

// Close the current message, if any, and open a new one of `type` right after
// it: curMessage, curVector and currentAttrType then describe the new message,
// whose first vector goes at curVector. An unknown type is traced and leaves
// the message without type and length octets.
//
// MSRP closes by writing the list's EndMark at message + 4 +
// AttributeListLength and adding 2 to that length. MVRP closes at message + 2
// + the size of the current vector alone, which is the end of the list only
// when the message holds one vector. That computation is deliberate and is
// kept as it is.
void mrpCreateNewMsrpHeader(MrpTxPacketContext& ctx, MsrpAttrType type);
void mrpCreateNewMvrpHeader(MrpTxPacketContext& ctx, MvrpAttrType type);

// Append one value with `event` (0..5) to the current vector: NumberOfValues
// + 1, the LeaveAll bit kept. Returns the octets the vector grew by: 1 when a
// new three-packed octet was begun, else 0.
std::uint16_t mrpPackThreePackedEvent(MrpTxPacketContext& ctx, std::uint8_t attributeType, std::uint8_t event,
                                      std::uint8_t application);
// The same for the current Listener vector, with its declaration. The
// four-packed octets follow the three-packed ones and move up when a
// three-packed octet is inserted. Returns 0, 1 or 2.
std::uint16_t mrpPackThreeAndFourPackedEvent(MrpTxPacketContext& ctx, std::uint8_t event,
                                             MsrpListenerEvent declaration);

// Octets of an MVRP vector with this VectorHeader: 2 + 2 + ceil(n / 3), 4 for
// a LeaveAll-only vector, 0 for a header with neither values nor LeaveAll.
std::uint16_t mvrpGetSizeOfVector(std::uint16_t vectorHeader);

// Octets of the packet used so far, 0 without a packet or a message. MSRP:
// up to the end of the current message's list so far; MVRP: up to the end of
// the current vector. Any other application: 0.
std::uint16_t mrpGetNumOfPackedBytes(const MrpTxPacketContext& ctx, std::uint8_t application);
std::uint16_t msrpGetNumOfPackedBytes(const MrpTxPacketContext& ctx);
std::uint16_t mvrpGetNumOfPackedBytes(const MrpTxPacketContext& ctx);

}  // namespace Mrp
