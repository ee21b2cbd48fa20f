#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

#include "MrpSm/MrpVectorEncoder.h"
#include "quarn/Trace.h"
#include "support/EngineScenario.h"
#include "support/TxSend.h"
#include "velo/EthHdr.h"

namespace MrpTest {
namespace {

using Mrp::MrpApplication;
using Mrp::MsrpListenerAttribute;
using Mrp::MsrpListenerEvent;
using Mrp::MvrpVlanAttribute;

const Velo::IntfId kP1("p1");

Bytes joined(std::initializer_list<Bytes> parts) {
  Bytes out;
  for (const Bytes& part : parts) out.insert(out.end(), part.begin(), part.end());
  return out;
}

Bytes streamIdOctets(std::uint64_t streamId) {
  Bytes octets;
  for (int shift = 56; shift >= 0; shift -= 8) octets.push_back(static_cast<std::uint8_t>(streamId >> shift));
  return octets;
}

// An MSRP engine whose port p1 faces the test; attributes go straight into
// its transmit packets, and nothing is sent until the test flushes.
class MrpTransmitAssemblyTest : public EngineScenario {
 protected:
  MrpTransmitAssemblyTest() { portUp(msrp, "p1"); }

  // Both packets of the port, first then second; what went out.
  std::vector<SentFrame> flush(const std::string& port = "p1") {
    msrp.sm().mrpTransmitTxAttributes(Velo::IntfId(port));
    return takeFrames(port);
  }

  // The frame p1 sends around `messages`: the application's group address,
  // the port's address, the EtherType, ProtocolVersion 0, `messages` and the
  // MRPDU's EndMark.
  Bytes msrpFrame(const Bytes& messages) const {
    Bytes frame(Velo::EthHdr::kSize);
    Velo::EthHdr(lib.applicationMacAddr(), kEngineMac, lib.applicationEtype()).toBytes(frame.data());
    return joined({frame, {0x00}, messages, {0x00, 0x00}});
  }

