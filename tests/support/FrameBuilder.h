#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "MrpModel/MrpApplication.h"
#include "MrpModel/MrpWireFormat.h"
#include "MrpMsrp/MsrpAttrType.h"
#include "MrpMvrp/MvrpAttrType.h"
#include "MrpSm/MrpLib.h"
#include "MrpSm/MrpTxPacketContext.h"
#include "MrpSm/MrpVectorEncoder.h"
#include "quarn/Ptr.h"
#include "velo/EthAddr.h"
#include "velo/EthHdr.h"
#include "velo/Pkt.h"

namespace MrpTest {

// Builds MRPDUs with the engine's own encoder primitives, laid out as the
// transmit path lays them out (messages from the start of a zero-filled
// packet, vectors one behind the other, MSRP list lengths kept up to date),
// and closes and frames them as a transmitted packet is closed and framed.
// Header-only, so that programs without the test framework (fuzz targets,
// benchmarks) can use it too.
//
//   FrameBuilder b(*lib, Mrp::MrpApplication::mvrp);
//   b.message(1).vlan(Mrp::MvrpVlanAttribute(10), 1).append(1).append(5);
//   std::vector<std::uint8_t> frame = b.frame(srcMac);
class FrameBuilder {
 public:
  // `lib` writes the vectors; its engine, if any, supplies sendTxLvAll.
  FrameBuilder(Mrp::MrpLib& lib, Mrp::MrpApplication application, std::size_t packetBytes = 1500)
      : lib_(lib),
        application_(application),
        context_(new Mrp::MrpTxPacketContext(Velo::IntfId("Ethernet1"), Velo::Pkt::pktNew(packetBytes))) {}

  // Closes the current message, if any, and opens one of `attributeType`.
  FrameBuilder& message(std::uint8_t attributeType) {
    if (application_ == Mrp::MrpApplication::msrp) {
      Mrp::mrpCreateNewMsrpHeader(*context_, static_cast<Mrp::MsrpAttrType>(attributeType));
    } else {
      Mrp::mrpCreateNewMvrpHeader(*context_, static_cast<Mrp::MvrpAttrType>(attributeType));
    }
    messageEmpty_ = true;
    return *this;
  }

  // A new one-value vector behind the last vector of the current message
  // (event 6: a LeaveAll-only vector).
  FrameBuilder& talker(const Mrp::MsrpTalkerAdvertiseAttribute& value, std::uint8_t event) {
    nextVectorPosition();
    listLengthInc(lib_.mrpEncodeTalkerVector(*context_, value, event));
    return *this;
  }
  FrameBuilder& talkerFailed(const Mrp::MsrpTalkerFailedAttribute& value, std::uint8_t event) {
    nextVectorPosition();
    listLengthInc(lib_.mrpEncodeTalkerFailedVector(*context_, value, event));
    return *this;
  }
  FrameBuilder& listener(const Mrp::MsrpListenerAttribute& value, std::uint8_t event) {
    nextVectorPosition();
    listLengthInc(lib_.mrpEncodeListenerVector(*context_, value, event));
    return *this;
  }
  FrameBuilder& domain(const Mrp::MsrpDomainAttribute& value, std::uint8_t event) {
    nextVectorPosition();
    listLengthInc(lib_.mrpEncodeDomainVector(*context_, value, event));
    return *this;
  }
  FrameBuilder& vlan(const Mrp::MvrpVlanAttribute& value, std::uint8_t event) {
    nextVectorPosition();
    listLengthInc(lib_.mrpEncodeVlanVector(*context_, value, event));
    return *this;
  }

  // One more value in the current vector.
  FrameBuilder& append(std::uint8_t event) {
    const auto application = static_cast<std::uint8_t>(application_);
    listLengthInc(Mrp::mrpPackThreePackedEvent(*context_, context_->currentAttrType(), event, application));
    return *this;
  }
  FrameBuilder& appendListener(std::uint8_t event, Mrp::MsrpListenerEvent declaration) {
    listLengthInc(Mrp::mrpPackThreeAndFourPackedEvent(*context_, event, declaration));
    return *this;
  }

