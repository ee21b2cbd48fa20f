// `mrp agent` on real Linux ports: agents in network namespaces of the
// test's own, joined by veth pairs, in real time. Each wait polls `mrp ctl`
// up to the deadline the behaviour promises.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <memory>
#include <string>
#include <vector>

#include "CaptureReader.h"
#include "support/AgentProcess.h"
#include "support/NetNamespace.h"
#include "support/RawSocket.h"
#include "support/TempDir.h"
#include "support/Tshark.h"

namespace MrpTest {
namespace {

constexpr double kLeaveTime = 0.2;
constexpr double kLeaveAllTime = 1.0;
// Short periods keep the waits short.
const std::string kFastConfig = R"({"leaveTime": 0.2, "leaveAllTime": 1.0})";
// A LeaveAll period no wait here reaches: what leaves, leaves by its Lv.
const std::string kNoLeaveAllConfig = R"({"leaveTime": 0.2, "leaveAllTime": 30.0})";
const std::string kVlan10 = R"({"app": "mvrp", "vlan": 10})";

// Agent A on a0 in one namespace, agent B on b0 in another; a0 - b0 is a
// veth pair.
class AgentNamespaceTest : public ::testing::Test {
 protected:
  void SetUp() override {
    MRP_REQUIRE_NET_NAMESPACE(nsA);
    MRP_REQUIRE_NET_NAMESPACE(nsB);
    ASSERT_TRUE(nsA.ip("link add a0 type veth peer name b0 netns " + nsB.name())) << nsA.error();
    ASSERT_TRUE(nsA.ip("link set a0 up") && nsB.ip("link set b0 up")) << nsA.error() << nsB.error();
  }

  std::unique_ptr<AgentProcess> agentIn(const NetNamespace& ns, const std::vector<std::string>& ports,
                                        const std::string& config = kFastConfig) {
    auto agent = std::make_unique<AgentProcess>(ports, "mvrp", config, ns.name());
    EXPECT_TRUE(agent->ready()) << agent->process().err();
    return agent;
  }
  // A and B on a0 and b0, both ports up.
  void agentsUp(const std::string& config = kFastConfig) {
    a = agentIn(nsA, {"a0"}, config);
    b = agentIn(nsB, {"b0"}, config);
    ASSERT_TRUE(a->portsUp({"a0"}) && b->portsUp({"b0"}));
  }
  void declareOn(const AgentProcess& agent, const std::string& attribute, const char* command = "declare") {
    const MrpRun run = agent.ctl({command, attribute});
    ASSERT_EQ(run.status, 0) << run.err;
  }

  NetNamespace nsA;
  NetNamespace nsB;
  std::unique_ptr<AgentProcess> a;
  std::unique_ptr<AgentProcess> b;
};

// A tshark capture on one interface of a namespace, running until stop().
class Capture {
 public:
  Capture(const NetNamespace& ns, const std::string& interface)
      : tshark_({"ip", "netns", "exec", ns.name(), "tshark", "-n", "-i", interface, "-w", dir_.file("capture.pcapng")}) {}

  bool started() {
    return secondsUntil(10, [this] { return tshark_.err().find("Capturing on") != std::string::npos; }).has_value();
  }
  std::vector<std::vector<std::uint8_t>> stop() {
    tshark_.signal(SIGINT);
    EXPECT_EQ(tshark_.exitStatus(10), 0) << tshark_.err();
    MrpCli::CaptureReader reader(dir_.file("capture.pcapng"));
    EXPECT_TRUE(reader.ok()) << reader.error();
    std::vector<std::vector<std::uint8_t>> frames;
    while (auto frame = reader.next()) frames.push_back(frame->bytes);
    return frames;
  }

