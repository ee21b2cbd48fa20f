// The engine's packet access on real Linux packet sockets: veth pairs in a
// network namespace of the test's own, driven by the real event loop.

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "MrpMvrp/MvrpVlanAttribute.h"
#include "MrpSm/MrpPamSm.h"
#include "MrpSm/MrpSm.h"
#include "quarn/EventLoop.h"
#include "quarn/Trace.h"
#include "support/FrameBuilder.h"
#include "support/MrpSmPamPeer.h"
#include "support/NetNamespace.h"
#include "support/PamEngineFixture.h"
#include "support/RawSocket.h"
#include "velo/PacketSocketPam.h"
#include "velo/PamFactoryScope.h"

namespace MrpTest {
namespace {

using Mrp::MrpApplication;

constexpr std::uint16_t kVlanId = 100;
constexpr std::size_t kProtocolVersionOffset = 14;

// An MVRP engine on ports e1, e2 and e3; the test sends and watches on their
// veth peers p1, p2 and p3.
class MrpPamNamespaceTest : public EngineFixture {
 protected:
  void SetUp() override {
    MRP_REQUIRE_NET_NAMESPACE(ns);
    for (const char* n : {"1", "2", "3"}) {
      ASSERT_TRUE(ns.vethAdd(std::string("e") + n, std::string("p") + n)) << ns.error();
      peers.push_back(std::make_unique<RawSocket>(std::string("p") + n));
    }
    Mrp::MrpSmPamPeer::pamFilterProgramClear();
    pamFactoryScope.emplace(new Velo::PacketSocketPamFactory(loop));
  }
  void TearDown() override {
    engine = nullptr;
    pamFactoryScope.reset();
    Velo::pamMaxRxPktDataIs(Velo::kDefaultMaxRxPktData);
    Quarn::traceLevelsClear();
  }

  void engineUp() {
    engine = engineNew(MrpApplication::mvrp, false);
    for (const char* port : {"e1", "e2", "e3"}) {
      mrpLib->mrpInterfaceEnable(Velo::IntfId(port));
      ASSERT_TRUE(engine->pamCollection()->intfPam(Velo::IntfId(port)))
          << engine->deviceIntfStatusDir()->deviceIntfStatus(Velo::IntfId(port))->pamError();
    }
  }

  Bytes mvrpFrame() const {
    FrameBuilder builder(*mrpLib, MrpApplication::mvrp);
    builder.message(1).vlan(Mrp::MvrpVlanAttribute(kVlanId), 1);
    return builder.frame(peers[0]->ethAddr());
  }
  const Mrp::MrpCounters& counters() const { return *engine->mrpCounters(); }
  const Velo::Pam& pam(const char* port) const { return *engine->pamCollection()->intfPam(Velo::IntfId(port)); }

  // Runs the loop, each wait bounded, until `done` or about five seconds.
  bool runUntil(const std::function<bool()>& done) {
    for (int i = 0; i < 100 && !done(); ++i) loop->runOnce(0.05);
    return done();
  }
  // Dispatches whatever is ready now, without waiting.
  void runReady() {
    while (loop->runOnce(0)) {
    }
  }

