#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "AttributeValue.h"
#include "MrpModel/MrpApplication.h"
#include "decode/DecodedFrame.h"
#include "quarn/Types.h"

namespace MrpCli {

// A decoded frame for a person, `mrp decode --text`: one line per frame,
// fields apart by two spaces: its number, the seconds since the first
// frame of a capture, the sender, the application, the LeaveAll types,
// the values with their events, and what the engine counted against it.
//   3  2.000000  02:00:00:00:00:01  MVRP  LeaveAll VLAN  JoinIn VLAN 10-11, Lv VLAN 12
//   5  4.000000  02:00:00:00:00:01  (skipped: not an MSRP or MVRP frame)
//   1  MVRP  JoinIn VLAN 10  [malformed: numOfMalformedPkts 1]
std::string frameSummaryText(const DecodedFrame& decoded, std::optional<Quarn::Seconds> seconds);

// -V: every field of the frame's messages and vectors, one indented line
// each, as the octets lay them out (MrpduLayout); "" for a skipped frame.
//     Message
//       AttributeType: 1 (VLAN)
//       ...
//         [0] JoinIn VLAN 10
std::string frameFieldsText(const DecodedFrame& decoded);

// The values of a frame with their events, in order of receipt: runs of
// VLANs with one event as a set ("JoinIn VLAN 10-12"), streams one by one.
std::string attributeEventsText(Mrp::MrpApplication application, const std::vector<DecodedAttribute>& attributes);
// One value with its event: "JoinIn VLAN 10", "Lv listener 00:1b:21:00:00:01:00:01 ready",
// "JoinMt talker failed 00:... (91:e0:f0:00:fe:01, VLAN 2): insufficient bandwidth (code 1), bridge 80:00:...".
std::string valueEventText(std::uint8_t event, const MrpAgent::AttributeValue& value);

}  // namespace MrpCli