 private:
  TempDir dir_;
  ChildProcess tshark_;
};

TEST_F(AgentNamespaceTest, AVlanDeclaredOnARegistersOnBWithinASecondAndLeavesWithinTheLeaveTime) {
  requireTshark();
  Capture capture(nsB, "b0");
  ASSERT_TRUE(capture.started());
  agentsUp();

  ChildProcess ctl({MRP_PROGRAM, "ctl", "--control", a->controlPath(), "declare", kVlan10});
  ASSERT_EQ(ctl.exitStatus(5), 0) << ctl.err();
  EXPECT_EQ(ctl.out(), "declared VLAN 10 on every port\n");
  EXPECT_TRUE(secondsUntil(1, [&] { return b->registers("b0 mvrp 10 IN"); })) << b->process().out();

  declareOn(*a, kVlan10, "withdraw");
  EXPECT_TRUE(secondsUntil(kLeaveTime + 1, [&] { return b->registrations().empty(); })) << b->process().out();
  EXPECT_THAT(b->process().out(), ::testing::HasSubstr("b0    mvrp  join VLAN 10"));
  EXPECT_THAT(b->process().out(), ::testing::HasSubstr("b0    mvrp  leave VLAN 10"));

  const auto frames = capture.stop();
  ASSERT_GE(frames.size(), 2u) << "a declaration and its withdrawal at least";
  const auto dissected = tsharkDissect(frames);
  std::size_t mvrp = 0;
  for (std::size_t i = 0; i < dissected.size(); ++i) {
    for (const DissectedField& field : dissected[i]) {
      EXPECT_NE(field.name, "_ws.malformed") << "frame " << i;
      if (field.name == "mrp-mvrp") ++mvrp;
    }
  }
  EXPECT_GE(mvrp, 2u);
}

TEST_F(AgentNamespaceTest, WhenAIsKilledBForgetsWhatItHeardWithinTheLeaveAllBound) {
  agentsUp();
  declareOn(*a, kVlan10);
  ASSERT_TRUE(secondsUntil(1, [&] { return b->registers("b0 mvrp 10 IN"); }));
  a->process().signal(SIGKILL);
  EXPECT_TRUE(secondsUntil(1.5 * kLeaveAllTime + kLeaveTime + 1, [&] { return b->registrations().empty(); }))
      << b->process().out();
}

TEST_F(AgentNamespaceTest, SigtermMakesAWithdrawBeforeItExits) {
  agentsUp(kNoLeaveAllConfig);
  declareOn(*a, kVlan10);
  ASSERT_TRUE(secondsUntil(1, [&] { return b->registers("b0 mvrp 10 IN"); }));
  a->process().signal(SIGTERM);
  EXPECT_TRUE(secondsUntil(kLeaveTime + 1, [&] { return b->registrations().empty(); })) << b->process().out();
  EXPECT_EQ(a->process().exitStatus(5), 0) << a->process().err();
}

// An untagged port receiving tagged MRPDUs: the tag is accepted and taken
// off before the MRPDU is read. The test sends them from the veth's far end.
TEST_F(AgentNamespaceTest, TaggedMrpdusReachingAnUntaggedPortAreAccepted) {
  ASSERT_TRUE(nsB.vethAdd("t0", "u0")) << nsB.error();
  b = agentIn(nsB, {"t0"});
  ASSERT_TRUE(b->portsUp({"t0"}));
  ASSERT_EQ(b->ctl({"trace", "MrpSm/7"}).status, 0);
  const RawSocket farEnd("u0");  // this thread is in B's namespace, made last
  // To the MVRP address, VLAN tag 100, then an MVRP PDU: VLAN 10, JoinIn.
  const RawSocket::Bytes frame = {0x01, 0x80, 0xc2, 0x00, 0x00, 0x21, 0x02, 0x00, 0x00, 0x00, 0x00, 0x01,
                                  0x81, 0x00, 0x00, 0x64, 0x88, 0xf5, 0x00, 0x01, 0x02, 0x00, 0x01, 0x00,
                                  0x0a, 0x24, 0x00, 0x00, 0x00, 0x00};
  ASSERT_TRUE(farEnd.send(frame));
  EXPECT_TRUE(secondsUntil(1, [&] { return b->registers("t0 mvrp 10 IN"); })) << b->process().err();
  EXPECT_THAT(b->process().err(), ::testing::HasSubstr("MrpSm/7 Received 802.1Q-tagged frame with VLAN ID 100\n"));
  EXPECT_THAT(b->ctl({"counters"}).out, ::testing::HasSubstr("mvrp  numOfIncorrectEtype        0\n"));
}

// B has a second port, b9, towards an end station H in a third namespace;
// b9 comes into being, goes down, comes back and is deleted while B runs.
TEST_F(AgentNamespaceTest, APortThatComesGoesAndReturnsIsOpenedClosedAndCleanedUp) {
  NetNamespace nsH;
  MRP_REQUIRE_NET_NAMESPACE(nsH);
  a = agentIn(nsA, {"a0"});
  b = agentIn(nsB, {"b0", "b9"});
  const auto h = agentIn(nsH, {"h0"});
  EXPECT_THAT(b->ctl({"ports"}).out, ::testing::HasSubstr("b9    absent  closed\n"));
  declareOn(*h, R"({"port": "h0", "app": "mvrp", "vlan": 30})");

  ASSERT_TRUE(nsB.ip("link add b9 type veth peer name h0 netns " + nsH.name()));
  ASSERT_TRUE(nsB.ip("link set b9 up") && nsH.ip("link set h0 up"));
  EXPECT_TRUE(secondsUntil(3, [&] { return a->registers("a0 mvrp 30 IN"); })) << b->process().out();
  EXPECT_TRUE(b->registers("b9 mvrp 30 IN"));
  EXPECT_THAT(b->ctl({"ports"}).out, ::testing::HasSubstr("b9    up     open\n"));

  ASSERT_TRUE(nsB.ip("link set b9 down"));
  EXPECT_TRUE(secondsUntil(kLeaveTime + 1.5, [&] { return !a->registers("a0 mvrp 30 IN"); }));
  EXPECT_FALSE(b->registers("b9 mvrp 30 IN"));
  EXPECT_THAT(b->process().out(), ::testing::HasSubstr("b9          port down"));

  ASSERT_TRUE(nsB.ip("link set b9 up"));
  EXPECT_TRUE(secondsUntil(3, [&] { return a->registers("a0 mvrp 30 IN"); })) << h->process().out();

  ASSERT_TRUE(nsB.ip("link del b9"));
  EXPECT_TRUE(secondsUntil(kLeaveTime + 1.5, [&] { return !a->registers("a0 mvrp 30 IN"); }));
  EXPECT_THAT(b->process().out(), ::testing::HasSubstr("b9          port absent"));
  EXPECT_THAT(b->ctl({"ports"}).out, ::testing::HasSubstr("b9    absent  closed\n"));
  for (AgentProcess* agent : {a.get(), b.get(), h.get()}) {
    EXPECT_TRUE(agent->process().running()) << agent->process().err();
  }
}

}  // namespace
}  // namespace MrpTest
