#include "MrpSm/MrpIntfPamSm.h"

#include <gtest/gtest.h>

#include <string>

#include "MrpMvrp/MvrpVlanAttribute.h"
#include "MrpSm/MrpPamSm.h"
#include "quarn/Trace.h"
#include "support/FrameBuilder.h"
#include "support/PamEngineFixture.h"

namespace MrpTest {
namespace {

using Mrp::MrpApplication;

constexpr std::uint16_t kVlanId = 100;
constexpr std::uint8_t kJoinIn = 1;
constexpr std::size_t kProtocolVersionOffset = 14;

// An MVRP engine with port Ethernet1 on an in-memory wire.
class MrpIntfPamSmTest : public PamEngineFixture {
 protected:
  void SetUp() override {
    engine = engineNew(MrpApplication::mvrp, false);
    eth1 = portUp(*engine, "Ethernet1");
  }
  void TearDown() override { Quarn::traceLevelsClear(); }

  // One MVRP message declaring VLAN `vlanId` JoinIn, from the test's end.
  Bytes mvrpFrame(std::uint16_t vlanId = kVlanId) const {
    FrameBuilder builder(*mrpLib, MrpApplication::mvrp);
    builder.message(1).vlan(Mrp::MvrpVlanAttribute(vlanId), kJoinIn);
    return builder.frame(kTestMac);
  }
  const Mrp::MrpCounters& counters() const { return *engine->mrpCounters(); }
  std::uint32_t eventsParsed() const { return engine->parseContext()->eventsCounter(); }
  Mrp::MrpIntfPamSm& portObject() const { return *engine->mrpPamSm()->mrpIntfPamSm(Velo::IntfId("Ethernet1")); }