  NetNamespace ns;
  Quarn::Ptr<Quarn::EventLoop> loop = Quarn::EventLoop::realLoopNew();
  std::vector<std::unique_ptr<RawSocket>> peers;
  std::optional<Velo::PamFactoryScope> pamFactoryScope;
  Quarn::Ptr<Mrp::MrpSm> engine;
};

TEST_F(MrpPamNamespaceTest, AnMrpduFromTheWireIsReceivedAndParsed) {
  engineUp();
  ASSERT_TRUE(peers[0]->send(mvrpFrame()));
  ASSERT_TRUE(runUntil([&] { return counters().numOfPktsProcessed() == 1; }));
  EXPECT_EQ(engine->parseContext()->eventsCounter(), 1u);
  EXPECT_EQ(engine->parseContext()->attributeKey(), kVlanId);
  EXPECT_EQ(engine->parseContext()->intfId(), Velo::IntfId("e1"));
  EXPECT_EQ(counters().numOfIncorrectDmac() + counters().numOfIncorrectEtype(), 0u);
}

TEST_F(MrpPamNamespaceTest, AVlanTaggedMrpduFromTheWireIsReceivedAndParsed) {
  engineUp();
  Quarn::CaptureTraceSink traces;
  Quarn::traceLevelsIs("MrpSm/7");
  // Version 1: only a parser that starts right behind the tagged header counts it.
  Bytes frame = mvrpFrame();
  frame[kProtocolVersionOffset] = 1;
  ASSERT_TRUE(peers[1]->send(vlanTagged(frame, 0x2007)));
  ASSERT_TRUE(runUntil([&] { return counters().numOfPktsProcessed() == 1; }));
  EXPECT_TRUE(traces.contains("Received 802.1Q-tagged frame with VLAN ID 7"));
  EXPECT_EQ(counters().numOfIncorrectPduVersion(), 1u);
  EXPECT_EQ(engine->parseContext()->eventsCounter(), 1u);
  EXPECT_EQ(engine->parseContext()->attributeKey(), kVlanId);
}

TEST_F(MrpPamNamespaceTest, TheKernelFilterKeepsOtherAddressesAndEtherTypesOutOfUserSpace) {
  engineUp();
  RawSocket wire("e1");  // unfiltered: sees what the engine's socket does not
  const Bytes good = mvrpFrame();
  const Bytes notIp = withEtherType(good, 0x0800);
  // Each frame as sent, and as a socket on e1 sees it (without the tag the
  // kernel takes out).
  const std::vector<std::pair<Bytes, Bytes>> others = {
      {withDmac(good, Velo::EthAddr(0x01, 0x80, 0xc2, 0x00, 0x00, 0x0e)), {}},
      {withDmac(good, Velo::EthAddr(0x01, 0x80, 0xc2, 0x00, 0x00, 0x20)), {}},
      {withEtherType(good, 0x22ea), {}},
      {vlanTagged(notIp, 7), notIp},
  };
  for (const auto& [sent, seen] : others) ASSERT_TRUE(peers[0]->send(sent));
  // Frames on one wire arrive in order: once this one is handled, the
  // others have had their chance.
  ASSERT_TRUE(peers[0]->send(good));
  ASSERT_TRUE(runUntil([&] { return counters().numOfPktsProcessed() == 1; }));
  runReady();
  EXPECT_EQ(counters().numOfPktsProcessed(), 1u);
  EXPECT_EQ(counters().numOfIncorrectDmac(), 0u);
  EXPECT_EQ(counters().numOfIncorrectEtype(), 0u);
  EXPECT_EQ(pam("e1").rxPkts(), 1u);
  EXPECT_EQ(pam("e1").rxDropped(), 0u);

  // They were on the wire all the same.
  for (const auto& [sent, seen] : others) {
    const Bytes& onWire = seen.empty() ? sent : seen;
    EXPECT_TRUE(wire.seen([&](const Bytes& f) { return f == onWire; }, 2));
  }
}

TEST_F(MrpPamNamespaceTest, WithFloodingAFrameComesOutUnchangedOnTheOtherPorts) {
  records.mrpConfig->mrpFloodingIs(true);
  engineUp();
  const Bytes frame = mvrpFrame();
  ASSERT_TRUE(peers[0]->send(frame));
  ASSERT_TRUE(runUntil([&] { return counters().numOfPktsProcessed() == 1; }));
  EXPECT_TRUE(peers[1]->seen([&](const Bytes& f) { return f == frame; }, 2));
  EXPECT_TRUE(peers[2]->seen([&](const Bytes& f) { return f == frame; }, 2));
  runReady();
  EXPECT_EQ(counters().numOfPktsProcessed(), 1u) << "the flooded copies are not received again";
  EXPECT_EQ(pam("e2").txPkts(), 1u);
  EXPECT_EQ(pam("e3").txPkts(), 1u);
  EXPECT_EQ(pam("e1").txPkts(), 0u);
  EXPECT_EQ(engine->parseContext()->eventsCounter(), 1u) << "processed locally too";
}

TEST_F(MrpPamNamespaceTest, AnInterfaceDeletedUnderItsSocketClosesThePortAndTheEngineRunsOn) {
  engineUp();
  Quarn::CaptureTraceSink traces;
  Quarn::traceLevelsIs("MrpSm/8");
  ASSERT_TRUE(ns.ip("link del e1")) << ns.error();
  ASSERT_TRUE(runUntil([&] { return !engine->mrpPamSm()->mrpIntfPamSmHas(Velo::IntfId("e1")); }));
  EXPECT_EQ(engine->pamCollection()->intfPam(Velo::IntfId("e1")), nullptr);
  EXPECT_TRUE(traces.contains("void Mrp::MrpIntfPamSm::doClose()"));
  EXPECT_EQ(engine->deviceIntfStatusDir()->deviceIntfStatus(Velo::IntfId("e1"))->pamError(), "interface gone");

  ASSERT_TRUE(peers[1]->send(mvrpFrame()));
  ASSERT_TRUE(runUntil([&] { return counters().numOfPktsProcessed() == 1; }));
  EXPECT_EQ(engine->parseContext()->intfId(), Velo::IntfId("e2"));
}

}  // namespace
}  // namespace MrpTest
