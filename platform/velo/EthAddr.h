#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>

namespace Velo {

// A 48-bit MAC address, six octets in wire order.
class EthAddr {
 public:
  static constexpr std::size_t kSize = 6;

  constexpr EthAddr() = default;
  constexpr explicit EthAddr(const std::array<std::uint8_t, kSize>& octets) : octets_(octets) {}
  constexpr EthAddr(std::uint8_t a, std::uint8_t b, std::uint8_t c, std::uint8_t d, std::uint8_t e, std::uint8_t f)
      : octets_{a, b, c, d, e, f} {}

  // Parses "01:80:c2:00:00:21" (either case); nullopt for anything else.
  static std::optional<EthAddr> fromString(std::string_view text);

  const std::array<std::uint8_t, kSize>& octets() const { return octets_; }
  std::uint8_t operator[](std::size_t i) const { return octets_[i]; }
  const std::uint8_t* data() const { return octets_.data(); }
  bool isZero() const;

  // Lower-case colon-separated form, "01:80:c2:00:00:21".
  std::string toString() const;

  friend bool operator==(const EthAddr&, const EthAddr&) = default;
  friend auto operator<=>(const EthAddr&, const EthAddr&) = default;
  friend std::ostream& operator<<(std::ostream& os, const EthAddr& a) { return os << a.toString(); }

 private:
  std::array<std::uint8_t, kSize> octets_{};
};

static_assert(sizeof(EthAddr) == EthAddr::kSize);

}  // namespace Velo

template <>
struct std::hash<Velo::EthAddr> {
  std::size_t operator()(const Velo::EthAddr& a) const noexcept {
    std::uint64_t v = 0;
    for (std::uint8_t o : a.octets()) v = (v << 8) | o;
    return std::hash<std::uint64_t>{}(v);
  }
};
