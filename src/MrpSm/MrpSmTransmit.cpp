#include <vector>

#include "MrpModel/MrpWireFormat.h"
#include "MrpSm/MrpSm.h"
#include "MrpSm/MrpSmTrace.h"
#include "MrpSm/MrpVectorEncoder.h"
#include "quarn/Assert.h"
#include "quarn/Collection.h"
#include "velo/EthHdr.h"

namespace Mrp {

namespace {

constexpr std::size_t kAttributeListLengthOffset = 2;
// Destination and source address, EtherType and ProtocolVersion.
constexpr std::size_t kMrpduHeaderOctets = Velo::EthHdr::kSize + 1;

}  // namespace

//   Ethernet header(14) ProtocolVersion(1) messages... [list EndMark(2)] PDU EndMark(2)
void MrpSm::mrpTransmitTxPacket(const Velo::IntfId& intfId, bool secondPktContext) {
  MrpLib& lib = *mrpLib_;
  const Quarn::Ptr<MrpTxPacketContext> context =
      secondPktContext ? lib.mrpTxSecondPacketContext(intfId) : lib.mrpTxPacketContext(intfId);
  if (!context) return;
  const auto dropContext = [&] {
    secondPktContext ? lib.mrpTxSecondPacketContextDel(intfId) : lib.mrpTxPacketContextDel(intfId);
  };
  // While MRPDUs are flooded the engine sends none of its own.
  if (mrpConfig_->mrpFlooding()) {
    dropContext();
    return;
  }
  const Quarn::Ptr<Velo::Pam> pam = pamCollection()->intfPam(intfId);
  if (!pam) {
    MRP_TRACE(4, " Tx is being Attempted before the PAM is enabled ");
    return;
  }
  const MrpTxPacketContext& ctx = *context;
  const Quarn::Ptr<Velo::Pkt>& pkt = ctx.pkt();
  std::size_t n = mrpGetNumOfPackedBytes(ctx, static_cast<std::uint8_t>(lib.application()));
  // Room for the EndMarks still to be written.
  const std::size_t numOfPackedBytes = n + (ctx.curMessage() ? kMrpEndMarkOctets : 0) + kMrpEndMarkOctets;
  QASSERT(numOfPackedBytes <= pkt->frontBytes());
  if (const auto message = ctx.curMessage()) {
    ctx.u16AtIs(n, 0);
    n += kMrpEndMarkOctets;
    // MSRP's AttributeListLength counts the list's EndMark.
    if (lib.application() == MrpApplication::msrp) {
      const std::size_t field = *message + kAttributeListLengthOffset;
      ctx.u16AtIs(field, static_cast<std::uint16_t>(ctx.u16At(field) + kMrpEndMarkOctets));
    }
  }
  ctx.u16AtIs(n, 0);
  std::uint8_t* header = pkt->prepend(kMrpduHeaderOctets);
  QASSERT(header);
  Velo::EthHdr(lib.applicationMacAddr(), pam->ethAddr(), lib.applicationEtype()).toBytes(header);
  header[Velo::EthHdr::kSize] = protocolVersion_;
  pkt->trim(n + kMrpduHeaderOctets + kMrpEndMarkOctets);
  lib.mrpCurrentTxIntfIs(intfId);
  mrpCounters_->numOfPktsTransmittedInc();
  MRP_TRACE(8, " A pkt is sent on : " << intfId);
  pam->txPkt(*pkt);
  dropContext();
}

void MrpSm::mrpTransmitTxAttributes(const Velo::IntfId& intfId) {
  mrpTransmitTxPacket(intfId, false);
  mrpTransmitTxPacket(intfId, true);
}

// Ports with only a second packet open are left to their own flushes.
void MrpSm::mrpTransmitTxAttributes() {
  std::vector<Velo::IntfId> ports;
  for (const auto& [intfId, context] : mrpLib_->mrpTxPacketContexts()) ports.push_back(intfId);
  for (const Velo::IntfId& intfId : ports) mrpTransmitTxAttributes(intfId);
}

}  // namespace Mrp
