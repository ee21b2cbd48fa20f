#pragma once

#include <array>
#include <cstdint>
#include <type_traits>

namespace Quarn {

// An unsigned integer kept least significant octet first, whatever the host.
// The little-endian sibling of Nbo: alignment 1 and no padding, so records
// built from it have the same octets on every host.
template <class T>
class Lbo {
  static_assert(std::is_unsigned_v<T>);

 public:
  constexpr Lbo() = default;
  constexpr explicit Lbo(T host) { valueIs(host); }

  constexpr T value() const {
    T v = 0;
    for (std::size_t i = sizeof(T); i-- > 0;) v = static_cast<T>((v << 8) | bytes_[i]);
    return v;
  }
  constexpr void valueIs(T host) {
    for (std::uint8_t& b : bytes_) {
      b = static_cast<std::uint8_t>(host & 0xff);
      host = static_cast<T>(host >> 8);
    }
  }
  constexpr const std::array<std::uint8_t, sizeof(T)>& bytes() const { return bytes_; }

  friend constexpr bool operator==(const Lbo&, const Lbo&) = default;

 private:
  std::array<std::uint8_t, sizeof(T)> bytes_{};
};

using LboU16 = Lbo<std::uint16_t>;
using LboU32 = Lbo<std::uint32_t>;
using LboU64 = Lbo<std::uint64_t>;

static_assert(sizeof(LboU32) == 4 && alignof(LboU32) == 1);

}  // namespace Quarn
