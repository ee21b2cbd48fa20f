// The leave machines of attributes left by a received Lv, on a timer wheel
// of their own and an engine that records what the machines ask of it.

#include "MrpSm/MrpExplicitLeaveSmMap.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "MrpSm/MrpExplicitLeaveSm.h"
#include "brisk/TimerWheel.h"
#include "quarn/Clock.h"

namespace MrpTest {
namespace {

using Mrp::MrpAttribute;
using Mrp::MrpExplicitLeaveSm;
using Strings = std::vector<std::string>;

const Velo::IntfId kP1("p1");
const Velo::IntfId kP2("p2");

class RecordingEngine : public Mrp::MrpExplicitLeaveSmMap::Engine {
 public:
  Quarn::Seconds leaveTime() const override { return leaveTime_; }
  void drainPort(const Velo::IntfId& intfId) override {
    calls.push_back("drain " + intfId.name());
    if (onDrain) onDrain();
  }
  void leaveTimer(const MrpAttribute& attribute) override {
    calls.push_back("leavetimer " + attribute.intfId.name() + "/" + std::to_string(attribute.attributeType) + "/" +
                    std::to_string(attribute.attributeKey));
  }

  Quarn::Seconds leaveTime_ = 0.6;
  Strings calls;
  std::function<void()> onDrain;
};

class MrpExplicitLeaveSmMapTest : public ::testing::Test {
 protected:
  // The machine of the attribute, its key pending and its timer armed for `seconds`.
  MrpExplicitLeaveSm& leaving(const MrpAttribute& attribute, Quarn::Seconds seconds = 0.6) {
    MrpExplicitLeaveSm& machine = map.machineIs(attribute);
    machine.leavePendingIs(attribute.attributeKey, true);
    machine.doScheduleLeaveTimer(seconds);
    return machine;
  }
  std::vector<MrpAttribute> attributes() const {
    std::vector<MrpAttribute> found;
    for (const auto& [attribute, machine] : map) {
      EXPECT_EQ(machine->mrpAttribute(), attribute);
      found.push_back(attribute);
    }
    return found;
  }
  Strings callsTaken() { return std::exchange(engine.calls, {}); }

