#pragma once

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "quarn/Types.h"
#include "support/CistPortStatus.h"
#include "support/EngineScenario.h"
#include "support/FrameBuilder.h"

namespace MrpTest {

// The environment variable that fixes the LeaveAll period to its base.
inline constexpr const char* kDisableLeaveAllRandomization = "DISABLE_LEAVE_ALL_RANDOMIZATION";

// A LeaveAll period drawn from `r` (a value of rand()): base x (1 + r x 2^-32).
inline Quarn::Seconds leaveAllPeriodOf(Quarn::Seconds base, int r) {
  return base * (1.0 + static_cast<double>(r) * std::ldexp(1.0, -32));
}

// An MVRP PDU with a LeaveAll-only vector: header 0x2000, FirstValue 0.
inline const Bytes kMvrpLeaveAllPdu{
    0x00,                    // ProtocolVersion
    0x01, 0x02,              // AttributeType VLAN, AttributeLength 2
    0x20, 0x00, 0x00, 0x00,  // VectorHeader: LeaveAll, no values; FirstValue 0
    0x00, 0x00,              // the list's EndMark
    0x00, 0x00,              // the PDU's EndMark
};

// An MVRP PDU with one single-value vector of `event` per VLAN, in order.
inline Bytes mvrpPduOf(Mrp::MrpLib& lib, const std::vector<std::uint16_t>& vlans, std::uint8_t event) {
  FrameBuilder b(lib, Mrp::MrpApplication::mvrp);
  b.message(1);
  for (std::uint16_t vlan : vlans) b.vlan(Mrp::MvrpVlanAttribute(vlan), event);
  return b.mrpdu();
}

// The frames that carry a LeaveAll for some attribute type.
inline std::vector<SentFrame> leaveAllFramesOf(const std::vector<SentFrame>& frames) {
  std::vector<SentFrame> out;
  for (const SentFrame& frame : frames) {
    if (!frame.leaveAll.empty()) out.push_back(frame);
  }
  return out;
}

// The times of the frames that carry a LeaveAll.
inline std::vector<Quarn::Seconds> leaveAllTimesOf(const std::vector<SentFrame>& frames) {
  std::vector<Quarn::Seconds> times;
  for (const SentFrame& frame : leaveAllFramesOf(frames)) times.push_back(frame.time);
  return times;
}

}  // namespace MrpTest
