// The spanning-tree port-role coupling: which role changes of which ports
// flush or re-declare a port's attributes, and the watchers that follow the
// spanning-tree status as instances, trees and ports come and go.

#include <gtest/gtest.h>

#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "MrpSm/MrpMstiPortStatusReactor.h"
#include "MrpSm/MrpMstiStatusReactor.h"
#include "MrpSm/MrpSm.h"
#include "MrpSm/MrpStpiStatusReactor.h"
#include "quarn/Trace.h"
#include "stp/MstiPortStatus.h"
#include "support/EngineScenario.h"
#include "support/LeaveAllHelpers.h"

namespace MrpTest {
namespace {

using Mrp::MrpApplication;
using Mrp::MrpRegistrarState;
using Mrp::MvrpVlanAttribute;
using Role = Stp::MstiPortStatus::Role;

const Velo::IntfId kP1("p1");
constexpr const char* kFlushed = "Flush! event occurred";
constexpr const char* kRedeclared = "Re-declare! event occurred";
constexpr std::uint16_t kDeclaredVlan = 10;
constexpr std::uint16_t kRegisteredVlan = 20;

Role roleOf(unsigned code) { return static_cast<Role>(code); }

class MrpSmRoleTest : public EngineScenario {
 protected:
  MrpSmRoleTest() { Quarn::traceLevelsIs("MrpSm/7-8"); }
  ~MrpSmRoleTest() override { Quarn::traceLevelsClear(); }

  // p1 declares kDeclaredVlan and has registered kRegisteredVlan; what that
  // sent is taken.
  void attributesOnP1(ScenarioEngine& e) {
    declare(e, "p1", MvrpVlanAttribute(kDeclaredVlan), kJoinIn);
    inject("p1", frameOf(e, mvrpPduOf(e.lib(), {kRegisteredVlan}, kJoinIn)));
    advance(1);
    takeFrames("p1");
    takeJoins(e);
    traces.clear();
  }
  MrpRegistrarState registration(const ScenarioEngine& e) const {
    return e.attribute("p1", 1, kRegisteredVlan)->registrarState();
  }
  std::optional<Role> oldPortRole(const ScenarioEngine& e, const Velo::IntfId& port = kP1) const {
    const auto& roles = e.sm().oldPortRole();
    const auto it = roles.find(port);
    if (it == roles.end()) return std::nullopt;
    return it->second;
  }
  // The attribute types posted to, one entry per attribute visited.
  std::vector<std::string> postedTypes() const {
    std::vector<std::string> types;
    for (const auto& line : traces.lines()) {
      if (line.text.rfind("PostLeaveAllToSm: ", 0) != 0) continue;
      const auto at = line.text.find("Type= ");
      types.push_back(line.text.substr(at + 6, line.text.find("interface") - at - 6));
    }
    return types;
  }