  Quarn::Ptr<Quarn::SimClock> clock{new Quarn::SimClock(10.0)};
  Quarn::Ptr<Brisk::TimerWheel> wheel{new Brisk::TimerWheel(clock, 100, 600, true, 16)};
  RecordingEngine engine;
  Mrp::MrpExplicitLeaveSmMap map{&engine, wheel};
};

TEST_F(MrpExplicitLeaveSmMapTest, ANewMachineArmsItsTimerWithTheEnginesLeaveTimeAndIsFoundByItsAttribute) {
  engine.leaveTime_ = 0.8;
  MrpExplicitLeaveSm& machine = map.machineIs({kP1, 1, 10});
  EXPECT_DOUBLE_EQ(machine.leaveTimerTime(), 10.8);
  EXPECT_TRUE(machine.leavePendingKeys().empty());
  EXPECT_EQ(map.machine({kP1, 1, 10}), &machine);
  EXPECT_EQ(&map.machineIs({kP1, 1, 10}), &machine) << "an existing machine is returned";
  EXPECT_EQ(map.machine({kP1, 2, 10}), nullptr);
  EXPECT_EQ(map.machine({kP2, 1, 10}), nullptr);
  EXPECT_EQ(wheel->scheduledCount(), 1u);
}

TEST_F(MrpExplicitLeaveSmMapTest, MachinesAreWalkedByPortTypeAndKey) {
  for (const MrpAttribute& attribute : {MrpAttribute{kP2, 1, 5}, MrpAttribute{kP1, 2, 7}, MrpAttribute{kP1, 1, 30},
                                        MrpAttribute{kP1, 1, 10}, MrpAttribute{kP1, 1, 20}}) {
    map.machineIs(attribute);
  }
  EXPECT_EQ(attributes(), (std::vector<MrpAttribute>{{kP1, 1, 10}, {kP1, 1, 20}, {kP1, 1, 30}, {kP1, 2, 7}, {kP2, 1, 5}}));
  EXPECT_EQ(map.size(), 5u);
}

TEST_F(MrpExplicitLeaveSmMapTest, TheOnlyKeyAMachineTimesIsItsOwn) {
  MrpExplicitLeaveSm& machine = leaving({kP1, 1, 10});
  EXPECT_TRUE(machine.leavePending(10));
  EXPECT_FALSE(machine.leavePending(11));
  EXPECT_EQ(machine.leavePendingKeys(), (std::vector<std::uint64_t>{10}));
  machine.leavePendingDel(11);
  EXPECT_TRUE(machine.leavePending(10));
  machine.leavePendingDel(10);
  EXPECT_FALSE(machine.leavePending(10));
  machine.leavePendingIs(10, true);
  machine.leavePendingDelAll();
  EXPECT_TRUE(machine.leavePendingKeys().empty());
}

TEST_F(MrpExplicitLeaveSmMapTest, ExpiryDrainsThePortThenGivesAPendingKeyLeaveTimerAndDropsTheMachine) {
  leaving({kP1, 1, 10});
  leaving({kP1, 1, 20}).leavePendingDel(20);
  clock->advance(0.5);
  EXPECT_TRUE(callsTaken().empty());
  clock->advance(0.1);
  EXPECT_EQ(callsTaken(), (Strings{"drain p1", "leavetimer p1/1/10", "drain p1"}));
  EXPECT_TRUE(map.empty());
  EXPECT_EQ(map.machine({kP1, 1, 10}), nullptr);
  EXPECT_EQ(map.begin(), map.end());
  EXPECT_EQ(wheel->scheduledCount(), 0u);
}

TEST_F(MrpExplicitLeaveSmMapTest, MachinesDueOnOneTickFireInTheOrderTheirTimersWereSetNotByKey) {
  for (std::uint64_t key : {30, 10, 20}) leaving({kP1, 1, key});
  leaving({kP1, 1, 30});  // set again: now the last
  clock->advance(0.6);
  EXPECT_EQ(callsTaken(), (Strings{"drain p1", "leavetimer p1/1/10", "drain p1", "leavetimer p1/1/20", "drain p1",
                                   "leavetimer p1/1/30"}));
}

TEST_F(MrpExplicitLeaveSmMapTest, AMachineCancelledAndMadeAgainDuringItsOwnExpiryKeepsTheNewOne) {
  leaving({kP1, 1, 10});
  leaving({kP1, 1, 20});
  engine.onDrain = [&] {
    engine.onDrain = nullptr;
    map.machinesOfDel(kP1);
    leaving({kP1, 1, 10}, 1.0);
  };
  clock->advance(0.6);
  EXPECT_EQ(callsTaken(), (Strings{"drain p1"})) << "the cancelled keys get no leavetimer!";
  ASSERT_NE(map.machine({kP1, 1, 10}), nullptr);
  EXPECT_DOUBLE_EQ(map.machine({kP1, 1, 10})->leaveTimerTime(), 11.6);
  EXPECT_EQ(attributes(), (std::vector<MrpAttribute>{{kP1, 1, 10}}));
  clock->advance(1.0);
  EXPECT_EQ(callsTaken(), (Strings{"drain p1", "leavetimer p1/1/10"}));
  EXPECT_TRUE(map.empty());
}

TEST_F(MrpExplicitLeaveSmMapTest, AMachineLeftAgainDuringItsExpiryIsStillDroppedWithItsNewTimer) {
  leaving({kP1, 1, 10});
  engine.onDrain = [&] {
    engine.onDrain = nullptr;
    leaving({kP1, 1, 10}, 1.0);
  };
  clock->advance(0.6);
  EXPECT_EQ(callsTaken(), (Strings{"drain p1", "leavetimer p1/1/10"}));
  EXPECT_TRUE(map.empty());
  EXPECT_EQ(wheel->scheduledCount(), 0u);
}

TEST_F(MrpExplicitLeaveSmMapTest, CancellingAPortDropsOnlyItsMachinesAndTheirTimers) {
  for (const MrpAttribute& attribute : {MrpAttribute{kP1, 1, 10}, MrpAttribute{kP1, 2, 10}, MrpAttribute{kP2, 1, 10}}) {
    leaving(attribute);
  }
  EXPECT_EQ(map.machinesOf(kP1).size(), 2u);
  map.machinesOfDel(kP1);
  EXPECT_EQ(attributes(), (std::vector<MrpAttribute>{{kP2, 1, 10}}));
  EXPECT_EQ(wheel->scheduledCount(), 1u);
  map.machineDel({kP2, 1, 10});
  EXPECT_TRUE(map.empty());
  EXPECT_EQ(wheel->scheduledCount(), 0u);
  clock->advance(1.0);
  EXPECT_TRUE(callsTaken().empty());
}

TEST_F(MrpExplicitLeaveSmMapTest, AKeyMadeAgainAfterItsMachineLeftGetsAFreshMachine) {
  for (std::uint64_t key = 1; key <= 9; ++key) leaving({kP1, 1, key});
  for (std::uint64_t key : {3, 4, 5}) map.machineDel({kP1, 1, key});
  MrpExplicitLeaveSm& again = map.machineIs({kP1, 1, 4});
  EXPECT_FALSE(again.leavePending(4));
  EXPECT_DOUBLE_EQ(again.leaveTimerTime(), 10.6);
  EXPECT_EQ(map.size(), 7u);
  std::vector<std::uint64_t> keys;
  for (const auto& [attribute, machine] : map) keys.push_back(attribute.attributeKey);
  EXPECT_EQ(keys, (std::vector<std::uint64_t>{1, 2, 4, 6, 7, 8, 9}));
  map.machineDelAll();
  EXPECT_TRUE(map.empty());
  EXPECT_EQ(wheel->scheduledCount(), 0u);
}

}  // namespace
}  // namespace MrpTest