  Quarn::Ptr<Mrp::MrpSm> engine;
  Quarn::Ptr<Velo::MemPam> eth1;
};

TEST_F(MrpIntfPamSmTest, AnMrpduIsParsedWithoutItsEthernetHeaderAndCounted) {
  inject(*eth1, mvrpFrame());
  EXPECT_EQ(counters().numOfPktsProcessed(), 1u);
  EXPECT_EQ(eventsParsed(), 1u);
  EXPECT_EQ(engine->parseContext()->attributeKey(), kVlanId);
  EXPECT_EQ(engine->parseContext()->intfId(), Velo::IntfId("Ethernet1"));
  EXPECT_EQ(counters().numOfIncorrectDmac(), 0u);
  EXPECT_EQ(counters().numOfIncorrectEtype(), 0u);
  EXPECT_EQ(counters().numOfMalformedPkts(), 0u);
}

TEST_F(MrpIntfPamSmTest, AVlanTaggedMrpduIsParsedAfterTheTagIsRemovedAndTheTraceShowsTheVlanId) {
  Quarn::CaptureTraceSink traces;
  Quarn::traceLevelsIs("MrpSm/0-9");
  // Priority 5, VLAN 7.
  inject(*eth1, vlanTagged(mvrpFrame(), 0xa007));
  EXPECT_TRUE(traces.contains("Received 802.1Q-tagged frame with VLAN ID 7"));
  EXPECT_EQ(eventsParsed(), 1u);
  EXPECT_EQ(engine->parseContext()->attributeKey(), kVlanId);
  EXPECT_EQ(counters().numOfPktsProcessed(), 1u);
  EXPECT_EQ(counters().numOfIncorrectEtype(), 0u);
  EXPECT_EQ(counters().numOfMalformedPkts(), 0u);
}

TEST_F(MrpIntfPamSmTest, TheParserOfATaggedFrameStartsAtTheProtocolVersion) {
  Bytes frame = mvrpFrame();
  frame[kProtocolVersionOffset] = 1;
  inject(*eth1, vlanTagged(frame, 7));
  EXPECT_EQ(counters().numOfIncorrectPduVersion(), 1u);
  EXPECT_EQ(eventsParsed(), 1u);
}

TEST_F(MrpIntfPamSmTest, TheFutureVersionModeEndsWithTheFrame) {
  Bytes frame = mvrpFrame();
  frame[kProtocolVersionOffset] = 2;
  inject(*eth1, frame);
  EXPECT_EQ(counters().numOfIncorrectPduVersion(), 1u);
  EXPECT_FALSE(engine->receivedFrame().futureProtocolVersion());
}

struct DropCase {
  const char* name;
  Bytes (*frame)(const Bytes& mrpdu);
  std::uint64_t incorrectDmac;
  std::uint64_t incorrectEtype;
  const char* trace;
};

const DropCase kDropCases[] = {
    {"WrongEtherType", [](const Bytes& f) { return withEtherType(f, 0x88cc); }, 0, 1,
     "Received frame with incorrect EtherType -- ignoring"},
    {"WrongEtherTypeBehindTheTag", [](const Bytes& f) { return vlanTagged(withEtherType(f, 0x0800), 7); }, 0, 1,
     "Received frame with incorrect EtherType -- ignoring"},
    {"TagWithoutEtherType", [](const Bytes& f) { return vlanTagged(Bytes(f.begin(), f.begin() + 12), 7); }, 0, 1,
     "Received frame with incorrect EtherType -- ignoring"},
    {"WrongDestination",
     [](const Bytes& f) { return withDmac(f, Velo::EthAddr(0x01, 0x80, 0xc2, 0, 0, 0x0e)); }, 1, 0,
     "Received frame with incorrect DMAC -- ignoring"},
};

class MrpIntfPamSmDropTest : public MrpIntfPamSmTest, public ::testing::WithParamInterface<DropCase> {};

// Frames that are not the application's are counted, with numOfPktsProcessed
// as well, and never parsed.
TEST_P(MrpIntfPamSmDropTest, CountsEachCheckOnceWithPktsProcessed) {
  Quarn::CaptureTraceSink traces;
  Quarn::traceLevelsIs("MrpSm/0-9");
  inject(*eth1, GetParam().frame(mvrpFrame()));
  EXPECT_EQ(counters().numOfIncorrectDmac(), GetParam().incorrectDmac);
  EXPECT_EQ(counters().numOfIncorrectEtype(), GetParam().incorrectEtype);
  EXPECT_EQ(counters().numOfPktsProcessed(), 1u);
  EXPECT_EQ(eventsParsed(), 0u);
  EXPECT_TRUE(traces.contains(GetParam().trace));
}

INSTANTIATE_TEST_SUITE_P(Frames, MrpIntfPamSmDropTest, ::testing::ValuesIn(kDropCases),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(MrpIntfPamSmTest, AFrameOfJustTheHeaderReachesTheParserEmpty) {
  const Bytes frame = mvrpFrame();
  inject(*eth1, Bytes(frame.begin(), frame.begin() + 14));
  EXPECT_EQ(counters().numOfPktsProcessed(), 1u);
  EXPECT_EQ(counters().numOfIncorrectEtype(), 0u);
  EXPECT_EQ(eventsParsed(), 0u);
}

TEST_F(MrpIntfPamSmTest, HandlerTracesNameThePortAndTheFrameLength) {
  Quarn::CaptureTraceSink traces;
  Quarn::traceLevelsIs("MrpSm/0-9");
  const Bytes frame = mvrpFrame();
  inject(*eth1, frame);
  EXPECT_TRUE(traces.contains("MrpIntfPamSm::handleMrpdu( Ethernet1 )"));
  EXPECT_TRUE(traces.contains("Received frame on interface Ethernet1 (length=" + std::to_string(frame.size()) + ")"));
}

TEST_F(MrpIntfPamSmTest, OneFrameIsHandledPerNotification) {
  inject(*eth1, mvrpFrame(1));
  eth1->txPkt(*pktOf(mvrpFrame(2)));
  eth1->txPkt(*pktOf(mvrpFrame(3)));
  deliver();
  EXPECT_EQ(counters().numOfPktsProcessed(), 3u);
  EXPECT_EQ(engine->parseContext()->attributeKey(), 3u) << "in order";
  EXPECT_EQ(enginePam("Ethernet1")->readableCount(), 3u);
}

TEST_F(MrpIntfPamSmTest, NothingWaitingIsNothingToDo) {
  portObject().handleMrpdu();
  EXPECT_EQ(counters().numOfPktsProcessed(), 0u);
}

TEST_F(MrpIntfPamSmTest, ThePublishedPortCounterStaysZero) {
  inject(*eth1, mvrpFrame());
  EXPECT_EQ(portObject().rxMrpdus(), 0u);
}

TEST_F(MrpIntfPamSmTest, WithoutFloodingNothingIsSent) {
  Quarn::Ptr<Velo::MemPam> eth2 = portUp(*engine, "Ethernet2");
  inject(*eth1, mvrpFrame());
  EXPECT_TRUE(received(*eth2).empty());
  EXPECT_TRUE(received(*eth1).empty());
}

// An MSRP engine flooding between three ports.
class MrpIntfPamSmFloodTest : public PamEngineFixture {
 protected:
  void SetUp() override {
    records.mrpConfig->mrpFloodingIs(true);
    engine = engineNew(MrpApplication::msrp, false);
    for (const char* name : {"Ethernet1", "Ethernet2", "Ethernet3"}) ports.push_back(portUp(*engine, name));
  }
  void TearDown() override { Quarn::traceLevelsClear(); }

  Bytes msrpFrame() const {
    FrameBuilder builder(*mrpLib, MrpApplication::msrp);
    builder.message(4).domain(Mrp::MsrpDomainAttribute(6, 3, 2), kJoinIn);
    return builder.frame(kTestMac);
  }

  Quarn::Ptr<Mrp::MrpSm> engine;
  std::vector<Quarn::Ptr<Velo::MemPam>> ports;
};

TEST_F(MrpIntfPamSmFloodTest, AnMsrpduGoesOutUnchangedOnEveryOtherPortAndIsStillProcessed) {
  Quarn::CaptureTraceSink traces;
  Quarn::traceLevelsIs("MrpSm/0-9");
  const Bytes frame = msrpFrame();
  inject(*ports[1], frame);
  EXPECT_EQ(received(*ports[0]), std::vector<Bytes>{frame});
  EXPECT_EQ(received(*ports[2]), std::vector<Bytes>{frame});
  EXPECT_TRUE(received(*ports[1]).empty()) << "not back where it came from";
  EXPECT_EQ(engine->mrpCounters()->numOfPktsProcessed(), 1u);
  EXPECT_EQ(engine->parseContext()->eventsCounter(), 1u);
  EXPECT_TRUE(traces.contains("MrpPamSm::floodMsrpdu( Ethernet2 )"));
  EXPECT_TRUE(traces.contains("Msrp Tx on Ethernet1"));
  EXPECT_TRUE(traces.contains("Msrp Tx on Ethernet3"));
  EXPECT_FALSE(traces.contains("Msrp Tx on Ethernet2"));
}

// Deliberately, the copy of a tagged frame is what the tag check left of
// it: the frame without its first 4 bytes.
TEST_F(MrpIntfPamSmFloodTest, ATaggedFrameIsFloodedWithoutItsFirstFourBytes) {
  const Bytes tagged = vlanTagged(msrpFrame(), 7);
  inject(*ports[0], tagged);
  EXPECT_EQ(received(*ports[1]), std::vector<Bytes>{Bytes(tagged.begin() + 4, tagged.end())});
  EXPECT_EQ(engine->parseContext()->eventsCounter(), 1u);
}

TEST_F(MrpIntfPamSmFloodTest, FramesThatFailTheChecksAreNotFlooded) {
  inject(*ports[0], withEtherType(msrpFrame(), 0x0800));
  EXPECT_TRUE(received(*ports[1]).empty());
  EXPECT_EQ(engine->mrpCounters()->numOfIncorrectEtype(), 1u);
}

TEST_F(PamEngineFixture, AStandbyEngineTakesFramesAndDropsThem) {
  auto engine = engineNew(MrpApplication::mvrp, true);
  Quarn::Ptr<Velo::MemPam> eth1 = portUp(*engine, "Ethernet1");
  inject(*eth1, Bytes(60, 0xff));
  EXPECT_EQ(enginePam("Ethernet1")->rxPkts(), 1u);
  EXPECT_EQ(enginePam("Ethernet1")->rxDropped(), 0u);
  EXPECT_FALSE(engine->mrpCounters());
}

// A socket that hands out whatever the test gives it, even a runt.
class ScriptedPam : public Velo::Pam {
 public:
  explicit ScriptedPam(Bytes frame) : Pam(Velo::IntfId("Ethernet1"), Velo::EthAddr()), frame_(std::move(frame)) {}

 private:
  Quarn::Ptr<Velo::Pkt> pktRead() override { return pktOf(frame_); }
  bool mediumHasData() const override { return true; }
  bool pktWrite(const Velo::Pkt&) override { return false; }
  Bytes frame_;
};

using MrpIntfPamSmDeathTest = PamEngineFixture;

TEST_F(MrpIntfPamSmDeathTest, AFrameShorterThanAnEthernetHeaderAborts) {
  auto engine = engineNew(MrpApplication::mvrp, false);
  Quarn::Ptr<Mrp::MrpIntfPamSm> port =
      engine->mrpPamSm()->mrpIntfPamSmIs(Velo::IntfId("Ethernet1"), new ScriptedPam(Bytes(13, 0)), false);
  EXPECT_DEATH(port->handleMrpdu(), "Assertion failed: pkt->bytes\\(\\) >= sizeof\\( Velo::EthHdr \\)");
}

TEST_F(MrpIntfPamSmDeathTest, HandlingAFrameBeforeInitialisationAborts) {
  auto engine = engineNew(MrpApplication::mvrp, false);
  Quarn::Ptr<Mrp::MrpIntfPamSm> port = new Mrp::MrpIntfPamSm(
      Velo::IntfId("Ethernet1"), new ScriptedPam(Bytes(60, 0)), false, engine->mrpPamSm().ptr());
  EXPECT_DEATH(port->handleMrpdu(), "Assertion failed: initialized\\(\\)");
}

TEST_F(MrpIntfPamSmDeathTest, ASecondInitialisationAborts) {
  auto engine = engineNew(MrpApplication::mvrp, false);
  portUp(*engine, "Ethernet1");
  auto port = engine->mrpPamSm()->mrpIntfPamSm(Velo::IntfId("Ethernet1"));
  EXPECT_DEATH(port->handleInitialized(), "Assertion failed: !initialized\\(\\)");
}

}  // namespace
}  // namespace MrpTest
