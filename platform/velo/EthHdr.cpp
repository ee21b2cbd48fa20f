#include "velo/EthHdr.h"

#include <algorithm>
#include <array>

namespace Velo {

namespace {

constexpr std::size_t kSrcOffset = EthAddr::kSize;
constexpr std::size_t kEtherTypeOffset = 2 * EthAddr::kSize;

EthAddr addrAt(const std::uint8_t* p) {
  std::array<std::uint8_t, EthAddr::kSize> octets{};
  std::copy_n(p, EthAddr::kSize, octets.begin());
  return EthAddr(octets);
}

}  // namespace

std::optional<EthHdr> EthHdr::fromBytes(const std::uint8_t* p, std::size_t n) {
  if (p == nullptr || n < kSize) return std::nullopt;
  const auto etherType = static_cast<std::uint16_t>((p[kEtherTypeOffset] << 8) | p[kEtherTypeOffset + 1]);
  return EthHdr(addrAt(p), addrAt(p + kSrcOffset), etherType);
}

void EthHdr::toBytes(std::uint8_t* out) const {
  std::copy_n(dst_.data(), EthAddr::kSize, out);
  std::copy_n(src_.data(), EthAddr::kSize, out + kSrcOffset);
  out[kEtherTypeOffset] = static_cast<std::uint8_t>(etherType_ >> 8);
  out[kEtherTypeOffset + 1] = static_cast<std::uint8_t>(etherType_ & 0xff);
}

}  // namespace Velo
