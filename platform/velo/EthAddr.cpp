#include "velo/EthAddr.h"

namespace Velo {

namespace {

int hexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

}  // namespace

std::optional<EthAddr> EthAddr::fromString(std::string_view text) {
  // Exactly "hh:hh:hh:hh:hh:hh".
  if (text.size() != 17) return std::nullopt;
  std::array<std::uint8_t, kSize> octets{};
  for (std::size_t i = 0; i < kSize; ++i) {
    const std::size_t at = i * 3;
    if (i > 0 && text[at - 1] != ':') return std::nullopt;
    const int hi = hexDigit(text[at]);
    const int lo = hexDigit(text[at + 1]);
    if (hi < 0 || lo < 0) return std::nullopt;
    octets[i] = static_cast<std::uint8_t>(hi * 16 + lo);
  }
  return EthAddr(octets);
}

bool EthAddr::isZero() const {
  for (std::uint8_t o : octets_) {
    if (o != 0) return false;
  }
  return true;
}

std::string EthAddr::toString() const {
  static constexpr char kHex[] = "0123456789abcdef";
  std::string s;
  s.reserve(17);
  for (std::size_t i = 0; i < kSize; ++i) {
    if (i > 0) s += ':';
    s += kHex[octets_[i] >> 4];
    s += kHex[octets_[i] & 0xf];
  }
  return s;
}

}  // namespace Velo
