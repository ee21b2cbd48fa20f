#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "MrpModel/MrpApplication.h"

namespace MrpCli {

// The messages and vectors of an MRPDU as its octets lay them out, for a
// person to read field by field. Whether the PDU is acceptable, and what it
// means to the protocol, is the engine parser's to say (Decoder); this only
// shows the fields, and where the octets ran out.
//
//   ProtocolVersion (1)
//   Message: AttributeType (1), AttributeLength (1), [AttributeListLength (2), MSRP]
//     Vector: LeaveAllEvent | NumberOfValues (2), FirstValue (AttributeLength),
//             ThreePackedEvents ((n+2)/3), [FourPackedEvents ((n+3)/4), MSRP Listener]
//     ... EndMark (2)
//   ... EndMark (2); a PDU of no message may end behind its ProtocolVersion
class MrpduLayout {
 public:
  struct Vector {
    bool leaveAll = false;
    std::uint16_t numberOfValues = 0;
    // Once its octets were there to read.
    std::optional<std::vector<std::uint8_t>> firstValue;
    // One per value, once the packed octets were there to read.
    std::vector<std::uint8_t> events;
    std::vector<std::uint8_t> declarations;  // MSRP Listener vectors
  };
  struct Message {
    std::uint8_t attributeType = 0;
    std::uint8_t attributeLength = 0;
    std::optional<std::uint16_t> attributeListLength;  // MSRP
    std::vector<Vector> vectors;
  };

  // Reads `mrpdu` (from its ProtocolVersion octet) as far as its octets go.
  static MrpduLayout read(Mrp::MrpApplication application, std::span<const std::uint8_t> mrpdu);

  std::optional<std::uint8_t> protocolVersion;
  std::vector<Message> messages;
  // The field the octets end short of ("FirstValue"); nullptr when the PDU
  // ends whole.
  const char* endsShortOf = nullptr;
};

}  // namespace MrpCli
