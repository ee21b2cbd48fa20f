// Two MVRP engines back to back on an in-memory wire, with randomised
// LeaveAll periods, over two minutes of simulated time: registrations that
// survive every LeaveAll, a neighbour that falls silent, and a port whose
// spanning-tree role blocks and unblocks it.

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "MrpSm/MrpSm.h"
#include "stp/MstiPortStatus.h"
#include "support/EngineScenario.h"
#include "support/LeaveAllHelpers.h"
#include "support/ScopedEnv.h"

namespace MrpTest {
namespace {

using Mrp::MrpApplication;
using Mrp::MrpRegistrarState;
using Mrp::MvrpVlanAttribute;
using Role = Stp::MstiPortStatus::Role;

constexpr unsigned kSeed = 1802;
constexpr Quarn::Seconds kScenarioTime = 120;
constexpr Quarn::Seconds kLeaveAllTime = 10;  // the configuration's default
constexpr Quarn::Seconds kLeaveTime = 0.6;    // likewise
constexpr Quarn::Seconds kLongestPeriod = 1.5 * kLeaveAllTime;
constexpr Quarn::Seconds kTransmitCycle = 0.1;
constexpr Quarn::Seconds kEpsilon = 1e-9;
constexpr std::uint16_t kVlansOfA = 100;

std::set<std::uint64_t> keysOf(const std::vector<Mrp::MrpParameters>& indications) {
  std::set<std::uint64_t> keys;
  for (const Mrp::MrpParameters& p : indications) keys.insert(p.attributeKey);
  return keys;
}

std::set<std::uint64_t> keyRange(std::uint64_t first, std::uint64_t last) {
  std::set<std::uint64_t> keys;
  for (std::uint64_t key = first; key <= last; ++key) keys.insert(key);
  return keys;
}

class LeaveAllScenarioTest : public EngineScenario {
 protected:
  LeaveAllScenarioTest() {
    std::srand(kSeed);
    link(a, "a1", b, "b1");
  }

  // A declares VLANs 1 to 100 with Join; B has registered them once.
  void aDeclaresItsVlans() {
    for (std::uint16_t vlan = 1; vlan <= kVlansOfA; ++vlan) declare(a, "a1", MvrpVlanAttribute(vlan), kJoinIn);
    advance(1);
    const std::vector<Mrp::MrpParameters> joins = takeJoins(b);
    ASSERT_EQ(joins.size(), kVlansOfA);
    ASSERT_EQ(keysOf(joins), keyRange(1, kVlansOfA));
  }
  // Whether B holds every one of A's VLANs registered (IN).
  bool bRegistersAllOfA() const {
    for (std::uint16_t vlan = 1; vlan <= kVlansOfA; ++vlan) {
      const auto entry = b.attribute("b1", 1, vlan);
      if (!entry || entry->registrarState() != MrpRegistrarState::in) return false;
    }
    return true;
  }
  // Whether B holds none of A's VLANs registered.
  bool bRegistersNoneOfA() const {
    for (std::uint16_t vlan = 1; vlan <= kVlansOfA; ++vlan) {
      const auto entry = b.attribute("b1", 1, vlan);
      if (entry && entry->registrarState() != MrpRegistrarState::mt) return false;
    }
    return true;
  }
  // The times of the frames with a LeaveAll either engine sent after `from`.
  std::vector<Quarn::Seconds> leaveAllsAfter(Quarn::Seconds from) const {
    std::vector<Quarn::Seconds> times;
    for (Quarn::Seconds t : leaveAllTimesOf(allFrames())) {
      if (t > from) times.push_back(t);
    }
    return times;
  }
  Quarn::Seconds bLeaveAllExpiry() const {
    return b.sm().leaveAllSm()->intfLeaveAllSm(Velo::IntfId("b1"))->leaveAllPending(1)->expiryTime();
  }

