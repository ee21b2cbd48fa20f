#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "MrpSm/MrpVectorEncoder.h"
#include "lumen/TraceRing.h"
#include "quarn/Trace.h"
#include "support/EngineScenario.h"
#include "support/TxSend.h"
#include "velo/PktManager.h"

namespace MrpTest {
namespace {

using Mrp::MrpApplication;
using Mrp::MvrpVlanAttribute;

const Velo::IntfId kP1("p1"), kP9("p9");

// A packet manager that refuses every buffer, installed for its lifetime.
class RefusingPktManager : public Velo::PktManager {
 public:
  Quarn::Ptr<Velo::Pkt> pktNew(std::size_t) override {
    ++refused;
    return nullptr;
  }
  int refused = 0;
};

class RefusedPackets {
 public:
  RefusedPackets() : manager_(new RefusingPktManager) { Velo::pktManagerIs(manager_); }
  ~RefusedPackets() { Velo::pktManagerIs(nullptr); }
  RefusedPackets(const RefusedPackets&) = delete;
  RefusedPackets& operator=(const RefusedPackets&) = delete;
  int refused() const { return manager_->refused; }

 private:
  Quarn::Ptr<RefusingPktManager> manager_;
};

// Trace lines of the engine at `levels` while it exists.
class EngineTraces : public Quarn::CaptureTraceSink {
 public:
  explicit EngineTraces(const std::string& levels) { Quarn::traceLevelsIs("MrpSm/" + levels); }
  ~EngineTraces() override { Quarn::traceLevelsClear(); }
};

// An MSRP engine on p1 and a VLAN engine on v1, both facing the test.
class MrpTransmitFailureTest : public EngineScenario {
 protected:
  MrpTransmitFailureTest() {
    portUp(msrp, "p1");
    portUp(mvrp, "v1");
    Lumen::fastTrace().clear();
  }

  // The octets the port's first packet holds so far.
  Bytes firstPacketOctets(const Velo::IntfId& port) const {
    const Mrp::MrpTxPacketContext& ctx = *lib.mrpTxPacketContext(port);
    const auto octets = ctx.octets(0, Mrp::mrpGetNumOfPackedBytes(ctx, 1));
    return Bytes(octets.begin(), octets.end());
  }
  std::vector<SentFrame> flush(const std::string& port = "p1") {
    msrp.sm().mrpTransmitTxAttributes(Velo::IntfId(port));
    return takeFrames(port);
  }

