#pragma once

#include <array>
#include <cstdint>
#include <type_traits>

namespace Quarn {

// An unsigned integer kept in network byte order, as it stands on the wire.
// Alignment 1 and no padding, so records built from it are exact wire images.
template <class T>
class Nbo {
  static_assert(std::is_unsigned_v<T>);

 public:
  constexpr Nbo() = default;
  constexpr explicit Nbo(T host) { valueIs(host); }

  constexpr T value() const {
    T v = 0;
    for (std::uint8_t b : bytes_) v = static_cast<T>((v << 8) | b);
    return v;
  }
  constexpr void valueIs(T host) {
    for (std::size_t i = sizeof(T); i-- > 0;) {
      bytes_[i] = static_cast<std::uint8_t>(host & 0xff);
      host = static_cast<T>(host >> 8);
    }
  }
  constexpr const std::array<std::uint8_t, sizeof(T)>& bytes() const { return bytes_; }

  friend constexpr bool operator==(const Nbo&, const Nbo&) = default;

 private:
  std::array<std::uint8_t, sizeof(T)> bytes_{};
};

using NboU16 = Nbo<std::uint16_t>;
using NboU32 = Nbo<std::uint32_t>;
using NboU64 = Nbo<std::uint64_t>;

static_assert(sizeof(NboU16) == 2 && alignof(NboU16) == 1);
static_assert(sizeof(NboU64) == 8 && alignof(NboU64) == 1);

}  // namespace Quarn