  ScopedEnv randomized{kDisableLeaveAllRandomization, std::nullopt};
  ScenarioEngine& a = engineNew("A", MrpApplication::mvrp);
  ScenarioEngine& b = engineNew("B", MrpApplication::mvrp);
};

TEST_F(LeaveAllScenarioTest, RegistrationsOfAHundredVlansSurviveEveryLeaveAllOfEitherSide) {
  aDeclaresItsVlans();
  advance(kScenarioTime);
  EXPECT_TRUE(takeLeaves(b).empty());
  EXPECT_TRUE(takeJoins(b).empty()) << "no VLAN is indicated twice";
  EXPECT_TRUE(bRegistersAllOfA());

  // LeaveAlls went out all along, from both sides.
  const std::vector<Quarn::Seconds> leaveAlls = leaveAllsAfter(0);
  ASSERT_GE(leaveAlls.size(), static_cast<std::size_t>(kScenarioTime / kLongestPeriod));
  Quarn::Seconds previous = 0;
  for (Quarn::Seconds t : leaveAlls) {
    EXPECT_LT(t - previous, kLongestPeriod + kTransmitCycle) << "the LeaveAll at " << t;
    previous = t;
  }
  EXPECT_GE(leaveAllTimesOf(takeFrames("a1")).size(), 1u);
  EXPECT_GE(leaveAllTimesOf(takeFrames("b1")).size(), 1u);
}

TEST_F(LeaveAllScenarioTest, SilentNeighboursVlansLeaveAfterTheNextLeaveAllAndWithinItsLongestPeriod) {
  aDeclaresItsVlans();
  advance(7.3);  // somewhere in a period
  cut("a1");
  const Quarn::Seconds cutAt = now();

  // B's own LeaveAll, the only one it can hear of now, moves its expiry.
  const Quarn::Seconds expiryAtCut = bLeaveAllExpiry();
  std::optional<Quarn::Seconds> firstLeaveAll;
  std::optional<Quarn::Seconds> leftAt;
  std::set<std::uint64_t> left;
  while (now() < cutAt + kLongestPeriod + kLeaveTime + 1) {
    advance(kTransmitCycle);
    if (!firstLeaveAll && bLeaveAllExpiry() != expiryAtCut) firstLeaveAll = now();
    const std::vector<Mrp::MrpParameters> leaves = takeLeaves(b);
    if (!leaves.empty() && !leftAt) leftAt = now();
    for (std::uint64_t key : keysOf(leaves)) left.insert(key);
  }
  ASSERT_TRUE(firstLeaveAll) << "B sent no LeaveAll";
  ASSERT_TRUE(leftAt) << "B never indicated a leave";
  EXPECT_EQ(left, keyRange(1, kVlansOfA));
  EXPECT_GE(*leftAt, *firstLeaveAll + kLeaveTime - kEpsilon) << "not before the first LeaveAll after the cut";
  EXPECT_LE(*leftAt, cutAt + kLongestPeriod + kLeaveTime + kTransmitCycle + kEpsilon);
  EXPECT_TRUE(bRegistersNoneOfA());

  advance(kScenarioTime - (now() - cutAt));
  EXPECT_TRUE(takeLeaves(b).empty()) << "each VLAN leaves once";
  EXPECT_TRUE(takeJoins(b).empty());
}

TEST_F(LeaveAllScenarioTest, BlockedPortForgetsItsRegistrationsAndDeclaresAgainWhenItForwards) {
  // B declares VLANs 201 to 210 itself; its port b1 forwards (root role).
  for (std::uint16_t vlan = 201; vlan <= 210; ++vlan) declare(b, "b1", MvrpVlanAttribute(vlan), kJoinIn);
  const Quarn::Ptr<Stp::MstiPortStatus> b1Role = cistPortStatusIs(b.stpStatus(), "b1");
  b1Role->roleIs(Role::root);
  aDeclaresItsVlans();
  EXPECT_EQ(takeJoins(a).size(), 10u);

  // Block the port half a second after a LeaveAll exchange, when every
  // registration is IN again and the next LeaveAll is far.
  while (leaveAllsAfter(0).empty()) advance(kTransmitCycle);
  advance(0.5);
  ASSERT_TRUE(bRegistersAllOfA());
  takeFrames("b1");
  b1Role->roleIs(Role::alternate);
  EXPECT_TRUE(bRegistersNoneOfA()) << "Flush! at once";
  EXPECT_TRUE(takeLeaves(b).empty()) << "no leave indication for registrations in IN";
  advance(1);
  EXPECT_TRUE(takeJoins(b).empty());
  EXPECT_TRUE(bRegistersNoneOfA());

  // Forwarding again: B's declarations go out at once.
  takeFrames("b1");
  b1Role->roleIs(Role::root);
  const Quarn::Seconds forwardingAt = now();
  advance(kTransmitCycle);
  std::set<std::uint64_t> redeclared;
  for (const SentFrame& frame : takeFrames("b1")) {
    for (const SentValue& value : frame.values) {
      if (value.attributeEvent == kJoinIn || value.attributeEvent == kJoinMt) redeclared.insert(value.attributeKey);
    }
  }
  EXPECT_EQ(redeclared, keyRange(201, 210));

  // A's declarations are registered again by the next LeaveAll exchange.
  std::set<std::uint64_t> rejoined;
  while (rejoined.size() < kVlansOfA && now() < forwardingAt + kLongestPeriod + 1) {
    for (std::uint64_t key : keysOf(takeJoins(b))) rejoined.insert(key);
    if (rejoined.size() < kVlansOfA) advance(kTransmitCycle);
  }
  const Quarn::Seconds rejoinedAt = now();
  EXPECT_EQ(rejoined, keyRange(1, kVlansOfA));
  const std::vector<Quarn::Seconds> leaveAlls = leaveAllsAfter(forwardingAt);
  const Quarn::Seconds nextExchange = leaveAlls.empty() ? now() : leaveAlls.front();
  EXPECT_LE(rejoinedAt, nextExchange + kTransmitCycle + kEpsilon);
  EXPECT_TRUE(bRegistersAllOfA());

  advance(kScenarioTime - now());
  EXPECT_TRUE(takeLeaves(b).empty());
  EXPECT_TRUE(takeJoins(b).empty());
  EXPECT_TRUE(takeLeaves(a).empty()) << "A's registrations of B's VLANs held throughout";
}

}  // namespace
}  // namespace MrpTest
