#include "PortReservations.h"

#include <algorithm>

namespace MrpAgent {

std::uint64_t PortReservations::limit(const SrClass& srClass) const {
  std::uint64_t percent = 0;
  for (std::size_t i = 0; i <= srClassIndex(srClass) && i < deltaBandwidth_.size(); ++i) percent += deltaBandwidth_[i];
  return speed_ * std::min<std::uint64_t>(percent, 100) / 100;
}

std::uint64_t PortReservations::reservedUpTo(const SrClass& srClass) const {
  std::uint64_t total = 0;
  for (const Reservation& reservation : reservations_) {
    if (srClassIndex(reservation.srClass) <= srClassIndex(srClass)) total += reservation.bandwidth;
  }
  return total;
}

std::uint64_t PortReservations::reservedIn(const SrClass& srClass) const {
  std::uint64_t total = 0;
  for (const Reservation& reservation : reservations_) {
    if (reservation.srClass == srClass) total += reservation.bandwidth;
  }
  return total;
}

bool PortReservations::fits(const SrClass& srClass, std::uint64_t bandwidth) const {
  for (std::size_t i = srClassIndex(srClass); i < std::size(kSrClasses); ++i) {
    if (reservedUpTo(kSrClasses[i]) + bandwidth > limit(kSrClasses[i])) return false;
  }
  return true;
}

const PortReservations::Reservation* PortReservations::find(std::uint64_t streamId) const {
  auto it = std::find_if(reservations_.begin(), reservations_.end(),
                         [&](const Reservation& reservation) { return reservation.streamId == streamId; });
  return it == reservations_.end() ? nullptr : &*it;
}

std::optional<PortReservations::Reservation> PortReservations::release(std::uint64_t streamId) {
  auto it = std::find_if(reservations_.begin(), reservations_.end(),
                         [&](const Reservation& reservation) { return reservation.streamId == streamId; });
  if (it == reservations_.end()) return std::nullopt;
  const Reservation released = *it;
  reservations_.erase(it);
  return released;
}

std::uint32_t PortReservations::largestFrame(const SrClass& srClass) const {
  std::uint32_t largest = 0;
  for (const Reservation& reservation : reservations_) {
    if (reservation.srClass == srClass) largest = std::max(largest, reservation.frameOctets);
  }
  return largest;
}

std::optional<CbsParameters> PortReservations::shaper(const SrClass& srClass) const {
  const std::uint64_t idleSlope = reservedIn(srClass);
  if (idleSlope == 0) return std::nullopt;
  std::optional<HigherClassLoad> higher;
  if (srClassIndex(srClass) > 0) {
    const SrClass& above = kSrClasses[srClassIndex(srClass) - 1];
    higher = HigherClassLoad{reservedIn(above), largestFrame(above)};
  }
  return cbsParameters(speed_, idleSlope, largestFrame(srClass), higher);
}

}  // namespace MrpAgent
