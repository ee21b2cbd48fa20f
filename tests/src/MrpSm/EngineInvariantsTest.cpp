// The invariant checker that the receive path's fuzz target and mutation
// test rely on: a live engine keeps every invariant, and each kind of damage
// to its data structures is reported.

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "MrpSm/MrpSm.h"
#include "support/EngineInvariants.h"
#include "support/ReceivePathRig.h"

namespace MrpTest {
namespace {

using Mrp::MrpAttribute;
using Rig = ReceivePathRig;

// VLAN 5 is registered on the MVRP engine's first port by the rig.
const MrpAttribute kStored{Velo::IntfId("v1"), 1, 5};
const MrpAttribute kUnknown{Velo::IntfId("v1"), 1, 999};

bool mentions(const std::vector<std::string>& broken, const std::string& text) {
  for (const std::string& line : broken) {
    if (line.rfind(text, 0) == 0) return true;
  }
  return false;
}

// A timer on the engine's wheel that no machine of the engine owns.
class StrayTimer : public Brisk::TimerWheel::Notifiee {
 public:
  using Notifiee::Notifiee;
  void onTime() override {}
};

// The damage table reaches into the fixture, so its members are public.
class EngineInvariantsTest : public ::testing::Test {
 public:
  Mrp::MrpSm& sm() { return *rig.mvrp().sm; }
  Quarn::Ptr<Mrp::MrpAttrDatabase> stored() {
    return sm().mrpGetAttrFromDatabase(kStored.intfId, kStored.attributeType, kStored.attributeKey, false);
  }

  Rig rig;
  // Goes before the rig's engines and their wheel.
  std::unique_ptr<StrayTimer> stray;
};

TEST_F(EngineInvariantsTest, ALiveEngineKeepsThemAll) {
  EngineInvariants invariants(sm());
  EXPECT_EQ(invariants.violations(), std::vector<std::string>{});
  ASSERT_TRUE(stored()) << "the rig registers VLAN 5 on v1";
  rig.advance(30);
  EXPECT_EQ(invariants.violations(), std::vector<std::string>{});
}

struct Damage {
  const char* name;
  std::function<void(EngineInvariantsTest&)> inflict;
  const char* reported;
};

class EngineInvariantsDamageTest : public EngineInvariantsTest, public ::testing::WithParamInterface<Damage> {};

TEST_P(EngineInvariantsDamageTest, IsReported) {
  EngineInvariants invariants(sm());
  ASSERT_EQ(invariants.violations(), std::vector<std::string>{});
  GetParam().inflict(*this);
  const std::vector<std::string> broken = invariants.violations();
  EXPECT_TRUE(mentions(broken, GetParam().reported)) << ::testing::PrintToString(broken);
}

const Damage kDamages[] = {
    {"IndexKeyNeitherStoredNorPending",
     [](EngineInvariantsTest& t) { t.sm().addToAttrIter(kUnknown.intfId, 1, kUnknown.attributeKey); },
     "index holds an attribute neither stored nor pending addition"},
    {"StoredKeyMissingFromIndex",
     [](EngineInvariantsTest& t) { t.sm().removeFromAttrIter(kStored.intfId, 1, kStored.attributeKey); },
     "stored attribute missing from the index"},
    {"PendingAdditionMissingFromIndex",
     [](EngineInvariantsTest& t) {
       t.sm().attributeStore().addPendingAttrIs(kUnknown, new Mrp::MrpAttrDatabase(kUnknown.attributeKey));
     },
     "pending addition missing from the index"},
    {"AdditionWithoutReview",
     [](EngineInvariantsTest& t) {
       t.sm().attributeStore().addPendingAttrIs(kUnknown, new Mrp::MrpAttrDatabase(kUnknown.attributeKey));
     },
     "additions pending with no review scheduled"},
    {"PendingBothWays",
     [](EngineInvariantsTest& t) {
       t.sm().addAttrToDeletePending(kStored);
       t.sm().attributeStore().addPendingAttrIs(kStored, new Mrp::MrpAttrDatabase(kStored.attributeKey));
     },
     "attribute pending both addition and deletion"},
    {"DeletionOfAnAttributeNotStored", [](EngineInvariantsTest& t) { t.sm().attributeStore().deletePendingAttrIs(kUnknown, true); },
     "deletion pending for an attribute not stored"},
    {"EntryValueOfAnotherKey", [](EngineInvariantsTest& t) { t.stored()->attributeValueIs(Mrp::ValueIndex(1), 6); },
     "entry whose value has another key"},
    {"RegistrarStateOutOfRange",
     [](EngineInvariantsTest& t) { t.stored()->registrarStateIs(static_cast<Mrp::MrpRegistrarState>(3)); },
     "registrar state out of range"},
    {"LeaveWithoutTimer",
     [](EngineInvariantsTest& t) { t.stored()->registrarStateIs(Mrp::MrpRegistrarState::lv); },
     "registrar in LV with no leave timer pending for it"},
    {"LeaveAllTimingOfAPortWithoutSocket",
     [](EngineInvariantsTest& t) {
       t.sm().leaveAllSm()->mrpEnableLeaveAllPendingAttrType(Velo::IntfId("gone"), 1, 10);
     },
     "LeaveAll timing of a port without packet access"},
    {"StrayTimerOnTheWheel",
     [](EngineInvariantsTest& t) {
       t.stray = std::make_unique<StrayTimer>(t.sm().timerWheel().ptr());
       t.stray->timeIs(t.rig.clock().now() + 5);
     },
     "timer wheel schedules"},
    {"EmptyPacketUnderConstruction",
     [](EngineInvariantsTest& t) { t.sm().mrpLib()->mrpTxPacketContextIs(kStored.intfId, Velo::Pkt::pktNew(1500)); },
     "packet under construction without a message"},
    {"ParsedAttributesLeftOver",
     [](EngineInvariantsTest& t) { t.sm().receivedFrame().mrpParsedAttributeIs({1, 10}); },
     "parsed attributes left after the frame"},
    {"ReceivedLeaveAllLeftOver", [](EngineInvariantsTest& t) { t.sm().receivedFrame().mrpRxLeaveAllIs(1, true); },
     "received LeaveAlls left after the frame"},
    {"FutureVersionLeftSet", [](EngineInvariantsTest& t) { t.sm().receivedFrame().futureProtocolVersionIs(true); },
     "future protocol version flag left set"},
    {"SendTxLvAllLeftSet", [](EngineInvariantsTest& t) { t.sm().parseContext()->sendTxLvAllIs(true); },
     "sendTxLvAll left set"},
    {"CounterWentDown", [](EngineInvariantsTest& t) { t.sm().mrpCounters()->numOfPktsProcessedIs(0); },
     "counter numOfPktsProcessed went down"},
};

INSTANTIATE_TEST_SUITE_P(Damages, EngineInvariantsDamageTest, ::testing::ValuesIn(kDamages),
                         [](const ::testing::TestParamInfo<Damage>& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace MrpTest