  Mrp::MrpTxPacketContext& context() { return *context_; }
  // Octets of the packet used so far.
  std::uint16_t packedBytes() const {
    return Mrp::mrpGetNumOfPackedBytes(*context_, static_cast<std::uint8_t>(application_));
  }

  // The MRPDU as it would be sent: ProtocolVersion 0, the messages with the
  // current one closed by its list EndMark (MSRP: its AttributeListLength
  // + 2), and the PDU's EndMark. The packet itself is left open.
  std::vector<std::uint8_t> mrpdu() const {
    const auto messages = context_->octets(0, packedBytes());
    std::vector<std::uint8_t> pdu;
    pdu.reserve(messages.size() + 5);
    pdu.push_back(0);  // ProtocolVersion
    pdu.insert(pdu.end(), messages.begin(), messages.end());
    if (const auto message = context_->curMessage()) {
      pdu.push_back(0);  // the list's EndMark
      pdu.push_back(0);
      if (application_ == Mrp::MrpApplication::msrp) {
        const std::size_t field = 1 + *message + kListLengthOffset;
        const unsigned length = ((pdu[field] << 8) | pdu[field + 1]) + Mrp::kMrpEndMarkOctets;
        pdu[field] = static_cast<std::uint8_t>(length >> 8);
        pdu[field + 1] = static_cast<std::uint8_t>(length & 0xff);
      }
    }
    pdu.push_back(0);  // the PDU's EndMark
    pdu.push_back(0);
    return pdu;
  }

  // The MRPDU behind the application's group address, `src` and EtherType.
  std::vector<std::uint8_t> frame(const Velo::EthAddr& src) const {
    const Mrp::MrpApplicationFraming framing = Mrp::mrpDefaultApplicationFraming(application_);
    const std::vector<std::uint8_t> pdu = mrpdu();
    // Sized once and written in place: nothing grows, so nothing can be
    // written past what was allocated.
    std::vector<std::uint8_t> frame(Velo::EthHdr::kSize + pdu.size());
    Velo::EthHdr(framing.macAddr, src, framing.etype).toBytes(frame.data());
    std::copy(pdu.begin(), pdu.end(), frame.begin() + Velo::EthHdr::kSize);
    return frame;
  }

 private:
  static constexpr std::size_t kListLengthOffset = 2;

  // Moves curVector behind the last vector, unless the message is empty.
  void nextVectorPosition() {
    if (messageEmpty_) {
      messageEmpty_ = false;
      return;
    }
    Mrp::MrpTxPacketContext& ctx = *context_;
    if (application_ == Mrp::MrpApplication::msrp) {
      const std::size_t message = ctx.curMessage().value();
      ctx.curVectorIs(static_cast<std::uint16_t>(message + Mrp::kMsrpMessageHeaderOctets +
                                                 ctx.u16At(message + kListLengthOffset)));
    } else {
      const std::size_t vector = ctx.curVector().value();
      ctx.curVectorIs(static_cast<std::uint16_t>(vector + Mrp::mvrpGetSizeOfVector(ctx.u16At(vector))));
    }
  }

  // Adds a count returned by a primitive to the MSRP AttributeListLength.
  void listLengthInc(std::uint16_t added) {
    if (application_ != Mrp::MrpApplication::msrp) return;
    const std::size_t field = context_->curMessage().value() + kListLengthOffset;
    context_->u16AtIs(field, static_cast<std::uint16_t>(context_->u16At(field) + added));
  }

  Mrp::MrpLib& lib_;
  Mrp::MrpApplication application_;
  Quarn::Ptr<Mrp::MrpTxPacketContext> context_;
  bool messageEmpty_ = true;
};

}  // namespace MrpTest
