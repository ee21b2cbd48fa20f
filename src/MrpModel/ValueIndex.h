#pragma once

#include <cstdint>
#include <ostream>

namespace Mrp {

// Index of one octet of an attribute value: 0 (min) to 64 (max).
class ValueIndex {
 public:
  static constexpr std::uint8_t min = 0;
  static constexpr std::uint8_t max = 64;

  constexpr ValueIndex() = default;
  // Throws std::range_error outside min..max.
  explicit ValueIndex(unsigned value);

  constexpr std::uint8_t value() const { return value_; }
  // Throws std::range_error past max.
  ValueIndex& operator++();

  friend constexpr bool operator==(ValueIndex, ValueIndex) = default;
  friend constexpr auto operator<=>(ValueIndex, ValueIndex) = default;
  friend std::ostream& operator<<(std::ostream& os, ValueIndex i) { return os << static_cast<unsigned>(i.value_); }

 private:
  std::uint8_t value_ = 0;
};

}  // namespace Mrp