  ScenarioEngine& msrp = engineNew("S", MrpApplication::msrp);
  Mrp::MrpLib& lib = msrp.lib();
};

TEST_F(MrpTransmitAssemblyTest, ConsecutiveTalkersShareOneVectorOfTwoValues) {
  sendIntf(lib, "p1", talkerAdvertise(0x10, 0x00), kJoinIn);
  sendIntf(lib, "p1", talkerAdvertise(0x11, 0x01), kJoinIn);
  const auto frames = flush();
  ASSERT_EQ(frames.size(), 1u);
  EXPECT_EQ(frames[0].bytes, msrpFrame(joined({
                                 {0x01, 0x19, 0x00, 0x1E},  // Talker Advertise, length 25, list length 30
                                 {0x00, 0x02},              // VectorHeader: 2 values
                                 talkerAdvertiseOctets(0x10, 0x00),
                                 {0x2A},        // JoinIn, JoinIn
                                 {0x00, 0x00},  // EndMark of the list
                             })));
}

TEST_F(MrpTransmitAssemblyTest, NonConsecutiveTalkerStartsASecondVectorInTheSameMessage) {
  sendIntf(lib, "p1", talkerAdvertise(0x10, 0x00), kJoinIn);
  sendIntf(lib, "p1", talkerAdvertise(0x20, 0x10), kNew);
  const auto frames = flush();
  ASSERT_EQ(frames.size(), 1u);
  EXPECT_EQ(frames[0].bytes, msrpFrame(joined({
                                 {0x01, 0x19, 0x00, 0x3A},  // Talker Advertise, list length 28 + 28 + 2
                                 {0x00, 0x01},              // VectorHeader: 1 value
                                 talkerAdvertiseOctets(0x10, 0x00),
                                 {0x24},        // JoinIn
                                 {0x00, 0x01},  // VectorHeader: 1 value
                                 talkerAdvertiseOctets(0x20, 0x10),
                                 {0x00},        // New
                                 {0x00, 0x00},  // EndMark of the list
                             })));
}

// A talker continues a vector only when its stream id and its destination
// address both follow the vector's.
TEST_F(MrpTransmitAssemblyTest, TalkerWhoseAddressDoesNotFollowStartsANewVector) {
  sendIntf(lib, "p1", talkerAdvertise(0x10, 0x00), kJoinIn);
  sendIntf(lib, "p1", talkerAdvertise(0x11, 0x05), kJoinIn);
  const auto frames = flush();
  ASSERT_EQ(frames.size(), 1u);
  const Bytes& bytes = frames[0].bytes;
  const std::size_t secondVector = Velo::EthHdr::kSize + 1 + 4 + 28;
  ASSERT_GT(bytes.size(), secondVector + 1);
  EXPECT_EQ(bytes[secondVector], 0x00);
  EXPECT_EQ(bytes[secondVector + 1], 0x01) << "a second one-value vector";
}

TEST_F(MrpTransmitAssemblyTest, ListenerAfterTalkerOpensAListenerMessageInTheSamePacket) {
  sendIntf(lib, "p1", talkerAdvertise(0x10, 0x00), kJoinIn);
  sendIntf(lib, "p1", MsrpListenerAttribute(0x10, MsrpListenerEvent::ready), kJoinIn);
  const auto frames = flush();
  ASSERT_EQ(frames.size(), 1u);
  EXPECT_EQ(frames[0].bytes, msrpFrame(joined({
                                 {0x01, 0x19, 0x00, 0x1E},  // Talker Advertise, list length 28 + 2
                                 {0x00, 0x01},              // VectorHeader: 1 value
                                 talkerAdvertiseOctets(0x10, 0x00),
                                 {0x24},                    // JoinIn
                                 {0x00, 0x00},              // EndMark of the list
                                 {0x03, 0x08, 0x00, 0x0E},  // Listener, length 8, list length 12 + 2
                                 {0x00, 0x01},              // VectorHeader: 1 value
                                 streamIdOctets(0x10),
                                 {0x24},        // JoinIn
                                 {0x80},        // ready
                                 {0x00, 0x00},  // EndMark of the list
                             })));
}

TEST_F(MrpTransmitAssemblyTest, LeaveAllOpensAMessageOfItsOwnAfterOneOfTheSameType) {
  sendIntf(lib, "p1", talkerAdvertise(0x10, 0x00), kJoinIn);
  Quarn::CaptureTraceSink traces;
  Quarn::traceLevelsIs("MrpSm/7");
  lib.mrpSendLeaveAll(1, kP1);
  Quarn::traceLevelsClear();
  EXPECT_TRUE(traces.contains(" \n mrpSendLeaveAll: type = \x01 intfId = p1"));
  const auto frames = flush();
  ASSERT_EQ(frames.size(), 1u);
  EXPECT_EQ(frames[0].bytes, msrpFrame(joined({
                                 {0x01, 0x19, 0x00, 0x1E},  // Talker Advertise, list length 28 + 2
                                 {0x00, 0x01},              // VectorHeader: 1 value
                                 talkerAdvertiseOctets(0x10, 0x00),
                                 {0x24},                    // JoinIn
                                 {0x00, 0x00},              // EndMark of the list
                                 {0x01, 0x19, 0x00, 0x1D},  // Talker Advertise again, list length 27 + 2
                                 {0x20, 0x00},              // VectorHeader: LeaveAll, no values
                                 Bytes(25, 0x00),           // FirstValue: zero
                                 {0x00, 0x00},              // EndMark of the list
                             })));
  EXPECT_EQ(frames[0].leaveAll, std::set<std::uint8_t>{1});
}

TEST_F(MrpTransmitAssemblyTest, ClosingAnMsrpPacketRaisesTheOpenListLengthByTwoAndEndsInTwoEndMarks) {
  sendIntf(lib, "p1", talkerAdvertise(0x10, 0x00), kJoinIn);
  const Mrp::MrpTxPacketContext& open = *lib.mrpTxPacketContext(kP1);
  const std::uint16_t packed = Mrp::mrpGetNumOfPackedBytes(open, 1);
  EXPECT_EQ(packed, 4 + 28);
  EXPECT_EQ(open.u16At(2), 28) << "AttributeListLength while the message is open";
  const auto frames = flush();
  ASSERT_EQ(frames.size(), 1u);
  const Bytes& bytes = frames[0].bytes;
  ASSERT_EQ(bytes.size(), packed + 2u + 17u);
  const std::size_t message = Velo::EthHdr::kSize + 1;
  EXPECT_EQ(bytes[message + 2], 0x00);
  EXPECT_EQ(bytes[message + 3], 28 + 2) << "the list's EndMark counts";
  EXPECT_EQ(Bytes(bytes.end() - 4, bytes.end()), (Bytes{0x00, 0x00, 0x00, 0x00})) << "two EndMarks";
}

TEST_F(MrpTransmitAssemblyTest, FlushingAPortSendsItsFirstPacketBeforeItsSecond) {
  sendIntf(lib, "p1", talkerAdvertise(0x10, 0x00), kJoinIn, true);
  sendIntf(lib, "p1", talkerAdvertise(0x30, 0x20), kJoinIn, false);
  const auto frames = flush();
  ASSERT_EQ(frames.size(), 2u);
  ASSERT_EQ(frames[0].values.size(), 1u);
  ASSERT_EQ(frames[1].values.size(), 1u);
  EXPECT_EQ(frames[0].values[0].attributeKey, 0x30u) << "the first packet";
  EXPECT_EQ(frames[1].values[0].attributeKey, 0x10u) << "the second packet";
  EXPECT_FALSE(lib.mrpTxPacketContext(kP1));
  EXPECT_FALSE(lib.mrpTxSecondPacketContext(kP1));
}

// The sweep of all ports visits those with a first packet open only.
TEST_F(MrpTransmitAssemblyTest, SweepLeavesAPortWithOnlyASecondPacketOpen) {
  sendIntf(lib, "p1", talkerAdvertise(0x10, 0x00), kJoinIn, true);
  msrp.sm().mrpTransmitTxAttributes();
  EXPECT_TRUE(takeFrames("p1").empty());
  EXPECT_TRUE(lib.mrpTxSecondPacketContext(kP1));
  sendIntf(lib, "p1", talkerAdvertise(0x30, 0x20), kJoinIn, false);
  msrp.sm().mrpTransmitTxAttributes();
  EXPECT_EQ(takeFrames("p1").size(), 2u) << "with a first packet open, both go";
}

TEST_F(MrpTransmitAssemblyTest, WhileFloodingAPacketIsDiscardedUnsentAndUncounted) {
  sendIntf(lib, "p1", talkerAdvertise(0x10, 0x00), kJoinIn);
  const std::uint64_t sent = msrp.counters().numOfPktsTransmitted();
  msrp.config().mrpFloodingIs(true);
  msrp.sm().mrpTransmitTxPacket(kP1, false);
  msrp.config().mrpFloodingIs(false);
  EXPECT_TRUE(takeFrames("p1").empty());
  EXPECT_EQ(msrp.counters().numOfPktsTransmitted(), sent);
  EXPECT_FALSE(lib.mrpTxPacketContext(kP1)) << "the packet under construction is gone";
}

TEST_F(MrpTransmitAssemblyTest, HeaderCarriesTheApplicationAddressThePortAddressTheEtherTypeAndVersionZero) {
  uncheckedFramesAllowed();  // an EtherType no dissector knows
  lib.applicationMacAddrIs(Velo::EthAddr(0x01, 0x80, 0xC2, 0x00, 0x00, 0x3F));
  lib.applicationEtypeIs(0x1234);
  sendIntf(lib, "p1", talkerAdvertise(0x10, 0x00), kJoinIn);
  const auto frames = flush();
  ASSERT_EQ(frames.size(), 1u);
  ASSERT_GE(frames[0].bytes.size(), 15u);
  EXPECT_EQ(Bytes(frames[0].bytes.begin(), frames[0].bytes.begin() + 15),
            (Bytes{
                0x01, 0x80, 0xC2, 0x00, 0x00, 0x3F,  // destination: the application's address
                0x02, 0x00, 0x00, 0x00, 0x00, 0x02,  // source: the port's own address
                0x12, 0x34,                          // the application's EtherType
                0x00,                                // ProtocolVersion 0
            }));
}

TEST_F(MrpTransmitAssemblyTest, EverySentPacketIsCountedAndNamesItsPort) {
  portUp(msrp, "p2");
  sendIntf(lib, "p1", talkerAdvertise(0x10, 0x00), kJoinIn);
  sendIntf(lib, "p2", talkerAdvertise(0x10, 0x00), kJoinIn);
  sendIntf(lib, "p2", talkerAdvertise(0x10, 0x00), kJoinIn, true);
  const std::uint64_t before = msrp.counters().numOfPktsTransmitted();
  EXPECT_EQ(flush("p2").size(), 2u);
  EXPECT_EQ(msrp.counters().numOfPktsTransmitted(), before + 2);
  EXPECT_EQ(lib.mrpCurrentTxIntf(), Velo::IntfId("p2"));
  EXPECT_EQ(flush("p1").size(), 1u);
  EXPECT_EQ(msrp.counters().numOfPktsTransmitted(), before + 3);
  EXPECT_EQ(lib.mrpCurrentTxIntf(), kP1);
}

TEST_F(MrpTransmitAssemblyTest, APortThatLostItsPacketAccessKeepsItsPacketForALaterFlush) {
  sendIntf(lib, "p1", talkerAdvertise(0x10, 0x00), kJoinIn);
  const Quarn::Ptr<Mrp::MrpTxPacketContext> open = lib.mrpTxPacketContext(kP1);
  msrp.sm().desiredIntfDir()->intfDesiredDel(kP1);
  ASSERT_FALSE(msrp.sm().pamCollection()->intfPam(kP1));
  const std::uint64_t sent = msrp.counters().numOfPktsTransmitted();
  Quarn::CaptureTraceSink traces;
  Quarn::traceLevelsIs("MrpSm/4");
  msrp.sm().mrpTransmitTxPacket(kP1, false);
  Quarn::traceLevelsClear();
  EXPECT_TRUE(traces.contains(" Tx is being Attempted before the PAM is enabled "));
  EXPECT_EQ(lib.mrpTxPacketContext(kP1), open);
  EXPECT_EQ(msrp.counters().numOfPktsTransmitted(), sent);
  EXPECT_TRUE(takeFrames("p1").empty());

  lib.mrpInterfaceEnable(kP1);
  ASSERT_TRUE(msrp.sm().pamCollection()->intfPam(kP1));
  const auto frames = flush();
  ASSERT_EQ(frames.size(), 1u);
  EXPECT_EQ(frames[0].values, (std::vector<SentValue>{{1, 0x10, kJoinIn, talkerAdvertiseOctets(0x10, 0x00)}}));
}

TEST_F(MrpTransmitAssemblyTest, ListenerValuesContinueAVectorByStreamIdAlone) {
  sendIntf(lib, "p1", MsrpListenerAttribute(0x10, MsrpListenerEvent::ready), kJoinIn);
  sendIntf(lib, "p1", MsrpListenerAttribute(0x11, MsrpListenerEvent::askingFailed), kJoinIn);
  sendIntf(lib, "p1", MsrpListenerAttribute(0x13, MsrpListenerEvent::ready), kJoinIn);
  const auto frames = flush();
  ASSERT_EQ(frames.size(), 1u);
  EXPECT_EQ(frames[0].bytes, msrpFrame(joined({
                                 {0x03, 0x08, 0x00, 0x1A},  // Listener, list length 12 + 12 + 2
                                 {0x00, 0x02},              // VectorHeader: 2 values
                                 streamIdOctets(0x10),
                                 {0x2A},        // JoinIn, JoinIn
                                 {0x90},        // ready, askingFailed
                                 {0x00, 0x01},  // VectorHeader: 1 value (0x12 is missing)
                                 streamIdOctets(0x13),
                                 {0x24},        // JoinIn
                                 {0x80},        // ready
                                 {0x00, 0x00},  // EndMark of the list
                             })));
}

TEST_F(MrpTransmitAssemblyTest, AttributeOfALowerTypeSendsThePacketFirstAndStartsANewOne) {
  sendIntf(lib, "p1", MsrpListenerAttribute(0x10, MsrpListenerEvent::ready), kJoinIn);
  EXPECT_TRUE(takeFrames("p1").empty());
  sendIntf(lib, "p1", talkerAdvertise(0x10, 0x00), kJoinIn);
  const auto sentFirst = takeFrames("p1");
  ASSERT_EQ(sentFirst.size(), 1u) << "the Listener packet went before the Talker was added";
  // The parser keeps a Listener's declaration behind its stream id, least significant octet first.
  const Bytes listenerReady = joined({streamIdOctets(0x10), {0x02, 0x00, 0x00, 0x00}});
  EXPECT_EQ(sentFirst[0].values, (std::vector<SentValue>{{3, 0x10, kJoinIn, listenerReady}}));
  ASSERT_TRUE(lib.mrpTxPacketContext(kP1));
  EXPECT_EQ(lib.mrpTxPacketContext(kP1)->currentAttrType(), 1);
  const auto frames = flush();
  ASSERT_EQ(frames.size(), 1u);
  EXPECT_EQ(frames[0].values, (std::vector<SentValue>{{1, 0x10, kJoinIn, talkerAdvertiseOctets(0x10, 0x00)}}));
}

TEST_F(MrpTransmitAssemblyTest, AttributeOfTheSameOrAHigherTypeJoinsTheOpenPacket) {
  sendIntf(lib, "p1", talkerAdvertise(0x10, 0x00), kJoinIn);
  sendIntf(lib, "p1", talkerAdvertise(0x40, 0x00), kJoinIn);
  sendIntf(lib, "p1", MsrpListenerAttribute(0x10, MsrpListenerEvent::ready), kJoinIn);
  EXPECT_TRUE(takeFrames("p1").empty());
  const auto frames = flush();
  ASSERT_EQ(frames.size(), 1u);
  EXPECT_EQ(frames[0].values.size(), 3u);
}

// Talkers whose stream ids do not follow each other take 28 octets each,
// behind the 4 of the message header.
TEST_F(MrpTransmitAssemblyTest, PacketReaching1500WithHeadroomIsSentRightAfterTheAttributeThatFilledIt) {
  for (std::uint64_t k = 1; k <= 51; ++k) sendIntf(lib, "p1", talkerAdvertise(2 * k, 0x00), kJoinIn);
  EXPECT_TRUE(takeFrames("p1").empty()) << "4 + 51 * 28 + 64 = 1496 is below 1500";
  sendIntf(lib, "p1", talkerAdvertise(2 * 52, 0x00), kJoinIn);
  const auto frames = takeFrames("p1");
  ASSERT_EQ(frames.size(), 1u) << "4 + 52 * 28 + 64 = 1524";
  EXPECT_EQ(frames[0].values.size(), 52u);
  EXPECT_FALSE(lib.mrpTxPacketContext(kP1));
}

// The port's physical status: none, or one publishing an MTU (0 is one not
// reported yet).
struct MtuCase {
  bool hasStatus;
  std::uint32_t mtu;
  std::uint64_t talkersInFirstPacket;
};

class MrpTransmitMtuTest : public MrpTransmitAssemblyTest, public ::testing::WithParamInterface<MtuCase> {};

TEST_P(MrpTransmitMtuTest, PacketIsSentOnceItsSizeWithHeadroomIsNotBelowTheMtu) {
  const MtuCase& c = GetParam();
  if (c.hasStatus) msrp.ethPhyIntfStatusDir().ethPhyIntfStatusIs(kP1)->mtuIs(c.mtu);
  std::uint64_t k = 0;
  std::vector<SentFrame> frames;
  while (frames.empty() && k < 60) {
    ++k;
    sendIntf(lib, "p1", talkerAdvertise(2 * k, 0x00), kJoinIn);
    frames = takeFrames("p1");
  }
  EXPECT_EQ(k, c.talkersInFirstPacket);
  ASSERT_EQ(frames.size(), 1u);
  EXPECT_EQ(frames[0].values.size(), c.talkersInFirstPacket);
}

INSTANTIATE_TEST_SUITE_P(Mtus, MrpTransmitMtuTest,
                         ::testing::Values(MtuCase{false, 0, 52},    // 1500 alone
                                           MtuCase{true, 0, 52},     // not reported yet: 1500 alone
                                           MtuCase{true, 9000, 52},  // above 1500: 1500 decides
                                           MtuCase{true, 208, 5},    // 4 + 5 * 28 + 64 = 208 reaches it
                                           MtuCase{true, 209, 6}));  // 208 is below it

// One engine of the VLAN application on port v1.
class MrpVlanPackingTest : public EngineScenario {
 protected:
  MrpVlanPackingTest() { portUp(mvrp, "v1"); }
  ScenarioEngine& mvrp = engineNew("V", MrpApplication::mvrp);
};

TEST_F(MrpVlanPackingTest, AllVlansJoinedInOrderFitOneVectorOfOnePacket) {
  for (std::uint16_t vlan = 1; vlan <= 4094; ++vlan) sendIntf(mvrp.lib(), "v1", MvrpVlanAttribute(vlan), kJoinIn);
  EXPECT_TRUE(takeFrames("v1").empty()) << "2 + 4 + 1365 + 64 stays below 1500";
  mvrp.sm().mrpTransmitTxAttributes(Velo::IntfId("v1"));
  const auto frames = takeFrames("v1");
  ASSERT_EQ(frames.size(), 1u);
  const Bytes& bytes = frames[0].bytes;
  // Header, version, message header 2, vector header 2, FirstValue 2, 1365 packed, two EndMarks.
  ASSERT_EQ(bytes.size(), 14u + 1 + 2 + 2 + 2 + 1365 + 2 + 2);
  EXPECT_EQ(Bytes(bytes.begin() + 15, bytes.begin() + 21), (Bytes{
                                                               0x01, 0x02,  // VLAN identifier, length 2
                                                               0x0F, 0xFE,  // VectorHeader: 4094 values
                                                               0x00, 0x01,  // FirstValue: VLAN 1
                                                           }));
  EXPECT_EQ(bytes[21], 1 * 36 + 1 * 6 + 1) << "JoinIn, JoinIn, JoinIn";
  EXPECT_EQ(bytes[21 + 1364], 1 * 36 + 1 * 6) << "VLANs 4093 and 4094, the third place empty";
  ASSERT_EQ(frames[0].values.size(), 4094u);
  for (std::uint16_t vlan = 1; vlan <= 4094; ++vlan) {
    ASSERT_EQ(frames[0].values[vlan - 1].attributeKey, vlan);
    ASSERT_EQ(frames[0].values[vlan - 1].attributeEvent, kJoinIn);
  }
}

}  // namespace
}  // namespace MrpTest