  ScenarioEngine& msrp = engineNew("S", MrpApplication::msrp);
  ScenarioEngine& mvrp = engineNew("V", MrpApplication::mvrp);
  Mrp::MrpLib& lib = msrp.lib();
};

TEST_F(MrpTransmitFailureTest, SendingOnAPortWithoutPacketAccessIsTracedAndKeepsNothing) {
  for (const bool second : {false, true}) {
    EngineTraces traces("4");
    sendIntf(lib, "p9", talkerAdvertise(0x10, 0x00), kJoinIn, second);
    EXPECT_TRUE(traces.contains(" Tx is being Attempted before the PAM is enabled "));
  }
  EXPECT_FALSE(lib.mrpTxPacketContext(kP9));
  EXPECT_FALSE(lib.mrpTxSecondPacketContext(kP9));
}

TEST_F(MrpTransmitFailureTest, RefusedPacketIsTracedAndFastTracedAndMakesNoContext) {
  const RefusedPackets refusing;
  for (const bool second : {false, true}) {
    SCOPED_TRACE(second ? "second packet" : "first packet");
    Lumen::fastTrace().clear();
    EngineTraces traces("4");
    sendIntf(lib, "p1", talkerAdvertise(0x10, 0x00), kJoinIn, second);
    const Mrp::MrpParameters parameters{kP1, 1, kJoinIn};
    std::ostringstream text;
    text << "Packet allocation failed for " << parameters;
    EXPECT_TRUE(traces.contains(text.str()));
    ASSERT_EQ(Lumen::fastTrace().size(), 1u);
    const Lumen::TraceRing::Record& record = Lumen::fastTrace().last();
    EXPECT_EQ(std::string(record.event).rfind("MrpSm", 0), 0u) << record.event;
    EXPECT_EQ(record.arg0, 1) << "the attribute type";
    EXPECT_EQ(record.arg1, kJoinIn) << "the attribute event";
  }
  EXPECT_EQ(refusing.refused(), 2);
  EXPECT_FALSE(lib.mrpTxPacketContext(kP1));
  EXPECT_FALSE(lib.mrpTxSecondPacketContext(kP1));
  EXPECT_TRUE(flush().empty());
}

TEST_F(MrpTransmitFailureTest, RefusedPacketFastTraceNamesThePort) {
  const RefusedPackets refusing;
  sendIntf(lib, "p1", talkerAdvertise(0x10, 0x00), kJoinIn);
  ASSERT_EQ(Lumen::fastTrace().size(), 1u);
  ASSERT_NE(Lumen::fastTrace().last().subject, nullptr);
  EXPECT_STREQ(Lumen::fastTrace().last().subject, "p1");
}

TEST_F(MrpTransmitFailureTest, OpenPacketTakesMoreAttributesWhileBuffersAreRefused) {
  sendIntf(lib, "p1", talkerAdvertise(0x10, 0x00), kJoinIn);
  {
    const RefusedPackets refusing;
    sendIntf(lib, "p1", talkerAdvertise(0x11, 0x01), kJoinIn);
    EXPECT_EQ(refusing.refused(), 0) << "a packet is allocated once";
  }
  const auto frames = flush();
  ASSERT_EQ(frames.size(), 1u);
  EXPECT_EQ(frames[0].values.size(), 2u);
}

TEST_F(MrpTransmitFailureTest, DeclarationWhosePacketsAreRefusedSendsNothing) {
  {
    const RefusedPackets refusing;
    declare(msrp, "p1", talkerAdvertise(0x10, 0x00), kNew);
    EXPECT_EQ(refusing.refused(), 2) << "one try for each packet";
  }
  EXPECT_TRUE(lib.mrpTxPacketContexts().empty());
  EXPECT_TRUE(lib.mrpTxSecondPacketContexts().empty());
  advance(0.1);
  EXPECT_TRUE(takeFrames("p1").empty());
}

TEST_F(MrpTransmitFailureTest, UnknownApplicationIsTracedAndSendsNothing) {
  lib.applicationIs(static_cast<MrpApplication>(7));
  {
    EngineTraces traces("8");
    sendIntf(lib, "p1", talkerAdvertise(0x10, 0x00), kJoinIn);
    EXPECT_TRUE(traces.contains(" Not supported Application:  7"));
  }
  lib.applicationIs(MrpApplication::msrp);
  EXPECT_EQ(Lumen::fastTrace().size(), 1u);
  EXPECT_FALSE(lib.mrpTxPacketContext(kP1)) << "a packet nothing went into is not kept";
  EXPECT_TRUE(flush().empty());
}

TEST_F(MrpTransmitFailureTest, UnknownApplicationLeavesAnOpenPacketAsItWas) {
  sendIntf(lib, "p1", talkerAdvertise(0x10, 0x00), kJoinIn);
  const Quarn::Ptr<Mrp::MrpTxPacketContext> open = lib.mrpTxPacketContext(kP1);
  const Bytes before = firstPacketOctets(kP1);
  lib.applicationIs(static_cast<MrpApplication>(7));
  sendIntf(lib, "p1", talkerAdvertise(0x30, 0x00), kJoinIn);
  lib.applicationIs(MrpApplication::msrp);
  EXPECT_EQ(lib.mrpTxPacketContext(kP1), open);
  EXPECT_EQ(firstPacketOctets(kP1), before);
  const auto frames = flush();
  ASSERT_EQ(frames.size(), 1u);
  EXPECT_EQ(frames[0].values, (std::vector<SentValue>{{1, 0x10, kJoinIn, talkerAdvertiseOctets(0x10, 0x00)}}));
}

// An attribute type the application does not have, and the trace it gives.
struct UnknownTypeCase {
  MrpApplication application;
  std::uint8_t type;
  std::string trace;
};

class MrpTransmitUnknownTypeTest : public MrpTransmitFailureTest,
                                   public ::testing::WithParamInterface<UnknownTypeCase> {};

TEST_P(MrpTransmitUnknownTypeTest, IsTracedAndSendsNothing) {
  const UnknownTypeCase& c = GetParam();
  ScenarioEngine& engine = c.application == MrpApplication::msrp ? msrp : mvrp;
  const std::string port = c.application == MrpApplication::msrp ? "p1" : "v1";
  {
    EngineTraces traces("8");
    engine.lib().mrpSendAttributeIntf({Velo::IntfId(port), c.type, kJoinIn}, Velo::IntfId(port), false);
    EXPECT_TRUE(traces.contains(c.trace + port));
  }
  EXPECT_FALSE(engine.lib().mrpTxPacketContext(Velo::IntfId(port)));
  engine.sm().mrpTransmitTxAttributes(Velo::IntfId(port));
  EXPECT_TRUE(takeFrames(port).empty());
}

INSTANTIATE_TEST_SUITE_P(
    Types, MrpTransmitUnknownTypeTest,
    ::testing::Values(UnknownTypeCase{MrpApplication::msrp, 0, " Invalid Attribute type in mrpSendAttributeIntf for "},
                      UnknownTypeCase{MrpApplication::msrp, 5, " Invalid Attribute type in mrpSendAttributeIntf for "},
                      UnknownTypeCase{MrpApplication::msrp, 255,
                                      " Invalid Attribute type in mrpSendAttributeIntf for "},
                      UnknownTypeCase{MrpApplication::mvrp, 0,
                                      " Invalid Attribute type in mrpSendMvrpAttributeIntf for "},
                      UnknownTypeCase{MrpApplication::mvrp, 2,
                                      " Invalid Attribute type in mrpSendMvrpAttributeIntf for "}));

TEST_F(MrpTransmitFailureTest, UnknownAttributeTypeLeavesAnOpenPacketAsItWas) {
  sendIntf(lib, "p1", talkerAdvertise(0x10, 0x00), kJoinIn);
  const Quarn::Ptr<Mrp::MrpTxPacketContext> open = lib.mrpTxPacketContext(kP1);
  const Bytes before = firstPacketOctets(kP1);
  lib.mrpSendAttributeIntf({kP1, 5, kJoinIn}, kP1, false);
  EXPECT_EQ(lib.mrpTxPacketContext(kP1), open);
  EXPECT_EQ(firstPacketOctets(kP1), before);
  EXPECT_TRUE(takeFrames("p1").empty());
  const auto frames = flush();
  ASSERT_EQ(frames.size(), 1u);
  EXPECT_EQ(frames[0].values, (std::vector<SentValue>{{1, 0x10, kJoinIn, talkerAdvertiseOctets(0x10, 0x00)}}));
}

TEST_F(MrpTransmitFailureTest, FullOutputQueueRefusesAnotherPortAndTheQueuedOneIsStillServed) {
  lib.mrpOutIntfQueueIs(std::numeric_limits<std::uint32_t>::max(), kP1);
  try {
    lib.mrpOutIntfQueueEnq(Velo::IntfId("p2"));
    FAIL() << "no index is left";
  } catch (const std::range_error& error) {
    EXPECT_STREQ(error.what(), "linkqueue index space full");
  }
  lib.msrpTalkerAdvertiseTx() = talkerAdvertise(0x10, 0x00);
  lib.mrpSendAttribute({kP1, 1, kJoinIn});
  EXPECT_TRUE(lib.mrpOutIntfQueue().empty());
  const auto frames = flush();
  ASSERT_EQ(frames.size(), 2u);
  EXPECT_EQ(frames[0].values, (std::vector<SentValue>{{1, 0x10, kJoinMt, talkerAdvertiseOctets(0x10, 0x00)}}));
}

}  // namespace
}  // namespace MrpTest
