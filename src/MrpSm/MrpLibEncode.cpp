#include <algorithm>
#include <optional>
#include <span>

#include "MrpModel/MrpPackedEvents.h"
#include "MrpModel/MrpValueBytes.h"
#include "MrpModel/MrpWireFormat.h"
#include "MrpSm/MrpLib.h"
#include "MrpSm/MrpSm.h"
#include "MrpSm/MrpVectorEncoder.h"

namespace Mrp {

namespace {

// Takes the engine's pending request to send a LeaveAll, if there is one.
bool takeSendTxLvAll(const MrpLib& lib) {
  MrpParseContext* parseContext = lib.mrpSm() ? lib.mrpSm()->parseContext().ptr() : nullptr;
  if (!parseContext || !parseContext->sendTxLvAll()) return false;
  parseContext->sendTxLvAllIs(false);
  return true;
}

//   VectorHeader(2) FirstValue ThreePackedEvents(1) [FourPackedEvents(1), Listener only]
std::uint16_t encodeNewVector(const MrpLib& lib, MrpTxPacketContext& ctx, std::span<const std::uint8_t> firstValue,
                              std::uint8_t event, std::optional<MsrpListenerEvent> declaration) {
  const std::size_t vector = ctx.curVectorOrThrow();
  if (event == kMrpLeaveAllOnlyEvent) {
    const auto out = ctx.octets(vector, kMrpVectorHeaderOctets + firstValue.size());
    std::fill(out.begin(), out.end(), std::uint8_t{0});
    ctx.u16AtIs(vector, kMrpLeaveAllBit);
    return static_cast<std::uint16_t>(out.size());
  }
  mrpCheckThreePackedEvent(event);
  if (declaration) mrpCheckFourPackedEvent(*declaration);
  const auto out = ctx.octets(vector, kMrpVectorHeaderOctets + firstValue.size() + 1 + (declaration ? 1 : 0));
  ctx.u16AtIs(vector, takeSendTxLvAll(lib) ? kMrpLeaveAllBit | 1 : 1);
  const auto packed = std::copy(firstValue.begin(), firstValue.end(), out.begin() + kMrpVectorHeaderOctets);
  *packed = 0;
  mrpEncodeThreePackedEvent(&*packed, event, 1);
  if (declaration) {
    packed[1] = 0;
    mrpEncodeFourPackedEvent(&packed[1], *declaration, 1);
  }
  return static_cast<std::uint16_t>(out.size());
}

}  // namespace

std::uint16_t MrpLib::mrpEncodeTalkerVector(MrpTxPacketContext& ctx, const MsrpTalkerAdvertiseAttribute& value,
                                            std::uint8_t event) {
  return encodeNewVector(*this, ctx, valueBytes(value), event, std::nullopt);
}

std::uint16_t MrpLib::mrpEncodeTalkerFailedVector(MrpTxPacketContext& ctx, const MsrpTalkerFailedAttribute& value,
                                                  std::uint8_t event) {
  return encodeNewVector(*this, ctx, valueBytes(value), event, std::nullopt);
}

std::uint16_t MrpLib::mrpEncodeListenerVector(MrpTxPacketContext& ctx, const MsrpListenerAttribute& value,
                                              std::uint8_t event) {
  // The FirstValue is the StreamID; the declaration travels four-packed.
  const std::uint16_t streamIdOctets = mrpSizeOfMsrpAttribute(static_cast<std::uint8_t>(MsrpAttrType::listenerVector));
  return encodeNewVector(*this, ctx, valueBytes(value).first(streamIdOctets), event, value.listenerEvent());
}

std::uint16_t MrpLib::mrpEncodeDomainVector(MrpTxPacketContext& ctx, const MsrpDomainAttribute& value,
                                            std::uint8_t event) {
  return encodeNewVector(*this, ctx, valueBytes(value), event, std::nullopt);
}

std::uint16_t MrpLib::mrpEncodeVlanVector(MrpTxPacketContext& ctx, const MvrpVlanAttribute& value, std::uint8_t event) {
  return encodeNewVector(*this, ctx, valueBytes(value), event, std::nullopt);
}

}  // namespace Mrp
