// The port roles alone: watchers that follow the spanning-tree status, the
// last role seen per port, and which changes ask for Flush! or Re-declare!,
// judged against an owner that stands in for the engine.

#include "MrpSm/MrpPortRoles.h"

#include <gtest/gtest.h>

#include <set>
#include <stdexcept>
#include <utility>
#include <vector>

#include "quarn/Trace.h"
#include "stp/MstiPortStatus.h"
#include "stp/Status.h"

namespace MrpTest {
namespace {

using Mrp::MrpPortRoles;
using Role = MrpPortRoles::Role;
using RoleAction = MrpPortRoles::RoleAction;

const Velo::IntfId kP1("p1");
constexpr const char* kBase = "Cist";

class FakeOwner : public MrpPortRoles::Owner {
 public:
  Quarn::String baseSpanningTreeTopo(const Velo::IntfId& intfId) const override {
    if (outOfRange.count(intfId)) throw std::range_error("VlanId::value < 1 or > 4094 not allowed");
    return kBase;
  }
  bool portWanted(const Velo::IntfId& intfId) const override { return !unwanted.count(intfId); }
  bool rolesAct() const override { return acting; }
  void roleActionIs(const Velo::IntfId& intfId, RoleAction action) override { actions.emplace_back(intfId, action); }

  std::set<Velo::IntfId> outOfRange;
  std::set<Velo::IntfId> unwanted;
  bool acting = true;
  std::vector<std::pair<Velo::IntfId, RoleAction>> actions;
};

class MrpPortRolesTest : public ::testing::Test {
 protected:
  MrpPortRolesTest() { Quarn::traceLevelsIs("MrpSm/4-7"); }
  ~MrpPortRolesTest() override { Quarn::traceLevelsClear(); }

  Quarn::Ptr<Stp::MstiPortStatus> portIn(const std::string& msti, const std::string& port = "p1") {
    return stpStatus->stpiStatusIs("stp")->mstiStatusIs(msti)->mstiPortStatusIs(port);
  }
  std::optional<Role> oldRole(const MrpPortRoles& roles, const Velo::IntfId& port = kP1) const {
    const auto it = roles.oldPortRole().find(port);
    if (it == roles.oldPortRole().end()) return std::nullopt;
    return it->second;
  }

