#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "velo/EthAddr.h"

namespace Velo {

// The 14-byte Ethernet header: destination, source, EtherType. Converted to
// and from wire bytes field by field, so it never aliases packet memory.
class EthHdr {
 public:
  static constexpr std::size_t kSize = 14;
  static constexpr std::uint16_t kVlanEtherType = 0x8100;

  constexpr EthHdr() = default;
  constexpr EthHdr(const EthAddr& dst, const EthAddr& src, std::uint16_t etherType)
      : dst_(dst), src_(src), etherType_(etherType) {}

  // Reads the header at the front of `n` bytes; nullopt when n < kSize.
  static std::optional<EthHdr> fromBytes(const std::uint8_t* p, std::size_t n);
  // Writes exactly kSize bytes.
  void toBytes(std::uint8_t* out) const;

  const EthAddr& dst() const { return dst_; }
  const EthAddr& src() const { return src_; }
  // In host order.
  std::uint16_t etherType() const { return etherType_; }

  friend bool operator==(const EthHdr&, const EthHdr&) = default;

 private:
  EthAddr dst_;
  EthAddr src_;
  std::uint16_t etherType_ = 0;
};

}  // namespace Velo
