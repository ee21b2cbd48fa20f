#include "MrpSm/MrpPduReader.h"

#include <array>

#include "MrpSm/MrpSmTrace.h"

namespace Mrp {

std::uint64_t MrpPduReader::frontNumber(std::size_t n) const {
  std::uint64_t value = 0;
  const std::uint8_t* p = pkt_.data();
  for (std::size_t i = 0; i < n; ++i) value = (value << 8) | p[i];
  return value;
}

bool MrpPduReader::readU8(std::uint8_t& out) {
  if (!has(1)) return false;
  out = pkt_.data()[0];
  return skip(1);
}

bool MrpPduReader::readU16(std::uint16_t& out) {
  if (!has(2)) return false;
  out = static_cast<std::uint16_t>(frontNumber(2));
  return skip(2);
}

bool MrpPduReader::readU32(std::uint32_t& out) {
  if (!has(4)) return false;
  out = static_cast<std::uint32_t>(frontNumber(4));
  return skip(4);
}

bool MrpPduReader::readU64(std::uint64_t& out) {
  if (!has(8)) return false;
  out = frontNumber(8);
  return skip(8);
}

bool MrpPduReader::readEthAddr(Velo::EthAddr& out) {
  if (!has(Velo::EthAddr::kSize)) return false;
  std::array<std::uint8_t, Velo::EthAddr::kSize> octets;
  for (std::size_t i = 0; i < octets.size(); ++i) octets[i] = pkt_.data()[i];
  out = Velo::EthAddr(octets);
  return skip(Velo::EthAddr::kSize);
}

bool MrpPduReader::peekU8(std::size_t offset, std::uint8_t& out) const {
  if (offset >= bytesLeft()) return false;
  out = pkt_.data()[offset];
  return true;
}

bool MrpPduReader::peekU16(std::uint16_t& out) const {
  if (!has(2)) return false;
  out = static_cast<std::uint16_t>(frontNumber(2));
  return true;
}

bool MrpPduReader::peekBytes(std::size_t n, std::span<const std::uint8_t>& out) const {
  if (!has(n)) return false;
  out = {pkt_.data(), n};
  return true;
}

std::optional<MsrpTalkerAdvertiseAttribute> parseTalkerAdvertise(const Quarn::Ptr<Velo::Pkt>& pkt) {
  MrpPduReader in(*pkt);
  std::uint64_t streamId = 0;
  Velo::EthAddr dmac;
  std::uint16_t vlanId = 0;
  std::uint16_t maxFrameSize = 0;
  std::uint16_t maxIntervalFrames = 0;
  std::uint8_t priorityOctet = 0;
  std::uint32_t accumulatedLatency = 0;
  if (!in.readU64(streamId) || !in.readEthAddr(dmac) || !in.readU16(vlanId) || !in.readU16(maxFrameSize) ||
      !in.readU16(maxIntervalFrames) || !in.readU8(priorityOctet) || !in.readU32(accumulatedLatency)) {
    return std::nullopt;
  }
  MsrpTalkerAdvertiseAttribute talker;
  talker.streamIdIs(streamId);
  talker.frameIs(DataFrameParameters(dmac, vlanId));
  talker.tSpecIs(Tspec(maxFrameSize, maxIntervalFrames));
  // The low nibble is reserved and ignored.
  talker.priorityAndRankIs(PriorityAndRank(priorityOctet >> 5, (priorityOctet >> 4) & 0x1));
  talker.accumulatedLatencyIs(accumulatedLatency);
  MRP_TRACE(8, " TalkerAdvertiseAttribute = " << talker);
  return talker;
}

}  // namespace Mrp