  Quarn::CaptureTraceSink traces;
  Quarn::Ptr<Stp::Status> stpStatus = new Stp::Status();
  FakeOwner owner;
};

struct ActionRow {
  Role oldRole;
  Role newRole;
  RoleAction action;
};

TEST_F(MrpPortRolesTest, OnlyForwardingToAlternateFlushesAndOnlyAlternateToForwardingRedeclares) {
  const ActionRow rows[] = {
      {Role::root, Role::alternate, RoleAction::flush},
      {Role::designated, Role::alternate, RoleAction::flush},
      {Role::alternate, Role::root, RoleAction::redeclare},
      {Role::alternate, Role::designated, RoleAction::redeclare},
      {Role::disabled, Role::root, RoleAction::none},
      {Role::disabled, Role::alternate, RoleAction::none},
      {Role::root, Role::designated, RoleAction::none},
      {Role::designated, Role::root, RoleAction::none},
      {Role::root, Role::backup, RoleAction::none},
      {Role::backup, Role::root, RoleAction::none},
      {Role::root, Role::disabled, RoleAction::none},
      {Role::alternate, Role::alternate, RoleAction::none},
  };
  for (const ActionRow& row : rows) {
    EXPECT_EQ(MrpPortRoles::roleActionOf(row.oldRole, row.newRole), row.action)
        << static_cast<unsigned>(row.oldRole) << " -> " << static_cast<unsigned>(row.newRole);
  }
}

TEST_F(MrpPortRolesTest, WatchesTheInstancesPresentAndFollowsThem) {
  stpStatus->stpiStatusIs("default");
  MrpPortRoles roles(stpStatus, owner);
  ASSERT_NE(roles.stpiStatus("default"), nullptr);
  EXPECT_EQ(roles.stpiStatus("default")->portRoles(), &roles);
  stpStatus->stpiStatusIs("other");
  EXPECT_EQ(roles.stpiStatusCount(), 2u);
  stpStatus->stpiStatusDel("default");
  EXPECT_EQ(roles.stpiStatus("default"), nullptr);
  EXPECT_EQ(roles.stpiStatusCount(), 1u);
}

TEST_F(MrpPortRolesTest, RolesSeenBeforeJudgingAreJudgedOnceItCanInTheOrderSeen) {
  portIn(kBase)->roleIs(Role::root);
  MrpPortRoles roles(stpStatus, owner);
  EXPECT_FALSE(oldRole(roles)) << "nothing is judged before the owner can";
  roles.judgingIs();
  EXPECT_EQ(oldRole(roles), Role::root);
  EXPECT_TRUE(owner.actions.empty()) << "the first role seen never acts";

  portIn(kBase)->roleIs(Role::alternate);
  ASSERT_EQ(owner.actions.size(), 1u);
  EXPECT_EQ(owner.actions[0], std::make_pair(kP1, RoleAction::flush));
}

TEST_F(MrpPortRolesTest, ChangesBeforeJudgingAreReplayedInOrder) {
  MrpPortRoles roles(stpStatus, owner);
  const auto port = portIn(kBase);
  port->roleIs(Role::root);
  port->roleIs(Role::alternate);
  EXPECT_TRUE(owner.actions.empty());
  roles.judgingIs();
  // Each replay reads the port's role as it is now: alternate, twice.
  EXPECT_EQ(oldRole(roles), Role::alternate);
  EXPECT_TRUE(owner.actions.empty());
}

TEST_F(MrpPortRolesTest, ABaseVlanOutOfRangeIsTracedAndLeavesTheRoleUnjudged) {
  owner.outOfRange.insert(kP1);
  MrpPortRoles roles(stpStatus, owner);
  roles.judgingIs();
  EXPECT_NO_THROW(portIn(kBase)->roleIs(Role::root));
  EXPECT_FALSE(oldRole(roles));
  EXPECT_TRUE(traces.contains("MrpSm::handleRole( p1, Cist, stp ): VlanId::value < 1 or > 4094 not allowed"));
  EXPECT_EQ(traces.lines().back().level, 4);
}

TEST_F(MrpPortRolesTest, AnotherTopologyOrAPortNotWantedIsIgnored) {
  owner.unwanted.insert(Velo::IntfId("p2"));
  MrpPortRoles roles(stpStatus, owner);
  roles.judgingIs();
  portIn("Msti1")->roleIs(Role::root);
  portIn(kBase, "p2")->roleIs(Role::root);
  EXPECT_TRUE(roles.oldPortRole().empty());
}

TEST_F(MrpPortRolesTest, WhileRolesDoNotActTheRoleIsRecordedAndTheNextChangeJudgedAgainstIt) {
  owner.acting = false;
  MrpPortRoles roles(stpStatus, owner);
  roles.judgingIs();
  const auto port = portIn(kBase);
  port->roleIs(Role::root);
  port->roleIs(Role::alternate);
  EXPECT_EQ(oldRole(roles), Role::alternate);
  EXPECT_TRUE(owner.actions.empty());

  owner.acting = true;
  port->roleIs(Role::designated);
  ASSERT_EQ(owner.actions.size(), 1u);
  EXPECT_EQ(owner.actions[0].second, RoleAction::redeclare);
}

TEST_F(MrpPortRolesTest, DetachedWatchersReachNothing) {
  MrpPortRoles roles(stpStatus, owner);
  roles.judgingIs();
  const auto port = portIn(kBase);
  port->roleIs(Role::root);
  roles.detach();
  port->roleIs(Role::alternate);
  EXPECT_TRUE(owner.actions.empty());
  stpStatus->stpiStatusIs("later");
  EXPECT_EQ(roles.stpiStatus("later"), nullptr);
}

}  // namespace
}  // namespace MrpTest
