#include "MrpSm/MrpTransmitter.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "MrpMsrp/MsrpListenerAttribute.h"
#include "MrpMsrp/MsrpTalkerAdvertiseAttribute.h"
#include "MrpMvrp/MvrpVlanAttribute.h"
#include "MrpSm/MrpLib.h"
#include "brisk/TimerWheel.h"
#include "quarn/Clock.h"
#include "quarn/Trace.h"
#include "velo/EthAddr.h"
#include "velo/Pam.h"

namespace MrpTest {
namespace {

using Bytes = std::vector<std::uint8_t>;
using Mrp::MrpApplication;

const Velo::IntfId kP1("p1");
const Velo::IntfId kP2("p2");
const Velo::EthAddr kPortMac(0x02, 0x00, 0x00, 0x00, 0x00, 0x07);
constexpr std::uint8_t kVlanType = 1;
constexpr std::uint8_t kJoinIn = 1;

// A port socket that keeps every frame it is given.
class RecordingPam : public Velo::Pam {
 public:
  explicit RecordingPam(const Velo::IntfId& intfId) : Pam(intfId, kPortMac) {}
  std::vector<Bytes> sent;

 protected:
  Quarn::Ptr<Velo::Pkt> pktRead() override { return nullptr; }
  bool mediumHasData() const override { return false; }
  bool pktWrite(const Velo::Pkt& frame) override {
    sent.emplace_back(frame.span().begin(), frame.span().end());
    return true;
  }
};

// The ports a transmitter sends on, as a test sets them up.
class FakeTxPorts : public Mrp::MrpTxPorts {
 public:
  void portUp(const Velo::IntfId& intfId) { pams_[intfId] = new RecordingPam(intfId); }
  void portDown(const Velo::IntfId& intfId) { pams_.erase(intfId); }
  // What went out on the port since the last call.
  std::vector<Bytes> sentTake(const Velo::IntfId& intfId) { return std::exchange(pams_.at(intfId)->sent, {}); }

  Quarn::Ptr<Velo::Pam> txPam(const Velo::IntfId& intfId) const override {
    auto it = pams_.find(intfId);
    return it == pams_.end() ? nullptr : Quarn::Ptr<Velo::Pam>(it->second);
  }
  std::uint32_t txMtu(const Velo::IntfId& intfId) const override {
    auto it = mtus.find(intfId);
    return it == mtus.end() ? 0 : it->second;
  }
  bool txFlooding() const override { return flooding; }
  std::uint8_t txProtocolVersion() const override { return protocolVersion; }
  void numOfPktsTransmittedInc() override { ++transmitted; }

  std::map<Velo::IntfId, std::uint32_t> mtus;
  bool flooding = false;
  std::uint8_t protocolVersion = 0;
  int transmitted = 0;

 private:
  std::map<Velo::IntfId, Quarn::Ptr<RecordingPam>> pams_;
};

// A transmitter of the VLAN application on its own: a bare service object
// gives the values, fake ports take the frames. Port p1 is up.
class MrpTransmitterTest : public ::testing::Test {
 protected:
  MrpTransmitterTest() {
    lib->applicationWithDefaultFramingIs(MrpApplication::mvrp);
    ports.portUp(kP1);
    transmitter.txPortsIs(&ports);
  }

  void sendVlan(std::uint16_t vlan, bool secondPktContext = false, const Velo::IntfId& port = kP1) {
    lib->mvrpVlanVectorTx() = Mrp::MvrpVlanAttribute(vlan);
    transmitter.mrpSendAttributeIntf({port, kVlanType, kJoinIn}, port, secondPktContext);
  }
  // The FirstValue of each frame's first vector.
  static std::vector<std::uint16_t> firstVlans(const std::vector<Bytes>& frames) {
    std::vector<std::uint16_t> vlans;
    for (const Bytes& frame : frames) vlans.push_back(static_cast<std::uint16_t>(frame.at(19) << 8 | frame.at(20)));
    return vlans;
  }

