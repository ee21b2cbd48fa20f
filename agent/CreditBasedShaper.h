#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "SrClass.h"

namespace MrpAgent {

// The credit-based shaper of one SR class on one port, from what is
// reserved there: slopes in bit/s, credits in octets.
struct CbsParameters {
  std::int64_t idleSlope = 0;
  std::int64_t sendSlope = 0;
  std::int64_t hiCredit = 0;
  std::int64_t loCredit = 0;

  // The slopes as the kernel's cbs qdisc takes them, in kbit/s (the idle
  // slope rounded up, so that the reservation always fits).
  std::int64_t idleSlopeKbps() const;
  std::int64_t sendSlopeKbps(std::uint64_t portSpeed) const;
  friend bool operator==(const CbsParameters&, const CbsParameters&) = default;
};

// What the classes above it take from a class B shaper.
struct HigherClassLoad {
  std::uint64_t idleSlope = 0;       // bit/s
  std::uint32_t maxFrameOctets = 0;  // its largest frame on the wire
};

// The shaper of a class that reserves `idleSlope` bit/s of a port of
// `portSpeed` bit/s and whose largest frame is `maxFrameOctets` on the wire.
// Class A: hiCredit = maxInterference x idleSlope / speed; class B adds what
// class A may send before it: hiCredit = idleSlope x (maxInterference /
// (speed - idleSlopeA) + maxFrameA / speed). Both: loCredit = maxFrame x
// sendSlope / speed. Credits are rounded away from zero.
CbsParameters cbsParameters(std::uint64_t portSpeed, std::uint64_t idleSlope, std::uint32_t maxFrameOctets,
                            const std::optional<HigherClassLoad>& higher);

// The command that applies the shaper to a class's queue under an mqprio
// root of handle 100 (class A on queue 100:1, class B on 100:2).
std::string tcCommand(const std::string& port, const SrClass& srClass, std::uint64_t portSpeed,
                      const CbsParameters& shaper);

}  // namespace MrpAgent
