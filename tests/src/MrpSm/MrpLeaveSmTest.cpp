#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "quarn/Trace.h"
#include "support/CurrentAttribute.h"
#include "support/EngineScenario.h"
#include "support/FrameBuilder.h"

namespace MrpTest {
namespace {

using Event = Mrp::MrpRegistrarEvent;
using State = Mrp::MrpRegistrarState;

const Velo::IntfId kPort("p1");
// The key of the port and type's shared leave machine.
const Mrp::MrpAttribute kVlanLeaves{kPort, 1, 0};

Mrp::MrpAttribute vlan(std::uint64_t id) { return {kPort, 1, id}; }

// An MVRP engine with port p1 facing the test, and VLANs registered on it.
class MrpLeaveSmTest : public EngineScenario {
 protected:
  MrpLeaveSmTest() { portUp(engine, "p1"); }

  // VLAN `id` registered (IN) and declared (QA), made current.
  void registered(std::uint64_t id) {
    engine.lib().mvrpVlanVectorTx() = Mrp::MvrpVlanAttribute(static_cast<std::uint16_t>(id));
    currentAttributeIs(sm(), vlan(id), Mrp::MrpApplicantState::qa, State::in);
  }
  // VLAN `id`, registered, leaves by `event` (rLv!, rLA!, txLA!, Re-declare!).
  void leaves(std::uint64_t id, Event event) {
    registered(id);
    registrarEventHandle(sm(), event);
    ASSERT_EQ(state(id), State::lv);
  }
  State state(std::uint64_t id) const { return engine.attribute("p1", 1, id)->registrarState(); }

  // The VLANs whose leave was indicated since the last call, in order.
  std::vector<std::uint64_t> leftVlans() {
    std::vector<std::uint64_t> keys;
    for (const Mrp::MrpParameters& leave : takeLeaves(engine)) keys.push_back(leave.attributeKey);
    return keys;
  }

  // A frame from the test with one VLAN vector.
  static Bytes vlanFrame(std::uint16_t id, std::uint8_t event) {
    const Quarn::Ptr<Mrp::MrpLib> lib = Mrp::mrpLibFactory();
    FrameBuilder builder(*lib, Mrp::MrpApplication::mvrp);
    return builder.message(1).vlan(Mrp::MvrpVlanAttribute(id), event).frame(kTestMac);
  }

  Mrp::MrpSm& sm() const { return engine.sm(); }
  Mrp::MrpRegistrarSm& registrar() const { return *engine.sm().registrarSm(); }

