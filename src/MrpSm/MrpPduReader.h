#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "MrpMsrp/MsrpTalkerAdvertiseAttribute.h"
#include "quarn/Ptr.h"
#include "velo/EthAddr.h"
#include "velo/Pkt.h"

namespace Mrp {

// Reads wire fields from the head of a received packet in place, removing
// each field it reads. Every read checks the bytes left first: a read that
// would run past the end returns false and consumes nothing.
class MrpPduReader {
 public:
  explicit MrpPduReader(Velo::Pkt& pkt) : pkt_(pkt) {}

  std::size_t bytesLeft() const { return pkt_.frontBytes(); }
  bool has(std::size_t n) const { return n <= bytesLeft(); }

  bool readU8(std::uint8_t& out);
  // Big-endian.
  bool readU16(std::uint16_t& out);
  bool readU32(std::uint32_t& out);
  bool readU64(std::uint64_t& out);
  bool readEthAddr(Velo::EthAddr& out);
  bool skip(std::size_t n) { return pkt_.delSharedHeadData(n); }

  // Look-ahead without consuming: the octet `offset` octets past the head,
  // and the big-endian word at the head.
  bool peekU8(std::size_t offset, std::uint8_t& out) const;
  bool peekU16(std::uint16_t& out) const;
  // The `n` octets at the head, in place.
  bool peekBytes(std::size_t n, std::span<const std::uint8_t>& out) const;

 private:
  // The big-endian number in the `n` octets at the head.
  std::uint64_t frontNumber(std::size_t n) const;

  Velo::Pkt& pkt_;
};

// The 25-octet Talker Advertise FirstValue at the packet's head, consumed
// field by field; nullopt when the frame ends inside it.
std::optional<MsrpTalkerAdvertiseAttribute> parseTalkerAdvertise(const Quarn::Ptr<Velo::Pkt>& pkt);

}  // namespace Mrp
