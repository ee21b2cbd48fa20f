#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "quarn/Trace.h"
#include "support/EngineScenario.h"
#include "support/FrameBuilder.h"
#include "support/TxSend.h"

namespace MrpTest {
namespace {

using Mrp::MrpApplication;
using Mrp::MrpAttribute;
using Mrp::MsrpListenerAttribute;
using Mrp::MsrpListenerEvent;

const Velo::IntfId kP1("p1"), kP2("p2");

// An MSRP engine with registrations on two ports: on p1 talker 0x10 and
// listener 0x20, on p2 talker 0x10; all committed to the store.
class MrpLibCleanUpTest : public EngineScenario {
 protected:
  MrpLibCleanUpTest() {
    portUp(msrp, "p1");
    portUp(msrp, "p2");
    inject("p1", frame([](FrameBuilder& f) {
             f.message(1).talker(talkerAdvertise(0x10, 0x00), kJoinIn);
             f.message(3).listener(MsrpListenerAttribute(0x20, MsrpListenerEvent::ready), kJoinIn);
           }));
    inject("p2", frame([](FrameBuilder& f) { f.message(1).talker(talkerAdvertise(0x10, 0x00), kJoinIn); }));
    advance(2);
    takeFrames("p1");
    takeFrames("p2");
  }

  template <class Build>
  static Bytes frame(Build build) {
    Quarn::Ptr<Mrp::MrpLib> encoder = Mrp::mrpLibFactory();
    FrameBuilder builder(*encoder, MrpApplication::msrp);
    build(builder);
    return builder.frame(kTestMac);
  }

  // p1's talker and listener leave: the talker by its own Lv, the listener
  // through a LeaveAll of its type; both wait for their leave timers.
  void p1Leaves() {
    inject("p1", frame([](FrameBuilder& f) {
             f.message(1).talker(talkerAdvertise(0x10, 0x00), kLv);
             f.message(3).listener(MsrpListenerAttribute(0, MsrpListenerEvent::ignore), kLeaveAll);
           }));
  }

  std::vector<MrpAttribute> deletePending() const {
    std::vector<MrpAttribute> attributes;
    for (const auto& [attribute, pending] : msrp.sm().attributeStore().deletePendingAttrs()) {
      if (pending) attributes.push_back(attribute);
    }
    return attributes;
  }
  std::size_t leaveMachinesOf(const Velo::IntfId& port) const {
    std::size_t n = 0;
    const Mrp::MrpRegistrarSm& registrar = *msrp.sm().registrarSm();
    for (const auto& [attribute, machine] : registrar.leaveSms()) n += attribute.intfId == port;
    for (const auto& [attribute, machine] : registrar.explicitLeaveSms()) n += attribute.intfId == port;
    return n;
  }

  ScenarioEngine& msrp = engineNew("S", MrpApplication::msrp);
  Mrp::MrpLib& lib = msrp.lib();
};

TEST_F(MrpLibCleanUpTest, PortCleanUpQueuesEachOfItsRegistrationsForDeletionAndCancelsItsLeaves) {
  p1Leaves();
  ASSERT_EQ(leaveMachinesOf(kP1), 2u);
  lib.mrpCleanUpIntfDatabase(kP1);
  EXPECT_EQ(deletePending(), (std::vector<MrpAttribute>{{kP1, 1, 0x10}, {kP1, 3, 0x20}}));
  EXPECT_EQ(leaveMachinesOf(kP1), 0u);
  advance(2);
  EXPECT_TRUE(takeLeaves(msrp).empty()) << "the cancelled leaves never expire";
  EXPECT_FALSE(msrp.attribute("p1", 1, 0x10));
  EXPECT_FALSE(msrp.attribute("p1", 3, 0x20));
  EXPECT_TRUE(msrp.attribute("p2", 1, 0x10)) << "another port keeps its registrations";
}

TEST_F(MrpLibCleanUpTest, AttributeCleanUpQueuesOnlyARegistrationThatIsStored) {
  lib.mrpCleanUpIntfDatabaseAttribute(kP1, 1, 0x99);
  lib.mrpCleanUpIntfDatabaseAttribute(kP1, 2, 0x10);
  lib.mrpCleanUpIntfDatabaseAttribute(Velo::IntfId("p3"), 1, 0x10);
  EXPECT_TRUE(deletePending().empty());
  lib.mrpCleanUpIntfDatabaseAttribute(kP1, 3, 0x20);
  EXPECT_EQ(deletePending(), (std::vector<MrpAttribute>{{kP1, 3, 0x20}}));
}

TEST_F(MrpLibCleanUpTest, CleanUpOnAnEngineInStandbyDoesNothing) {
  p1Leaves();
  msrp.sm().standbyModeIs(true);
  lib.mrpCleanUpIntfDatabase(kP1);
  lib.mrpCleanUpIntfDatabaseAttribute(kP1, 1, 0x10);
  msrp.sm().standbyModeIs(false);
  EXPECT_TRUE(deletePending().empty());
  EXPECT_EQ(leaveMachinesOf(kP1), 2u);
}

TEST_F(MrpLibCleanUpTest, DisablingAPortSendsItsPendingPacketsThenDropsThemCleansUpAndWithdrawsIt) {
  sendIntf(lib, "p1", talkerAdvertise(0x30, 0x00), kJoinIn, false);
  sendIntf(lib, "p1", talkerAdvertise(0x40, 0x00), kJoinIn, true);
  sendIntf(lib, "p2", talkerAdvertise(0x50, 0x00), kJoinIn, false);
  Quarn::CaptureTraceSink traces;
  Quarn::traceLevelsIs("MrpSm/8");
  lib.mrpInterfaceDisable(kP1);
  Quarn::traceLevelsClear();
  ASSERT_FALSE(traces.lines().empty());
  EXPECT_EQ(traces.lines()[0].text.rfind("MrpLib::mrpInterfaceDisable( p1", 0), 0u) << traces.lines()[0].text;

  const auto frames = takeFrames("p1");
  ASSERT_EQ(frames.size(), 2u) << "both packets went out before they were dropped";
  EXPECT_EQ(frames[0].values, (std::vector<SentValue>{{1, 0x30, kJoinIn, talkerAdvertiseOctets(0x30, 0x00)}}));
  EXPECT_EQ(frames[1].values, (std::vector<SentValue>{{1, 0x40, kJoinIn, talkerAdvertiseOctets(0x40, 0x00)}}));
  EXPECT_FALSE(lib.mrpTxPacketContext(kP1));
  EXPECT_FALSE(lib.mrpTxSecondPacketContext(kP1));
  EXPECT_EQ(deletePending(), (std::vector<MrpAttribute>{{kP1, 1, 0x10}, {kP1, 3, 0x20}}));
  EXPECT_FALSE(msrp.sm().desiredIntfDir()->intfDesired(kP1));
  EXPECT_FALSE(msrp.sm().pamCollection()->intfPam(kP1));
  EXPECT_TRUE(takeFrames("p2").empty()) << "another port's packet waits for its own flush";
  EXPECT_TRUE(lib.mrpTxPacketContext(kP2));
}

}  // namespace
}  // namespace MrpTest
