#pragma once

#include <cstdint>
#include <ostream>

#include "velo/IntfId.h"

namespace Mrp {

// The argument of every request, indication and transmit call: which port
// and attribute type, and what to do or send (0 New, 1 JoinIn, 2 In,
// 3 JoinMt, 4 Mt, 5 Lv, 6 LeaveAll, 7 internal leave). The attribute's value
// travels in the service object's transmit fields.
//
// Join and leave indications also name the attribute's key, so an agent
// knows which registration came or went: a join carries the received event,
// a leave Lv. Requests leave the key at 0: it is derived from the value.
struct MrpParameters {
  static constexpr std::uint8_t kLeaveAllEvent = 6;
  static constexpr std::uint8_t kInternalLeaveEvent = 7;

  Velo::IntfId intfId;
  std::uint8_t attributeType = 0;
  std::uint8_t attributeEvent = 0;
  std::uint64_t attributeKey = 0;

  friend bool operator==(const MrpParameters&, const MrpParameters&) = default;
};

std::ostream& operator<<(std::ostream& os, const MrpParameters& parameters);

}  // namespace Mrp