  ScenarioEngine& engine = engineNew("A", Mrp::MrpApplication::mvrp);
};

TEST_F(MrpLeaveSmTest, ANewMachineArmsItsTimerWithTheConfiguredLeaveTime) {
  engine.config().leaveTimeIs(0.8);
  engine.config().intfLeaveTimeIs(kPort, 1.5);
  advance(0.3);
  const Quarn::Ptr<Mrp::MrpLeaveSm> machine = registrar().leaveSmIs(kVlanLeaves);
  EXPECT_DOUBLE_EQ(machine->leaveTimerTime(), now() + 0.8);
  EXPECT_EQ(machine->mrpAttribute(), kVlanLeaves);
  EXPECT_TRUE(machine->leavePendingKeys().empty());
}

TEST_F(MrpLeaveSmTest, PendingKeysStayAscendingThroughAddsRemovalsAndReAdds) {
  const Quarn::Ptr<Mrp::MrpLeaveSm> machine = registrar().leaveSmIs(kVlanLeaves);
  for (std::uint64_t key : {30, 10, 40, 20, 50}) machine->leavePendingIs(key, true);
  machine->leavePendingDel(20);
  machine->leavePendingDel(99);  // never pending
  EXPECT_EQ(machine->leavePendingKeys(), (std::vector<std::uint64_t>{10, 30, 40, 50}));
  // Most keys leaving, as a frame's joins after its LeaveAll do, then some coming back.
  for (std::uint64_t key : {10, 30, 40}) machine->leavePendingDel(key);
  machine->leavePendingIs(30, true);
  machine->leavePendingIs(5, true);
  machine->leavePendingIs(50, false);
  machine->leavePendingIs(60, false);  // a key set false is not pending
  EXPECT_EQ(machine->leavePendingKeys(), (std::vector<std::uint64_t>{5, 30}));
  EXPECT_TRUE(machine->leavePending(30));
  EXPECT_FALSE(machine->leavePending(50));
  EXPECT_FALSE(machine->leavePending(60));
  machine->leavePendingDelAll();
  EXPECT_TRUE(machine->leavePendingKeys().empty());
}

TEST_F(MrpLeaveSmTest, SchedulingRestartsTheTimerFromNowEvenWhenThatIsEarlier) {
  const Quarn::Ptr<Mrp::MrpLeaveSm> machine = registrar().leaveSmIs(kVlanLeaves);
  advance(0.2);
  machine->doScheduleLeaveTimer(2.0);
  EXPECT_DOUBLE_EQ(machine->leaveTimerTime(), now() + 2.0);
  machine->doScheduleLeaveTimer(0.3);
  EXPECT_DOUBLE_EQ(machine->leaveTimerTime(), now() + 0.3);
}

TEST_F(MrpLeaveSmTest, ExpiryGivesEveryPendingKeyLeaveTimerInAscendingOrderAndDropsTheMachine) {
  for (const std::uint64_t id : {30, 10, 20}) leaves(id, Event::regLvAll_);
  advance(0.5);
  EXPECT_TRUE(leftVlans().empty());
  advance(0.1);
  EXPECT_EQ(leftVlans(), (std::vector<std::uint64_t>{10, 20, 30}));
  for (const std::uint64_t id : {10, 20, 30}) EXPECT_EQ(state(id), State::mt) << "VLAN " << id;
  EXPECT_TRUE(registrar().leaveSms().empty());
}

TEST_F(MrpLeaveSmTest, KeysLeavingByLeaveAllShareOneTimerThatEachLeaveRestarts) {
  const Quarn::Seconds first = now();
  leaves(10, Event::regLvAll_);
  advance(0.4);
  leaves(20, Event::regLvAll_);
  clock->advanceTo(first + 0.9);
  EXPECT_TRUE(leftVlans().empty()) << "the first key's own 0.6 s have passed, the second's not";
  clock->advanceTo(first + 1.0);
  EXPECT_EQ(leftVlans(), (std::vector<std::uint64_t>{10, 20}));
}

TEST_F(MrpLeaveSmTest, KeysLeavingByReceivedLvEachExpireTheirOwnLeaveTimeAfterTheirLv) {
  const Quarn::Seconds first = now();
  leaves(10, Event::rLv);
  advance(0.4);
  leaves(20, Event::rLv);
  clock->advanceTo(first + 0.5);
  EXPECT_TRUE(leftVlans().empty());
  clock->advanceTo(first + 0.6);
  EXPECT_EQ(leftVlans(), (std::vector<std::uint64_t>{10}));
  clock->advanceTo(first + 0.9);
  EXPECT_TRUE(leftVlans().empty());
  clock->advanceTo(first + 1.0);
  EXPECT_EQ(leftVlans(), (std::vector<std::uint64_t>{20}));
  EXPECT_TRUE(registrar().explicitLeaveSms().empty());
}

TEST_F(MrpLeaveSmTest, AKeyJoinedBeforeExpiryLeavesTheSetAndGetsNoLeaveTimer) {
  leaves(10, Event::regLvAll_);
  leaves(20, Event::regLvAll_);
  advance(0.3);
  inject("p1", vlanFrame(10, kJoinIn));
  EXPECT_EQ(state(10), State::in);
  EXPECT_FALSE(registrar().leaveSm(kVlanLeaves)->leavePending(10));
  advance(0.3);
  EXPECT_EQ(leftVlans(), (std::vector<std::uint64_t>{20}));
  EXPECT_EQ(state(10), State::in);
}

TEST_F(MrpLeaveSmTest, AMachineWhoseKeysAllJoinedAgainStaysUntilItsTimerFires) {
  leaves(10, Event::regLvAll_);
  registrarEventHandle(sm(), Event::rJoinIn);
  ASSERT_EQ(state(10), State::in);
  EXPECT_TRUE(registrar().leaveSm(kVlanLeaves)) << "dropped before its timer";
  advance(0.6);
  EXPECT_TRUE(leftVlans().empty());
  EXPECT_FALSE(registrar().leaveSm(kVlanLeaves));
}

TEST_F(MrpLeaveSmTest, AFrameWaitingOnThePortAtExpiryIsProcessedBeforeThePendingKeys) {
  leaves(10, Event::regLvAll_);
  advance(0.3);
  // The Join reaches the engine's socket but its arrival is not announced yet.
  Velo::MemPam& enginePam = *pamFactory->pam(kPort);
  ASSERT_TRUE(enginePam.peer()->txPkt(*pktOf(vlanFrame(10, kJoinIn))));
  ASSERT_TRUE(enginePam.hasDataOnSocket());
  registrar().leaveSm(kVlanLeaves)->handleLeaveTimer();
  EXPECT_FALSE(enginePam.hasDataOnSocket());
  EXPECT_TRUE(leftVlans().empty());
  EXPECT_EQ(state(10), State::in);
  EXPECT_FALSE(registrar().leaveSm(kVlanLeaves));
}

TEST_F(MrpLeaveSmTest, TheExpiryProcessesOneWaitingFrameAndLeavesTheNextOnTheSocket) {
  leaves(10, Event::regLvAll_);
  leaves(20, Event::regLvAll_);
  advance(0.3);
  Velo::MemPam& enginePam = *pamFactory->pam(kPort);
  ASSERT_TRUE(enginePam.peer()->txPkt(*pktOf(vlanFrame(10, kJoinIn))));
  ASSERT_TRUE(enginePam.peer()->txPkt(*pktOf(vlanFrame(20, kJoinIn))));
  const std::uint64_t received = enginePam.rxPkts();
  registrar().leaveSm(kVlanLeaves)->handleLeaveTimer();
  EXPECT_EQ(enginePam.rxPkts(), received + 1);
  EXPECT_TRUE(enginePam.hasDataOnSocket()) << "the second frame waits for its own turn";
  EXPECT_EQ(state(10), State::in);
  EXPECT_EQ(leftVlans(), (std::vector<std::uint64_t>{20}));
}

TEST_F(MrpLeaveSmTest, ALeaveTimerForAKeyNotPendingDoesNothing) {
  leaves(10, Event::regLvAll_);
  const Quarn::Ptr<Mrp::MrpLeaveSm> machine = registrar().leaveSm(kVlanLeaves);
  machine->leavePendingIs(10, false);
  machine->handleLeavePending(10);
  machine->handleLeavePending(99);
  EXPECT_TRUE(leftVlans().empty());
  EXPECT_EQ(state(10), State::lv);
}

TEST_F(MrpLeaveSmTest, APortWithIntfLeaveTimeZeroUsesLeaveTime) {
  engine.config().leaveTimeIs(0.8);
  engine.config().intfLeaveTimeIs(kPort, 0);
  const Quarn::Seconds start = now();
  leaves(10, Event::rLv);
  clock->advanceTo(start + 0.7);
  EXPECT_TRUE(leftVlans().empty());
  clock->advanceTo(start + 0.8);
  EXPECT_EQ(leftVlans(), (std::vector<std::uint64_t>{10}));
}

struct LeaveTimeRow {
  std::optional<Quarn::Seconds> p1LeaveTime;
  std::optional<Quarn::Seconds> p2LeaveTime;
  Quarn::Seconds leaveTime;  // of p1
};

TEST_F(MrpLeaveSmTest, ThePortsLeaveTimeIsItsOwnWhenSetAndNotZeroElseTheConfiguredOne) {
  // clang-format off
  const LeaveTimeRow rows[] = {
    // intfLeaveTime p1  intfLeaveTime p2  mrpGetLeaveTime(p1)
    {std::nullopt,     std::nullopt,     0.8},
    {1.5,              std::nullopt,     1.5},
    {0.0,              std::nullopt,     0.8},
    {std::nullopt,     1.5,              0.8},
  };
  // clang-format on
  engine.config().leaveTimeIs(0.8);
  for (const LeaveTimeRow& row : rows) {
    for (const auto& [port, time] : {std::pair{kPort, row.p1LeaveTime}, std::pair{Velo::IntfId("p2"), row.p2LeaveTime}}) {
      if (time) {
        engine.config().intfLeaveTimeIs(port, *time);
      } else {
        engine.config().intfLeaveTimeDel(port);
      }
    }
    EXPECT_DOUBLE_EQ(sm().mrpGetLeaveTime(kPort), row.leaveTime)
        << "p1 " << row.p1LeaveTime.value_or(-1) << ", p2 " << row.p2LeaveTime.value_or(-1);
  }
}

constexpr Quarn::Seconds kNaN = std::numeric_limits<Quarn::Seconds>::quiet_NaN();
constexpr Quarn::Seconds kInf = std::numeric_limits<Quarn::Seconds>::infinity();

struct InvalidLeaveTimeRow {
  Quarn::Seconds leaveTime;
  std::string trace;
};

TEST_F(MrpLeaveSmTest, ALeaveTimeThatIsNotATimeIsTracedAndTakenAsZeroByEveryLeave) {
  // clang-format off
  const InvalidLeaveTimeRow rows[] = {
    {kNaN,  "Invalid leaveTime nan, taken as 0"},
    {-0.5,  "Invalid leaveTime -0.5, taken as 0"},
    {kInf,  "Invalid leaveTime inf, taken as 0"},
    {-kInf, "Invalid leaveTime -inf, taken as 0"},
  };
  // clang-format on
  Quarn::CaptureTraceSink traces;
  for (const InvalidLeaveTimeRow& row : rows) {
    SCOPED_TRACE(row.trace);
    engine.config().leaveTimeIs(row.leaveTime);
    traces.clear();
    ASSERT_TRUE(Quarn::traceLevelsIs("MrpSm/4"));
    EXPECT_EQ(sm().mrpGetLeaveTime(kPort), 0.0);
    leaves(10, Event::regLvAll_);
    leaves(20, Event::rLv);
    Quarn::traceLevelsClear();
    EXPECT_TRUE(traces.contains(row.trace));
    const Quarn::Seconds armed = now();
    EXPECT_DOUBLE_EQ(registrar().leaveSm(kVlanLeaves)->leaveTimerTime(), armed);
    EXPECT_DOUBLE_EQ(registrar().explicitLeaveSm(vlan(20))->leaveTimerTime(), armed);
    advance(0.1);
    EXPECT_EQ(leftVlans(), (std::vector<std::uint64_t>{10, 20}));
  }
}

TEST_F(MrpLeaveSmTest, APortLeaveTimeThatIsNotATimeIsTracedAndThePortUsesLeaveTime) {
  engine.config().leaveTimeIs(0.8);
  for (const Quarn::Seconds intfLeaveTime : {kNaN, -1.0, kInf}) {
    engine.config().intfLeaveTimeIs(kPort, intfLeaveTime);
    Quarn::CaptureTraceSink traces;
    ASSERT_TRUE(Quarn::traceLevelsIs("MrpSm/4"));
    EXPECT_DOUBLE_EQ(sm().mrpGetLeaveTime(kPort), 0.8) << intfLeaveTime;
    Quarn::traceLevelsClear();
    std::ostringstream text;
    text << "Invalid intfLeaveTime " << intfLeaveTime << " on p1, taken as 0";
    EXPECT_TRUE(traces.contains(text.str())) << text.str();
  }
}

}  // namespace
}  // namespace MrpTest
