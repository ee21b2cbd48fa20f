#include <gtest/gtest.h>

#include "support/EngineScenario.h"

namespace MrpTest {
namespace {

using Mrp::MrpApplication;
using Mrp::MvrpVlanAttribute;

class BackToBackTest : public EngineScenario {
 protected:
  BackToBackTest() {
    link(a, "a1", b, "b1");
  }
  ScenarioEngine& a = engineNew("A", MrpApplication::mvrp);
  ScenarioEngine& b = engineNew("B", MrpApplication::mvrp);
};

TEST_F(BackToBackTest, DeclaredVlanIsRegisteredWithinOneTransmitCycle) {
  declare(a, "a1", MvrpVlanAttribute(10), kNew);
  advance(0.1);
  const auto joins = takeJoins(b);
  ASSERT_GE(joins.size(), 1u);
  EXPECT_EQ(joins[0].intfId, Velo::IntfId("b1"));
  EXPECT_EQ(joins[0].attributeKey, 10u);
  const auto frames = takeFrames("a1");
  ASSERT_EQ(frames.size(), 2u);
  EXPECT_EQ(frames[0].values, (std::vector<SentValue>{{1, 10, kNew, {0x00, 0x0a}}}));
}

TEST_F(BackToBackTest, WithdrawnVlanLeavesAfterTheLeaveTimeAndNotBefore) {
  declare(a, "a1", MvrpVlanAttribute(10), kNew);
  advance(1);
  takeJoins(b);
  withdraw(a, "a1", MvrpVlanAttribute(10));
  const Quarn::Seconds withdrawn = now();
  advance(0.59);
  EXPECT_TRUE(takeLeaves(b).empty());
  advance(0.2);
  const auto leaves = takeLeaves(b);
  ASSERT_EQ(leaves.size(), 1u);
  EXPECT_EQ(leaves[0].attributeKey, 10u);
  (void)withdrawn;
}

TEST_F(BackToBackTest, AllVlansDeclaredWithJoinAreRegistered) {
  for (std::uint16_t vlan = 1; vlan <= 4094; ++vlan) declare(a, "a1", MvrpVlanAttribute(vlan), kJoinIn);
  advance(0.1);
  EXPECT_EQ(takeJoins(b).size(), 4094u);
  const auto frames = takeFrames("a1");
  std::size_t values = 0;
  for (const auto& f : frames) values += f.values.size();
  EXPECT_EQ(values, 2 * 4094u);
  std::cout << "frames " << frames.size() << "\n";
}

}  // namespace
}  // namespace MrpTest