  Quarn::Ptr<Mrp::MrpLib> lib = Mrp::mrpLibFactory();
  FakeTxPorts ports;
  Mrp::MrpTransmitter transmitter{*lib};
};

TEST_F(MrpTransmitterTest, ClosedPacketGoesOutFramedOnItsPortAndIsCounted) {
  ports.protocolVersion = 0x05;
  sendVlan(10);
  EXPECT_TRUE(ports.sentTake(kP1).empty()) << "kept open for more";
  transmitter.mrpTransmitTxAttributes(kP1);
  const std::vector<Bytes> frames = ports.sentTake(kP1);
  ASSERT_EQ(frames.size(), 1u);
  EXPECT_EQ(frames[0], (Bytes{
                           0x01, 0x80, 0xC2, 0x00, 0x00, 0x21,  // the application's group address
                           0x02, 0x00, 0x00, 0x00, 0x00, 0x07,  // the port's own address
                           0x88, 0xF5,                          // the application's EtherType
                           0x05,                                // the ports' ProtocolVersion
                           0x01, 0x02,                          // VLAN identifier, length 2
                           0x00, 0x01,                          // VectorHeader: 1 value
                           0x00, 0x0A,                          // FirstValue: VLAN 10
                           0x24,                                // JoinIn
                           0x00, 0x00,                          // EndMark of the list
                           0x00, 0x00,                          // EndMark of the MRPDU
                       }));
  EXPECT_EQ(ports.transmitted, 1);
  EXPECT_EQ(transmitter.mrpCurrentTxIntf(), kP1);
  EXPECT_FALSE(transmitter.mrpTxPacketContext(kP1)) << "the next attribute starts a fresh packet";
}

TEST_F(MrpTransmitterTest, NothingIsTakenForAPortWithoutPacketAccess) {
  for (const bool attached : {true, false}) {
    SCOPED_TRACE(attached ? "port down" : "no ports at all");
    transmitter.txPortsIs(attached ? &ports : nullptr);
    Quarn::CaptureTraceSink traces;
    Quarn::traceLevelsIs("MrpSm/4");
    sendVlan(10, false, kP2);
    Quarn::traceLevelsClear();
    EXPECT_TRUE(traces.contains(" Tx is being Attempted before the PAM is enabled "));
    EXPECT_TRUE(transmitter.mrpTxPacketContexts().empty());
  }
}

TEST_F(MrpTransmitterTest, APacketThatNothingWentIntoIsNotKept) {
  transmitter.mrpSendAttributeIntf({kP1, 2, kJoinIn}, kP1, false);  // a type MVRP does not have
  EXPECT_TRUE(transmitter.mrpTxPacketContexts().empty());
}

TEST_F(MrpTransmitterTest, TheFirstPacketOfAPortGoesBeforeItsSecond) {
  sendVlan(20, true);
  sendVlan(10, false);
  transmitter.mrpTransmitTxAttributes(kP1);
  EXPECT_EQ(firstVlans(ports.sentTake(kP1)), (std::vector<std::uint16_t>{10, 20}));
  EXPECT_TRUE(transmitter.mrpTxPacketContexts().empty());
  EXPECT_TRUE(transmitter.mrpTxSecondPacketContexts().empty());
}

TEST_F(MrpTransmitterTest, TheSweepVisitsOnlyPortsWithAFirstPacketOpen) {
  ports.portUp(kP2);
  sendVlan(10, false, kP1);
  sendVlan(20, true, kP1);
  sendVlan(30, true, kP2);
  transmitter.mrpTransmitTxAttributes();
  EXPECT_EQ(firstVlans(ports.sentTake(kP1)), (std::vector<std::uint16_t>{10, 20}));
  EXPECT_TRUE(ports.sentTake(kP2).empty());
  EXPECT_TRUE(transmitter.mrpTxSecondPacketContext(kP2));
}

TEST_F(MrpTransmitterTest, AnAttributeOfAnEarlierTypeSendsThePacketFirst) {
  lib->applicationWithDefaultFramingIs(MrpApplication::msrp);
  lib->msrpListenerVectorTx() = Mrp::MsrpListenerAttribute(0x10, Mrp::MsrpListenerEvent::ready);
  transmitter.mrpSendAttributeIntf({kP1, 3, kJoinIn}, kP1, false);
  lib->msrpTalkerAdvertiseTx() = Mrp::MsrpTalkerAdvertiseAttribute();
  transmitter.mrpSendAttributeIntf({kP1, 1, kJoinIn}, kP1, false);
  const std::vector<Bytes> frames = ports.sentTake(kP1);
  ASSERT_EQ(frames.size(), 1u);
  EXPECT_EQ(frames[0].at(15), 3) << "the Listener packet went alone";
  ASSERT_TRUE(transmitter.mrpTxPacketContext(kP1));
  EXPECT_EQ(transmitter.mrpTxPacketContext(kP1)->currentAttrType(), 1);
}

TEST_F(MrpTransmitterTest, WhileFloodingAPacketIsDroppedUnsentAndUncounted) {
  sendVlan(10);
  ports.flooding = true;
  transmitter.mrpTransmitTxPacket(kP1, false);
  EXPECT_TRUE(ports.sentTake(kP1).empty());
  EXPECT_EQ(ports.transmitted, 0);
  EXPECT_FALSE(transmitter.mrpTxPacketContext(kP1));
}

TEST_F(MrpTransmitterTest, APortThatLostItsPacketAccessKeepsItsPacketForLater) {
  sendVlan(10);
  ports.portDown(kP1);
  transmitter.mrpTransmitTxPacket(kP1, false);
  EXPECT_TRUE(transmitter.mrpTxPacketContext(kP1));
  EXPECT_EQ(ports.transmitted, 0);
  ports.portUp(kP1);
  transmitter.mrpTransmitTxPacket(kP1, false);
  EXPECT_EQ(firstVlans(ports.sentTake(kP1)), (std::vector<std::uint16_t>{10}));
}

// A packet holding `singles` one-value vectors (VLANs 2, 4, ...) and then
// one vector of `run` consecutive VLANs packs 2 + 5 * singles + 4 +
// ceil(run / 3) octets; with the 64 of headroom it is sent at once when that
// reaches 1500 or the port's MTU (0: none reported).
struct SizeCase {
  const char* name;
  std::uint32_t mtu;
  int singles;
  int run;
  bool sent;
};
void PrintTo(const SizeCase& c, std::ostream* os) { *os << c.name; }

class MrpTransmitterSizeTest : public MrpTransmitterTest, public ::testing::WithParamInterface<SizeCase> {};

TEST_P(MrpTransmitterSizeTest, PacketIsSentOnceItsSizeWithHeadroomReachesTheBound) {
  const SizeCase& c = GetParam();
  ports.mtus[kP1] = c.mtu;
  for (int k = 1; k <= c.singles; ++k) sendVlan(static_cast<std::uint16_t>(2 * k));
  for (int k = 0; k < c.run - 1; ++k) sendVlan(static_cast<std::uint16_t>(3000 + k));
  ASSERT_TRUE(ports.sentTake(kP1).empty()) << "nothing before the last attribute";
  sendVlan(static_cast<std::uint16_t>(3000 + c.run - 1));
  EXPECT_EQ(ports.sentTake(kP1).size(), c.sent ? 1u : 0u);
  EXPECT_EQ(static_cast<bool>(transmitter.mrpTxPacketContext(kP1)), !c.sent);
}

INSTANTIATE_TEST_SUITE_P(
    Bounds, MrpTransmitterSizeTest,
    ::testing::Values(SizeCase{"Reaches1500", 0, 285, 13, true},         // 2 + 1425 + 4 + 5 + 64 = 1500
                      SizeCase{"OneBelow1500", 0, 285, 12, false},       // 2 + 1425 + 4 + 4 + 64 = 1499
                      SizeCase{"Reaches1500UnderABigMtu", 9000, 285, 13, true},
                      SizeCase{"OneBelow1500UnderABigMtu", 9000, 285, 12, false},
                      SizeCase{"ReachesTheMtu", 71, 0, 1, true},     // 2 + 4 + 1 + 64 = 71
                      SizeCase{"OneBelowTheMtu", 72, 0, 1, false}),  // 71 < 72
    [](const ::testing::TestParamInfo<SizeCase>& info) { return std::string(info.param.name); });

TEST_F(MrpTransmitterTest, TheCycleSendsEveryTenthOfASecondOnItsWheelUntilStopped) {
  const Quarn::Ptr<Quarn::SimClock> clock = new Quarn::SimClock;
  const Quarn::Ptr<Brisk::TimerWheel> wheel = new Brisk::TimerWheel(clock, 100, 60000, true, 1024);
  transmitter.txTimerWheelIs(wheel.ptr());
  transmitter.handleTxTimer();
  EXPECT_EQ(transmitter.txTimerTime(), 0.1);
  sendVlan(10);
  clock->advance(0.1);
  EXPECT_EQ(firstVlans(ports.sentTake(kP1)), (std::vector<std::uint16_t>{10}));
  EXPECT_EQ(transmitter.txTimerTime(), 0.2);

  transmitter.txTimerWheelIs(nullptr);
  sendVlan(20);
  clock->advance(1.0);
  EXPECT_TRUE(ports.sentTake(kP1).empty());
  EXPECT_EQ(transmitter.txTimerTime(), Quarn::kInfinity);
}

}  // namespace
}  // namespace MrpTest
