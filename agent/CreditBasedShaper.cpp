#include "CreditBasedShaper.h"

namespace MrpAgent {

namespace {

// a x b / c rounded away from zero, for c > 0.
// What can hold up a class's first frame: the largest frame of a lower
// priority, already on the wire.
constexpr auto kMaxInterferenceOctets = static_cast<std::int64_t>(kMaxFrameOnWireOctets);

std::int64_t scaledAwayFromZero(std::int64_t a, std::int64_t b, std::int64_t c) {
  const __int128 product = static_cast<__int128>(a) * b;
  const __int128 quotient = product / c;
  const bool inexact = quotient * c != product;
  if (!inexact) return static_cast<std::int64_t>(quotient);
  return static_cast<std::int64_t>(product > 0 ? quotient + 1 : quotient - 1);
}

}  // namespace

std::int64_t CbsParameters::idleSlopeKbps() const { return (idleSlope + 999) / 1000; }

std::int64_t CbsParameters::sendSlopeKbps(std::uint64_t portSpeed) const {
  return idleSlopeKbps() - static_cast<std::int64_t>(portSpeed / 1000);
}

CbsParameters cbsParameters(std::uint64_t portSpeed, std::uint64_t idleSlope, std::uint32_t maxFrameOctets,
                            const std::optional<HigherClassLoad>& higher) {
  const auto speed = static_cast<std::int64_t>(portSpeed);
  CbsParameters shaper;
  shaper.idleSlope = static_cast<std::int64_t>(idleSlope);
  shaper.sendSlope = shaper.idleSlope - speed;
  if (!higher) {
    shaper.hiCredit = scaledAwayFromZero(kMaxInterferenceOctets, shaper.idleSlope, speed);
  } else {
    // idleSlope x (I / (speed - idleA) + F / speed), over one denominator.
    const auto idleA = static_cast<__int128>(higher->idleSlope);
    const __int128 numerator =
        static_cast<__int128>(shaper.idleSlope) *
        (static_cast<__int128>(kMaxInterferenceOctets) * speed + higher->maxFrameOctets * (speed - idleA));
    const __int128 denominator = (speed - idleA) * speed;
    const __int128 quotient = numerator / denominator;
    shaper.hiCredit = static_cast<std::int64_t>(quotient * denominator == numerator ? quotient : quotient + 1);
  }
  shaper.loCredit = scaledAwayFromZero(maxFrameOctets, shaper.sendSlope, speed);
  return shaper;
}

std::string tcCommand(const std::string& port, const SrClass& srClass, std::uint64_t portSpeed,
                      const CbsParameters& shaper) {
  std::string command = "tc qdisc replace dev ";
  command.append(port)
      .append(" parent 100:")
      .append(std::to_string(srClassIndex(srClass) + 1))
      .append(" cbs idleslope ")
      .append(std::to_string(shaper.idleSlopeKbps()))
      .append(" sendslope ")
      .append(std::to_string(shaper.sendSlopeKbps(portSpeed)))
      .append(" hicredit ")
      .append(std::to_string(shaper.hiCredit))
      .append(" locredit ")
      .append(std::to_string(shaper.loCredit))
      .append(" offload 0");
  return command;
}

}  // namespace MrpAgent
