#include "MrpSm/MrpTransmitter.h"

#include <exception>
#include <sstream>
#include <stdexcept>
#include <vector>

#include "MrpModel/MrpWireFormat.h"
#include "MrpSm/MrpLib.h"
#include "MrpSm/MrpSmTrace.h"
#include "MrpSm/MrpVectorEncoder.h"
#include "lumen/TraceRing.h"
#include "quarn/Assert.h"
#include "quarn/Collection.h"
#include "velo/EthHdr.h"
#include "velo/PktManager.h"

namespace Mrp {

namespace {

constexpr std::size_t kAttributeListLengthOffset = 2;
// Destination and source address, EtherType and ProtocolVersion.
constexpr std::size_t kMrpduHeaderOctets = Velo::EthHdr::kSize + 1;

Quarn::Ptr<MrpTxPacketContext> contextIs(MrpTransmitter::TxPacketContextMap& map, const Velo::IntfId& intfId,
                                         Quarn::Ptr<Velo::Pkt> pkt) {
  auto it = map.find(intfId);
  if (it == map.end()) {
    return map.emplace(intfId, new MrpTxPacketContext(intfId, std::move(pkt))).first->second;
  }
  if (it->second->pkt() != pkt) {
    std::ostringstream text;
    text << "Reinstantiating the pointer interface where constructor parameter attribute _pkt has a different value of"
         << pkt.ptr() << " than the current value of " << it->second->pkt().ptr() << " not allowed";
    throw std::invalid_argument(text.str());
  }
  return it->second;
}

}  // namespace

Quarn::Ptr<MrpTxPacketContext> MrpTransmitter::mrpTxPacketContext(const Velo::IntfId& intfId) const {
  return Quarn::entryOf(mrpTxPacketContext_, intfId);
}

Quarn::Ptr<MrpTxPacketContext> MrpTransmitter::mrpTxPacketContextIs(const Velo::IntfId& intfId,
                                                                    Quarn::Ptr<Velo::Pkt> pkt) {
  return contextIs(mrpTxPacketContext_, intfId, std::move(pkt));
}

Quarn::Ptr<MrpTxPacketContext> MrpTransmitter::mrpTxSecondPacketContext(const Velo::IntfId& intfId) const {
  return Quarn::entryOf(mrpTxSecondPacketContext_, intfId);
}

Quarn::Ptr<MrpTxPacketContext> MrpTransmitter::mrpTxSecondPacketContextIs(const Velo::IntfId& intfId,
                                                                          Quarn::Ptr<Velo::Pkt> pkt) {
  return contextIs(mrpTxSecondPacketContext_, intfId, std::move(pkt));
}

Quarn::Ptr<Velo::Pam> MrpTransmitter::txPam(const Velo::IntfId& intfId) const {
  return txPorts_ ? txPorts_->txPam(intfId) : nullptr;
}

void MrpTransmitter::mrpSendLeaveAll(std::uint8_t attributeType, const Velo::IntfId& intfId) {
  MRP_TRACE(7, " \n mrpSendLeaveAll: type = " << static_cast<char>(attributeType) << " intfId = " << intfId);
  mrpSendAttributeIntf({intfId, attributeType, MrpParameters::kLeaveAllEvent}, intfId, false);
}

void MrpTransmitter::mrpSendAttributeIntf(const MrpParameters& parameters, const Velo::IntfId& intfId,
                                          bool secondPktContext) {
  if (!txPam(intfId)) {
    MRP_TRACE(4, " Tx is being Attempted before the PAM is enabled ");
    return;
  }
  // Nothing but the wire's events and a LeaveAll can be encoded.
  if (parameters.attributeEvent > MrpParameters::kLeaveAllEvent) {
    MRP_TRACE(4, " Invalid attribute event in mrpSendAttributeIntf " << parameters);
    return;
  }
  TxPacketContextMap& open = contexts(secondPktContext);
  auto context = open.find(intfId);
  // Messages of a packet go in ascending attribute type.
  if (context != open.end() && context->second->currentAttrType() > parameters.attributeType) {
    mrpTransmitTxPacket(intfId, secondPktContext);
    context = open.find(intfId);
  }
  const bool fresh = context == open.end();
  if (fresh && !contextOpen(parameters, intfId, secondPktContext)) return;
  const MrpApplication application = lib_.application();
  try {
    switch (application) {
      case MrpApplication::msrp:
        mrpSendMsrpAttributeIntf(parameters, intfId, secondPktContext);
        break;
      case MrpApplication::mvrp:
        mrpSendMvrpAttributeIntf(parameters, intfId, secondPktContext);
        break;
      default:
        MRP_TRACE(8, " Not supported Application:  " << static_cast<unsigned>(application));
        Lumen::fastTrace().record("MrpSm: application not supported", static_cast<std::int64_t>(application));
        break;
    }
  } catch (const std::exception& error) {
    // The size flush keeps every write inside the packet; should one still
    // be refused, the packet under construction cannot be trusted.
    MRP_TRACE(4, " Encoding failed on " << intfId << ": " << error.what() << "; packet dropped");
    open.erase(intfId);
    return;
  }
  const Quarn::Ptr<MrpTxPacketContext> filled = Quarn::entryOf(open, intfId);
  // A packet that nothing was put into is not kept: it would go out empty.
  if (fresh && !filled->curMessage()) {
    open.erase(intfId);
    return;
  }
  if (full(*filled)) mrpTransmitTxPacket(intfId, secondPktContext);
}

bool MrpTransmitter::contextOpen(const MrpParameters& parameters, const Velo::IntfId& intfId, bool secondPktContext) {
  Quarn::Ptr<Velo::Pkt> pkt = Velo::pktManager().pktNew(kTxPktBytes);
  if (!pkt) {
    MRP_TRACE(4, "Packet allocation failed for " << parameters);
    Lumen::fastTrace().record("MrpSm: packet allocation failed", parameters.attributeType, parameters.attributeEvent,
                              intfId.name().c_str());
    return false;
  }
  contextIs(contexts(secondPktContext), intfId, std::move(pkt));
  return true;
}

bool MrpTransmitter::full(const MrpTxPacketContext& context) const {
  const auto size = static_cast<std::uint16_t>(
      mrpGetNumOfPackedBytes(context, static_cast<std::uint8_t>(lib_.application())) + kTxHeadroom);
  // An MTU of 0 is one the port has not reported yet.
  const std::uint32_t mtu = txPorts_->txMtu(context.intfId());
  return size >= kTxPktBytes || (mtu != 0 && size >= mtu);
}

//   Ethernet header(14) ProtocolVersion(1) messages... [list EndMark(2)] PDU EndMark(2)
void MrpTransmitter::mrpTransmitTxPacket(const Velo::IntfId& intfId, bool secondPktContext) {
  TxPacketContextMap& open = contexts(secondPktContext);
  const Quarn::Ptr<MrpTxPacketContext> context = Quarn::entryOf(open, intfId);
  if (!context) return;
  // While MRPDUs are flooded the engine sends none of its own.
  if (txPorts_ && txPorts_->txFlooding()) {
    open.erase(intfId);
    return;
  }
  const Quarn::Ptr<Velo::Pam> pam = txPam(intfId);
  if (!pam) {
    MRP_TRACE(4, " Tx is being Attempted before the PAM is enabled ");
    return;
  }
  const MrpTxPacketContext& ctx = *context;
  const Quarn::Ptr<Velo::Pkt>& pkt = ctx.pkt();
  std::size_t n = mrpGetNumOfPackedBytes(ctx, static_cast<std::uint8_t>(lib_.application()));
  // Room for the EndMarks still to be written.
  const std::size_t numOfPackedBytes = n + (ctx.curMessage() ? kMrpEndMarkOctets : 0) + kMrpEndMarkOctets;
  QASSERT(numOfPackedBytes <= pkt->frontBytes());
  if (const auto message = ctx.curMessage()) {
    ctx.u16AtIs(n, 0);
    n += kMrpEndMarkOctets;
    // MSRP's AttributeListLength counts the list's EndMark.
    if (lib_.application() == MrpApplication::msrp) {
      const std::size_t field = *message + kAttributeListLengthOffset;
      ctx.u16AtIs(field, static_cast<std::uint16_t>(ctx.u16At(field) + kMrpEndMarkOctets));
    }
  }
  ctx.u16AtIs(n, 0);
  std::uint8_t* header = pkt->prepend(kMrpduHeaderOctets);
  QASSERT(header);
  Velo::EthHdr(lib_.applicationMacAddr(), pam->ethAddr(), lib_.applicationEtype()).toBytes(header);
  header[Velo::EthHdr::kSize] = txPorts_->txProtocolVersion();
  pkt->trim(n + kMrpduHeaderOctets + kMrpEndMarkOctets);
  mrpCurrentTxIntf_ = intfId;
  txPorts_->numOfPktsTransmittedInc();
  MRP_TRACE(8, " A pkt is sent on : " << intfId);
  pam->txPkt(*pkt);
  open.erase(intfId);
}

void MrpTransmitter::mrpTransmitTxAttributes(const Velo::IntfId& intfId) {
  mrpTransmitTxPacket(intfId, false);
  mrpTransmitTxPacket(intfId, true);
}

// Ports with only a second packet open are left to their own flushes.
void MrpTransmitter::mrpTransmitTxAttributes() {
  std::vector<Velo::IntfId> ports;
  for (const auto& [intfId, context] : mrpTxPacketContext_) ports.push_back(intfId);
  for (const Velo::IntfId& intfId : ports) mrpTransmitTxAttributes(intfId);
}

void MrpTransmitter::handleTxTimer() {
  mrpTransmitTxAttributes();
  if (const Brisk::TimerWheel* wheel = txTimer_.notifier()) txTimer_.timeIs(wheel->clock()->now() + kTxInterval);
}

}  // namespace Mrp