  Quarn::CaptureTraceSink traces;
};

// ---- The role table

enum class Action { none, flush, redeclare };

struct RoleChange {
  const char* name;
  unsigned oldRole;
  unsigned newRole;
  Action action;
};
void PrintTo(const RoleChange& change, std::ostream* os) { *os << change.name; }

class MrpSmRoleTableTest : public MrpSmRoleTest, public ::testing::WithParamInterface<RoleChange> {};

TEST_P(MrpSmRoleTableTest, RoleChangeFlushesRedeclaresOrDoesNothing) {
  ScenarioEngine& e = engineNew("E", MrpApplication::mvrp);
  portUp(e, "p1");
  const auto status = cistPortStatusIs(e.stpStatus(), "p1");
  status->roleIs(roleOf(GetParam().oldRole));
  attributesOnP1(e);

  status->roleIs(roleOf(GetParam().newRole));
  EXPECT_EQ(oldPortRole(e), roleOf(GetParam().newRole));
  EXPECT_EQ(traces.contains(kFlushed), GetParam().action == Action::flush);
  EXPECT_EQ(traces.contains(kRedeclared), GetParam().action == Action::redeclare);
  const MrpRegistrarState expected[] = {MrpRegistrarState::in, MrpRegistrarState::mt, MrpRegistrarState::lv};
  EXPECT_EQ(registration(e), expected[static_cast<int>(GetParam().action)]);
  advance(0.1);
  const std::vector<SentFrame> frames = takeFrames("p1");
  if (GetParam().action == Action::redeclare) {
    ASSERT_FALSE(frames.empty()) << "the declaration goes out again at once";
    EXPECT_EQ(frames[0].values.at(0), (SentValue{1, kDeclaredVlan, kJoinMt, {0x00, 0x0a}}));
  } else {
    EXPECT_TRUE(frames.empty());
  }
  EXPECT_TRUE(takeLeaves(e).empty()) << "Flush! forgets a registration in IN without a leave indication";
}

INSTANTIATE_TEST_SUITE_P(
    Roles, MrpSmRoleTableTest,
    ::testing::Values(RoleChange{"RootToAlternate", 1, 3, Action::flush},
                      RoleChange{"DesignatedToAlternate", 2, 3, Action::flush},
                      RoleChange{"AlternateToRoot", 3, 1, Action::redeclare},
                      RoleChange{"AlternateToDesignated", 3, 2, Action::redeclare},
                      RoleChange{"RootToDesignated", 1, 2, Action::none},
                      RoleChange{"DesignatedToRoot", 2, 1, Action::none},
                      RoleChange{"RootToBackup", 1, 4, Action::none},
                      RoleChange{"BackupToRoot", 4, 1, Action::none},
                      RoleChange{"AlternateToBackup", 3, 4, Action::none},
                      RoleChange{"BackupToAlternate", 4, 3, Action::none},
                      RoleChange{"RootToCodeFive", 1, 5, Action::none},
                      RoleChange{"CodeFiveToRoot", 5, 1, Action::none},
                      RoleChange{"RootToDisabled", 1, 0, Action::none},
                      RoleChange{"FirstSeenAsDisabledThenAlternate", 0, 3, Action::none}),
    [](const auto& info) { return std::string(info.param.name); });

// ---- The first role seen

struct FirstRole {
  const char* name;
  unsigned before;  // while the port was not yet wanted, so never judged
  unsigned first;
};
void PrintTo(const FirstRole& role, std::ostream* os) { *os << role.name; }

class MrpSmFirstRoleTest : public MrpSmRoleTest, public ::testing::WithParamInterface<FirstRole> {};

TEST_P(MrpSmFirstRoleTest, FirstRoleReportedForAPortNeverFlushesNorRedeclares) {
  ScenarioEngine& e = engineNew("E", MrpApplication::mvrp);
  const auto status = cistPortStatusIs(e.stpStatus(), "p1");
  status->roleIs(roleOf(GetParam().before));
  portUp(e, "p1");
  EXPECT_FALSE(oldPortRole(e));
  attributesOnP1(e);

  status->roleIs(roleOf(GetParam().first));
  EXPECT_EQ(oldPortRole(e), roleOf(GetParam().first));
  EXPECT_FALSE(traces.contains(kFlushed));
  EXPECT_FALSE(traces.contains(kRedeclared));
  EXPECT_EQ(registration(e), MrpRegistrarState::in);
  advance(0.1);
  EXPECT_TRUE(takeFrames("p1").empty());
}

INSTANTIATE_TEST_SUITE_P(FirstRoles, MrpSmFirstRoleTest,
                         ::testing::Values(FirstRole{"Alternate", 1, 3}, FirstRole{"AlternateAfterDesignated", 2, 3},
                                           FirstRole{"Root", 3, 1}, FirstRole{"Designated", 3, 2}),
                         [](const auto& info) { return std::string(info.param.name); });

// ---- Which ports and trees count

TEST_F(MrpSmRoleTest, RoleChangesInATreeOtherThanThePortsBaseTopologyAreIgnored) {
  ScenarioEngine& e = engineNew("E", MrpApplication::mvrp);
  portUp(e, "p1");
  e.stpStatus().modeIs(Stp::kModeRstp);
  const auto status = e.stpStatus().stpiStatusIs("stp")->mstiStatusIs("Msti1")->mstiPortStatusIs("p1");
  status->roleIs(Role::root);
  attributesOnP1(e);
  status->roleIs(Role::alternate);
  EXPECT_FALSE(oldPortRole(e));
  EXPECT_FALSE(traces.contains(kFlushed));
  EXPECT_EQ(registration(e), MrpRegistrarState::in);
}

TEST_F(MrpSmRoleTest, WithoutSpanningTreeTheCistTreeIsNotThePortsBaseTopology) {
  ScenarioEngine& e = engineNew("E", MrpApplication::mvrp);
  portUp(e, "p1");
  const auto status = cistPortStatusIs(e.stpStatus(), "p1");
  status->roleIs(Role::root);
  attributesOnP1(e);
  e.stpStatus().modeIs(Stp::kModeNone);
  status->roleIs(Role::alternate);
  EXPECT_EQ(oldPortRole(e), Role::root) << "judged last while the mode made Cist the base topology";
  EXPECT_FALSE(traces.contains(kFlushed));
  EXPECT_EQ(registration(e), MrpRegistrarState::in);
}

TEST_F(MrpSmRoleTest, RolesOfPortsNotWantedForPacketAccessAreNotEvenRecorded) {
  ScenarioEngine& e = engineNew("E", MrpApplication::mvrp);
  portUp(e, "p1");
  const auto status = cistPortStatusIs(e.stpStatus(), "p2");
  status->roleIs(Role::root);
  status->roleIs(Role::alternate);
  EXPECT_FALSE(oldPortRole(e, Velo::IntfId("p2")));
  EXPECT_FALSE(traces.contains("MrpSm::handleRole( p2, Cist, stp )"));

  e.sm().desiredIntfDir()->intfDesiredIs(Velo::IntfId("p2"), false);
  status->roleIs(Role::root);
  EXPECT_FALSE(oldPortRole(e, Velo::IntfId("p2"))) << "listed, but not wanted";
}

// ---- Events per attribute type

TEST_F(MrpSmRoleTest, MvrpFlushPostsOnePairOfEventsForItsOneType) {
  ScenarioEngine& e = engineNew("E", MrpApplication::mvrp);
  portUp(e, "p1");
  const auto status = cistPortStatusIs(e.stpStatus(), "p1");
  status->roleIs(Role::root);
  attributesOnP1(e);
  // An index entry of a type MVRP does not have: it must not be visited.
  e.sm().addToAttrIter(kP1, 2, 7);
  status->roleIs(Role::alternate);
  EXPECT_EQ(postedTypes(), (std::vector<std::string>{"1", "1"})) << "VLANs 10 and 20";
}

TEST_F(MrpSmRoleTest, MsrpFlushPostsToTypesOneToFourInOrder) {
  ScenarioEngine& e = engineNew("E", MrpApplication::msrp);
  portUp(e, "p1");
  const auto status = cistPortStatusIs(e.stpStatus(), "p1");
  status->roleIs(Role::designated);
  // One declaration of each type, the highest type first.
  declare(e, "p1", Mrp::MsrpDomainAttribute(6, 3, 2), kJoinIn);
  declare(e, "p1", Mrp::MsrpListenerAttribute(0x11, Mrp::MsrpListenerEvent::ready), kJoinIn);
  declare(e, "p1",
          Mrp::MsrpTalkerFailedAttribute(Mrp::MsrpTalkerAdvertiseAttribute(0x22, {}, {}, {}, 0), {}), kJoinIn);
  declare(e, "p1", Mrp::MsrpTalkerAdvertiseAttribute(0x33, {}, {}, {}, 0), kJoinIn);
  e.sm().addToAttrIter(kP1, 5, 7);
  traces.clear();
  status->roleIs(Role::alternate);
  EXPECT_EQ(postedTypes(), (std::vector<std::string>{"1", "2", "3", "4"}));
}

// ---- Standby

TEST_F(MrpSmRoleTest, InStandbyRoleChangesAreRecordedAndTheFirstChangeAfterActivationIsJudgedAgainstThem) {
  ScenarioEngine& e = engineNew("E", MrpApplication::mvrp, true);
  portUp(e, "p1");
  const auto status = cistPortStatusIs(e.stpStatus(), "p1");
  status->roleIs(Role::root);
  status->roleIs(Role::alternate);
  EXPECT_EQ(oldPortRole(e), Role::alternate);
  EXPECT_FALSE(traces.contains(kFlushed));

  e.sm().standbyModeIs(false);
  e.sm().handleStandbyMode();
  ASSERT_TRUE(e.sm().active());
  attributesOnP1(e);
  status->roleIs(Role::root);
  EXPECT_TRUE(traces.contains(kRedeclared));
  EXPECT_EQ(registration(e), MrpRegistrarState::lv);
}

// ---- The watchers

TEST_F(MrpSmRoleTest, NewPortWatcherJudgesThePortAtOnce) {
  ScenarioEngine& e = engineNew("E", MrpApplication::mvrp);
  portUp(e, "p1");
  e.stpStatus().modeIs(Stp::kModeRstp);
  const auto msti = e.stpStatus().stpiStatusIs("stp")->mstiStatusIs(kCist);
  traces.clear();
  msti->mstiPortStatusIs("p1");
  EXPECT_TRUE(traces.contains("MrpSm::handleRole( p1, Cist, stp )"));
  EXPECT_EQ(oldPortRole(e), Role::disabled);
}

TEST_F(MrpSmRoleTest, WatchersFollowTreesAndPortsAsTheyComeAndGo) {
  ScenarioEngine& e = engineNew("E", MrpApplication::mvrp);
  portUp(e, "p1");
  e.stpStatus().modeIs(Stp::kModeRstp);
  const auto stpi = e.stpStatus().stpiStatusIs("stp");
  const Mrp::MrpStpiStatusReactor& stpiWatcher = *e.sm().stpiStatus("stp");
  EXPECT_EQ(stpiWatcher.mstiStatusCount(), 0u);

  const auto msti = stpi->mstiStatusIs(kCist);
  stpi->mstiStatusIs("Msti1");
  EXPECT_EQ(stpiWatcher.mstiStatusCount(), 2u);
  const Mrp::MrpMstiStatusReactor* mstiWatcher = stpiWatcher.mstiStatus(kCist);
  ASSERT_NE(mstiWatcher, nullptr);
  EXPECT_EQ(mstiWatcher->parent(), &stpiWatcher);

  const auto port = msti->mstiPortStatusIs("p1");
  msti->mstiPortStatusIs("p2");
  EXPECT_EQ(mstiWatcher->mstiPortStatusCount(), 2u);
  ASSERT_NE(mstiWatcher->mstiPortStatus("p1"), nullptr);
  EXPECT_EQ(mstiWatcher->mstiPortStatus("p1")->parent(), mstiWatcher);

  msti->mstiPortStatusDel("p1");
  EXPECT_EQ(mstiWatcher->mstiPortStatus("p1"), nullptr);
  EXPECT_EQ(mstiWatcher->mstiPortStatusCount(), 1u);
  attributesOnP1(e);
  port->roleIs(Role::root);
  port->roleIs(Role::alternate);
  EXPECT_FALSE(traces.contains(kFlushed)) << "a removed port status is no longer watched";

  stpi->mstiStatusDel("Msti1");
  EXPECT_EQ(stpiWatcher.mstiStatus("Msti1"), nullptr);
  EXPECT_EQ(stpiWatcher.mstiStatusCount(), 1u);
}

TEST_F(MrpSmRoleTest, RemovingAnInstanceStopsWatchingItsPorts) {
  ScenarioEngine& e = engineNew("E", MrpApplication::mvrp);
  portUp(e, "p1");
  const auto port = cistPortStatusIs(e.stpStatus(), "p1", "first");
  port->roleIs(Role::root);
  attributesOnP1(e);
  e.stpStatus().stpiStatusDel("first");
  EXPECT_EQ(e.sm().stpiStatus("first"), nullptr);
  port->roleIs(Role::alternate);
  EXPECT_FALSE(traces.contains(kFlushed));
  EXPECT_EQ(registration(e), MrpRegistrarState::in);
}

}  // namespace
}  // namespace MrpTest
