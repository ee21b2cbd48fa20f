#pragma once

#include <cstdint>
#include <vector>

// Valid MRPDUs (from the ProtocolVersion octet on), annotated field by field,
// shared by the parser's tests and benchmarks.
namespace MrpTest::Frames {

using Bytes = std::vector<std::uint8_t>;

// Three VLANs in one vector.
inline const Bytes kMvrpThreeVlans = {
    0x00,        // ProtocolVersion 0
    0x01,        // AttributeType: VLAN identifier
    0x02,        // AttributeLength 2
    0x00, 0x03,  // VectorHeader: no LeaveAll, 3 values
    0x00, 0x0A,  // FirstValue: VLAN 10
    0x2F,        // ThreePackedEvents: JoinIn, JoinIn, Lv
    0x00, 0x00,  // EndMark of the attribute list
    0x00, 0x00,  // EndMark of the MRPDU
};

// A LeaveAll vector with values, then a vector ending in a packed octet of 0.
inline const Bytes kMvrpTwoVectors = {
    0x00,        // ProtocolVersion 0
    0x01, 0x02,  // VLAN identifier, AttributeLength 2
    0x20, 0x03,  // VectorHeader: LeaveAll, 3 values
    0x00, 0x0A,  // FirstValue: VLAN 10
    0x2B,        // JoinIn, JoinIn, JoinIn
    0x00, 0x04,  // VectorHeader: 4 values
    0x00, 0x64,  // FirstValue: VLAN 100
    0x63,        // In, Mt, JoinMt
    0x00,        // New, (unused x2)
    0x00, 0x00,  // EndMark of the list
    0x00, 0x00,  // EndMark of the MRPDU
};

// A Listener message of 5 values (2 three-packed, 2 four-packed octets)
// whose AttributeListLength is `attributeListLength`.
inline Bytes msrpListenerFrame(std::uint16_t attributeListLength) {
  return {
      0x00,  // ProtocolVersion
      0x03,  // AttributeType: Listener
      0x08,  // AttributeLength 8
      static_cast<std::uint8_t>(attributeListLength >> 8),
      static_cast<std::uint8_t>(attributeListLength),  // AttributeListLength
      0x00, 0x05,                                      // VectorHeader: 5 values
      0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x00, 0x01,  // FirstValue: StreamID
      0x2B,                                            // JoinIn, JoinIn, JoinIn
      0xB4,                                            // Lv, New, (unused)
      0x87,                                            // ready, ignore, askingFailed, readyFailed
      0x80,                                            // ready, (unused x3)
      0x00, 0x00,                                      // EndMark of the list
      0x00, 0x00,                                      // EndMark of the MRPDU
  };
}
// The Listener vector's 14 octets and the list's EndMark.
inline constexpr std::uint16_t kListenerListLength = 16;

// One message of each MSRP type, the Listener's vector with LeaveAll.
inline const Bytes kMsrpAllTypes = {
    0x00,                                            // ProtocolVersion
    0x01, 0x19, 0x00, 0x1E,                          // Talker Advertise, length 25, list length 30
    0x00, 0x02,                                      // VectorHeader: 2 values
    0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x00, 0x01,  // StreamID
    0x91, 0xE0, 0xF0, 0x00, 0xFE, 0x00,              // Destination_Address
    0x00, 0x02,                                      // VLAN_identifier
    0x00, 0x80,                                      // MaxFrameSize
    0x00, 0x01,                                      // MaxIntervalFrames
    0x60,                                            // priority 3, rank 0
    0x00, 0x00, 0x10, 0x00,                          // AccumulatedLatency
    0x2A,                                            // JoinIn, JoinIn, (unused)
    0x00, 0x00,                                      // EndMark of the list
    0x02, 0x22, 0x00, 0x27,                          // Talker Failed, length 34, list length 39
    0x00, 0x01,                                      // VectorHeader: 1 value
    0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x00, 0x09,  // StreamID
    0x91, 0xE0, 0xF0, 0x00, 0xFE, 0x08,              // Destination_Address
    0x00, 0x02,                                      // VLAN_identifier
    0x00, 0x80,                                      // MaxFrameSize
    0x00, 0x01,                                      // MaxIntervalFrames
    0x60,                                            // priority 3, rank 0
    0x00, 0x00, 0x10, 0x00,                          // AccumulatedLatency
    0x80, 0x00, 0x00, 0x1C, 0x73, 0x00, 0x00, 0x01,  // Bridge ID
    0x05,                                            // Failure Code
    0x6C,                                            // JoinMt
    0x00, 0x00,                                      // EndMark of the list
    0x03, 0x08, 0x00, 0x10,                          // Listener, length 8, list length 16
    0x20, 0x05,                                      // VectorHeader: LeaveAll, 5 values
    0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x00, 0x01,  // StreamID
    0x2B,                                            // JoinIn, JoinIn, JoinIn
    0xB4,                                            // Lv, New, (unused)
    0x87,                                            // ready, ignore, askingFailed, readyFailed
    0x80,                                            // ready, (unused x3)
    0x00, 0x00,                                      // EndMark of the list
    0x04, 0x04, 0x00, 0x09,                          // Domain, length 4, list length 9
    0x00, 0x01,                                      // VectorHeader: 1 value
    0x06, 0x03, 0x00, 0x02,                          // SRclassID 6, priority 3, VID 2
    0x48,                                            // In
    0x00, 0x00,                                      // EndMark of the list
    0x00, 0x00,                                      // EndMark of the MRPDU
};

// One vector declaring the `count` VLANs from `firstVlan` on, each with the
// three-packed `event` (New 0 ... Lv 5); unused positions of the last
// packed octet hold 0.
inline Bytes mvrpVlanRunPdu(std::uint16_t firstVlan, std::uint16_t count, std::uint8_t event) {
  const auto u16 = [](Bytes& out, unsigned value) {
    out.push_back(static_cast<std::uint8_t>(value >> 8));
    out.push_back(static_cast<std::uint8_t>(value));
  };
  Bytes pdu = {0x00, 0x01, 0x02};  // ProtocolVersion, VLAN identifier, AttributeLength 2
  u16(pdu, count);                 // VectorHeader: no LeaveAll, `count` values
  u16(pdu, firstVlan);             // FirstValue
  for (unsigned value = 0; value < count; value += 3) {
    unsigned octet = 0;
    for (unsigned i = 0; i < 3; ++i) octet = octet * 6 + (value + i < count ? event : 0);
    pdu.push_back(static_cast<std::uint8_t>(octet));
  }
  u16(pdu, 0);  // EndMark of the list
  u16(pdu, 0);  // EndMark of the MRPDU
  return pdu;
}

}  // namespace MrpTest::Frames
