#pragma once

#include <cstdint>
#include <ostream>

namespace Mrp {

// A VLAN identifier taken from the switch configuration: always 1..4094.
// (The MVRP value records carry no such check: a vector may run past 4094.)
class VlanId {
 public:
  static constexpr std::uint16_t min = 1;
  static constexpr std::uint16_t max = 4094;

  // Throws std::range_error outside min..max.
  explicit VlanId(unsigned value);

  constexpr std::uint16_t value() const { return value_; }

  friend bool operator==(VlanId, VlanId) = default;
  friend auto operator<=>(VlanId, VlanId) = default;
  friend std::ostream& operator<<(std::ostream& os, VlanId v) { return os << v.value_; }

 private:
  std::uint16_t value_;
};

}  // namespace Mrp
