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

MsrpTalkerAdvertiseAttribute mrpAdvanceTalkerAttribute(MsrpTalkerAdvertiseAttribute value, std::uint64_t distance) {
  value.streamIdIs(value.streamId() + distance);
  DataFrameParameters frame = value.frame();
  frame.dmacIs(ethAddrOf(u48Of(frame.dmac()) + distance));
  value.frameIs(frame);
  return value;
}

MsrpTalkerAdvertiseAttribute mrpIncrementTalkerAttribute(MsrpTalkerAdvertiseAttribute value) {
  const MsrpTalkerAdvertiseAttribute next = mrpAdvanceTalkerAttribute(value, 1);
  MRP_TRACE(8, "original dmac = " << value.frame().dmac() << ", converted dmac = " << next.frame().dmac());
  return next;
}

MsrpDomainAttribute mrpAdvanceDomainAttribute(MsrpDomainAttribute value, std::uint64_t distance) {
  value.srClassIdIs(static_cast<std::uint8_t>(value.srClassId() + distance));
  value.srClassPriorityIs(static_cast<std::uint8_t>(value.srClassPriority() + distance));
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
