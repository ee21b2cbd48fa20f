#include "MrpMsrp/MsrpValueSequence.h"

#include <array>

#include "MrpSm/MrpSmTrace.h"

namespace Mrp {

namespace {

// The address as a big-endian 48-bit number.
std::uint64_t u48Of(const Velo::EthAddr& addr) {
  std::uint64_t v = 0;
  for (std::uint8_t octet : addr.octets()) v = (v << 8) | octet;
  return v;
}

// The address of the low 48 bits of `v`; higher bits are dropped.
Velo::EthAddr ethAddrOf(std::uint64_t v) {
  std::array<std::uint8_t, Velo::EthAddr::kSize> octets{};
  for (std::size_t i = octets.size(); i-- > 0;) {
    octets[i] = static_cast<std::uint8_t>(v & 0xff);
    v >>= 8;
  }
  return Velo::EthAddr(octets);
}

}  // namespace

MsrpTalkerAdvertiseAttribute mrpIncrementTalkerAttribute(MsrpTalkerAdvertiseAttribute value) {
  value.streamIdIs(value.streamId() + 1);
  DataFrameParameters frame = value.frame();
  const Velo::EthAddr dmac = ethAddrOf(u48Of(frame.dmac()) + 1);
  MRP_TRACE(8, "original dmac = " << frame.dmac() << ", converted dmac = " << dmac);
  frame.dmacIs(dmac);
  value.frameIs(frame);
  return value;
}

bool mrpTalkerValueInSequence(std::uint64_t firstStreamId, std::uint64_t streamId, Velo::EthAddr firstDmac,
                              Velo::EthAddr dmac, std::uint16_t distance) {
  return firstStreamId + distance == streamId && u48Of(firstDmac) + distance == u48Of(dmac);
}

bool mrpDomainValueInSequence(std::uint8_t firstClassId, std::uint8_t classId, std::uint8_t firstPriority,
                              std::uint8_t priority, std::uint16_t distance) {
  const unsigned d = distance;
  return firstClassId + d == classId && firstPriority + d == priority;
}

}  // namespace Mrp
