#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "CreditBasedShaper.h"
#include "SrClass.h"

namespace MrpAgent {

// The share of a port's speed each SR class may reserve, in percent, in
// priority order (A, B). The limits add up: class B may use what class A
// leaves of A's share, and its own.
using DeltaBandwidth = std::array<unsigned, std::size(kSrClasses)>;
inline constexpr DeltaBandwidth kDefaultDeltaBandwidth = {75, 0};

// The streams reserved on one port, in the order they were admitted, and
// what is left for more.
class PortReservations {
 public:
  struct Reservation {
    std::uint64_t streamId = 0;
    SrClass srClass;
    std::uint64_t bandwidth = 0;      // bit/s
    std::uint32_t frameOctets = 0;    // its largest frame on the wire
    friend bool operator==(const Reservation&, const Reservation&) = default;
  };

  PortReservations(std::uint64_t speed, DeltaBandwidth deltaBandwidth)
      : speed_(speed), deltaBandwidth_(deltaBandwidth) {}

  std::uint64_t speed() const { return speed_; }
  // The most a class and the classes before it may reserve together.
  std::uint64_t limit(const SrClass& srClass) const;
  // What a class and the classes before it have reserved together.
  std::uint64_t reservedUpTo(const SrClass& srClass) const;
  // What the class alone has reserved.
  std::uint64_t reservedIn(const SrClass& srClass) const;
  // Whether a stream of the class fits beside those reserved. It must fit
  // its own class's limit and those of the classes after it, which count
  // it too: admission never overbooks a class admitted before.
  bool fits(const SrClass& srClass, std::uint64_t bandwidth) const;

  bool reserved(std::uint64_t streamId) const { return find(streamId) != nullptr; }
  const Reservation* find(std::uint64_t streamId) const;
  void reserve(const Reservation& reservation) { reservations_.push_back(reservation); }
  // Releases a stream's reservation; nullopt when it had none.
  std::optional<Reservation> release(std::uint64_t streamId);
  const std::vector<Reservation>& reservations() const { return reservations_; }

  // The shaper of a class with reservations; nullopt for one without.
  std::optional<CbsParameters> shaper(const SrClass& srClass) const;

 private:
  std::uint32_t largestFrame(const SrClass& srClass) const;

  std::uint64_t speed_;
  DeltaBandwidth deltaBandwidth_;
  std::vector<Reservation> reservations_;
};

}  // namespace MrpAgent
