#include "MrpSm/MrpIntfPamSm.h"

#include <algorithm>
#include <vector>

#include "MrpSm/MrpPamSm.h"
#include "MrpSm/MrpSm.h"
#include "MrpSm/MrpSmTrace.h"
#include "quarn/Assert.h"
#include "velo/EthHdr.h"

namespace Mrp {

namespace {

// Offsets in a received frame.
constexpr std::size_t kEtherTypeOffset = 12;
constexpr std::size_t kVlanTciOffset = 14;
constexpr std::size_t kTaggedEtherTypeOffset = 16;
constexpr std::size_t kTaggedHeaderSize = 18;
constexpr std::size_t kVlanTagSize = 4;
constexpr std::uint16_t kVlanIdMask = 0x0fff;

std::uint16_t u16At(const Velo::Pkt& pkt, std::size_t offset) {
  return static_cast<std::uint16_t>((pkt.data()[offset] << 8) | pkt.data()[offset + 1]);
}

}  // namespace

// The header-length assertion is written against the class; it must be the wire size.
static_assert(sizeof(Velo::EthHdr) == Velo::EthHdr::kSize);

MrpIntfPamSm::MrpIntfPamSm(Velo::IntfId intfId, Quarn::Ptr<Velo::Pam> pam, bool standbyMode, MrpPamSm* mrpPamSm)
    : intfId_(std::move(intfId)), pam_(std::move(pam)), standbyMode_(standbyMode), mrpPamSm_(mrpPamSm),
      pamReactor_(this) {
  pamReactor_.notifierIs(pam_.ptr());
}

MrpSm& MrpIntfPamSm::mrpSm() const { return *mrpPamSm_->mrpSm(); }

void MrpIntfPamSm::handleInitialized() {
  MRP_TRACE(8, "void Mrp::MrpIntfPamSm::handleInitialized()");
  initializedIs();
  handleStandbyMode();
}

void MrpIntfPamSm::handleStandbyMode() {
  MRP_TRACE(8, "void Mrp::MrpIntfPamSm::handleStandbyMode()");
  requireInitialized();
  if (!standbyMode_) mrpSm().leaveAllSm()->mrpEnableLeaveAllPending(intfId_);
}

void MrpIntfPamSm::doClose() {
  MRP_TRACE(8, "void Mrp::MrpIntfPamSm::doClose()");
  if (!standbyMode_) mrpSm().leaveAllSm()->mrpDisableLeaveAllPending(intfId_);
}

void MrpIntfPamSm::handleMrpdu() {
  MRP_TRACE(8, "MrpIntfPamSm::handleMrpdu( " << intfId_ << " )");
  requireInitialized();
  Quarn::Ptr<Velo::Pkt> pkt = pam_->rxPkt();
  if (!pkt) return;
  MRP_TRACE(7, "Received frame on interface " << intfId_ << " (length=" << pkt->bytes() << ")");
  QASSERT(pkt->bytes() >= sizeof( Velo::EthHdr ));
  // A standby engine keeps its sockets but has no counters or parser.
  if (standbyMode_) return;

  MrpSm& sm = mrpSm();
  if (!frameAccepted(*pkt)) {
    sm.mrpCounters()->numOfPktsProcessedInc();
    return;
  }
  // The copy is the frame as it stands now: a tagged one has lost its first 4 bytes.
  if (sm.mrpConfig()->mrpFlooding()) mrpPamSm_->floodMsrpdu(intfId_, pkt->copy());
  pkt->delSharedHeadData(Velo::EthHdr::kSize);
  sm.parseContext()->intfIdIs(intfId_);
  sm.parseMrpdu(pkt);
  sm.processParsedAttributes(intfId_);
  sm.mrpCounters()->numOfPktsProcessedInc();
  sm.mrpTransmitTxAttributes();
  sm.receivedFrame().futureProtocolVersionIs(false);
}

// With a VLAN tag, the frame's first 4 bytes go now and its first 14 after
// the checks, so the whole 18-byte tagged header is dropped.
bool MrpIntfPamSm::frameAccepted(Velo::Pkt& pkt) const {
  MrpCounters& counters = *mrpSm().mrpCounters();
  const MrpLib& lib = *mrpSm().mrpLib();
  const auto& dmac = lib.applicationMacAddr().octets();
  if (!std::equal(dmac.begin(), dmac.end(), pkt.data())) {
    MRP_TRACE(4, "Received frame with incorrect DMAC -- ignoring");
    counters.numOfIncorrectDmacInc();
    return false;
  }
  std::uint16_t etherType = u16At(pkt, kEtherTypeOffset);
  // A frame that ends inside its tag has no EtherType behind it to accept.
  bool etherTypeKnown = true;
  if (etherType == Velo::EthHdr::kVlanEtherType) {
    etherTypeKnown = pkt.bytes() >= kTaggedHeaderSize;
    if (etherTypeKnown) {
      MRP_TRACE(7, "Received 802.1Q-tagged frame with VLAN ID " << (u16At(pkt, kVlanTciOffset) & kVlanIdMask));
      etherType = u16At(pkt, kTaggedEtherTypeOffset);
      pkt.delSharedHeadData(kVlanTagSize);
    }
  }
  if (!etherTypeKnown || etherType != lib.applicationEtype()) {
    MRP_TRACE(4, "Received frame with incorrect EtherType -- ignoring");
    counters.numOfIncorrectEtypeInc();
    return false;
  }
  return true;
}

void MrpIntfPamSm::transmitAllLeaveAll() {
  MRP_TRACE(8, "MrpIntfPamSm::transmitAllLeaveAll( " << intfId_ << " )");
  if (!initialized() || standbyMode_) return;
  MrpSm& sm = mrpSm();
  const Quarn::Seconds period = getLeaveAllTime(sm, intfId_);
  for (std::uint8_t type = 1; type <= sm.maxAttrTypes(); ++type) {
    mrpAllLeaveAllSm(type);
    sm.leaveAllSm()->mrpRestartLeaveAllTimer(intfId_, type, period);
  }
  sm.mrpTransmitTxAttributes(intfId_);
}

void MrpIntfPamSm::mrpAllLeaveAllSm(std::uint8_t attributeType) {
  MRP_TRACE(8, "MrpIntfPamSm::mrpAllLeaveAllSm( " << unsigned{attributeType} << " )");
  MrpSm& sm = mrpSm();
  MrpLib& lib = *sm.mrpLib();
  Quarn::Ptr<MrpAttrIter> iter = sm.attributeStore().mrpAttrIter({intfId_, attributeType});
  if (!iter) {
    lib.mrpSendLeaveAll(attributeType, intfId_);
    return;
  }
  MrpParseContext& context = *sm.parseContext();
  context.sendTxLvAllIs(true);
  // The applicant may change the index while it runs.
  const std::vector<std::uint64_t> keys(iter->attributeKeys().begin(), iter->attributeKeys().end());
  for (std::uint64_t key : keys) {
    const MrpAttribute attribute{intfId_, attributeType, key};
    if (sm.attributeStore().deletePendingAttr(attribute)) continue;
    // Found once; without an entry the applicant makes one.
    const Quarn::Ptr<MrpAttrDatabase> entry = sm.mrpGetAttrFromDatabase(intfId_, attributeType, key, true);
    sm.mrpFillContextFromDatabase(attribute, entry.ptr());
    sm.applicantSm()->applicantEventIs(MrpApplicantEvent::txLvAll);
    entry ? sm.applicantSm()->handleApplicantEvent(*entry) : sm.applicantSm()->handleApplicantEvent();
  }
  lib.mrpSendLeaveAll(attributeType, intfId_);
  context.sendTxLvAllIs(false);
}

}  // namespace Mrp
