#pragma once

#include <cstdint>
#include <optional>
#include <ostream>
#include <string_view>

namespace Mrp {

// One octet: priority in bits 7..5, rank in bit 4, bits 3..0 zero. Ordered by
// the whole octet: priority first, then rank.
class PriorityAndRank {
 public:
  constexpr PriorityAndRank() = default;
  // Keeps the low 3 bits of `priority` and the lowest bit of `rank`.
  constexpr PriorityAndRank(std::uint8_t priority, std::uint8_t rank)
      : octet_(static_cast<std::uint8_t>(((priority & 0x7) << 5) | ((rank & 0x1) << 4))) {}

  // Reads the text form written by operator<<; nullopt if malformed or a
  // field does not fit its bits.
  static std::optional<PriorityAndRank> fromString(std::string_view text);

  constexpr std::uint8_t priority() const { return octet_ >> 5; }
  constexpr std::uint8_t rank() const { return (octet_ >> 4) & 0x1; }
  constexpr std::uint8_t octet() const { return octet_; }

  friend constexpr bool operator==(const PriorityAndRank&, const PriorityAndRank&) = default;
  friend constexpr auto operator<=>(const PriorityAndRank&, const PriorityAndRank&) = default;

 private:
  std::uint8_t octet_ = 0;
};

static_assert(sizeof(PriorityAndRank) == 1 && alignof(PriorityAndRank) == 1);

// Value('Mrp::PriorityAndRank', ** {'priority': 3, 'rank': 1})
std::ostream& operator<<(std::ostream& os, PriorityAndRank value);

}  // namespace Mrp
