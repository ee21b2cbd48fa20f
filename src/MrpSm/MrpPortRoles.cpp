#include "MrpSm/MrpPortRoles.h"

#include <stdexcept>

#include "MrpSm/MrpSmTrace.h"

namespace Mrp {

namespace {

bool forwarding(MrpPortRoles::Role role) {
  return role == MrpPortRoles::Role::root || role == MrpPortRoles::Role::designated;
}

}  // namespace

MrpPortRoles::RoleAction MrpPortRoles::roleActionOf(Role oldRole, Role newRole) {
  if (forwarding(oldRole) && newRole == Role::alternate) return RoleAction::flush;
  if (oldRole == Role::alternate && forwarding(newRole)) return RoleAction::redeclare;
  return RoleAction::none;
}

MrpPortRoles::MrpPortRoles(Quarn::Ptr<Stp::Status> stpStatus, Owner& owner)
    : stpStatus_(std::move(stpStatus)), owner_(owner), stpStatusReactor_(this) {
  stpStatusReactor_.notifierIs(stpStatus_.ptr());
  // New watchers have none of vanished instances to remove.
  for (const auto& [name, status] : stpStatus_->stpiStatuses()) stpiStatusIs(name);
}

MrpPortRoles::~MrpPortRoles() { detach(); }

void MrpPortRoles::detach() {
  stpStatusReactor_.notifierIs(nullptr);
  stpStatusReactor_.portRolesIs(nullptr);
  for (auto& [name, reactor] : stpiStatus_) {
    reactor->notifierIs(nullptr);
    reactor->portRolesIs(nullptr);
  }
}

void MrpPortRoles::judgingIs() {
  judging_ = true;
  std::vector<RoleSeen> seen;
  seen.swap(deferred_);
  for (const RoleSeen& each : seen) judge(each);
}

void MrpPortRoles::handleRole(const std::string& portName, const std::string& mstiName,
                              const std::string& stpiName) {
  RoleSeen seen{portName, mstiName, stpiName};
  // A watcher made while the engine is being built reports at once; the
  // engine cannot name a port's topology before it is initialised.
  if (!judging_) {
    deferred_.push_back(std::move(seen));
    return;
  }
  judge(seen);
}

void MrpPortRoles::judge(const RoleSeen& seen) {
  const Velo::IntfId intfId(seen.portName);
  try {
    if (seen.mstiName != owner_.baseSpanningTreeTopo(intfId)) return;
  } catch (const std::range_error& error) {
    // A base VLAN out of range names no topology: the role stays unjudged.
    MRP_TRACE(4, "MrpSm::handleRole( " << seen.portName << ", " << seen.mstiName << ", " << seen.stpiName
                                       << " ): " << error.what());
    return;
  }
  if (!owner_.portWanted(intfId)) return;
  MRP_TRACE(7, "MrpSm::handleRole( " << seen.portName << ", " << seen.mstiName << ", " << seen.stpiName << " )");
  const Quarn::Ptr<Stp::MstiPortStatus> port = portStatus(seen);
  if (!port) return;
  const Role newRole = port->role();
  const auto known = oldPortRole_.find(intfId);
  const Role oldRole = known == oldPortRole_.end() ? Role::disabled : known->second;
  oldPortRole_[intfId] = newRole;
  if (!owner_.rolesAct() || newRole == oldRole) return;
  MRP_TRACE(7, "Port role for " << intfId << " changed from " << static_cast<unsigned>(oldRole) << " to "
                                << static_cast<unsigned>(newRole));
  const RoleAction action = roleActionOf(oldRole, newRole);
  if (action == RoleAction::none) return;
  MRP_TRACE(7, (action == RoleAction::flush ? "Flush! event occurred" : "Re-declare! event occurred"));
  owner_.roleActionIs(intfId, action);
}

Quarn::Ptr<Stp::MstiPortStatus> MrpPortRoles::portStatus(const RoleSeen& seen) const {
  const Quarn::Ptr<Stp::StpiStatus> stpi = stpStatus_->stpiStatus(seen.stpiName);
  const Quarn::Ptr<Stp::MstiStatus> msti = stpi ? stpi->mstiStatus(seen.mstiName) : nullptr;
  return msti ? msti->mstiPortStatus(seen.portName) : nullptr;
}

MrpStpiStatusReactor* MrpPortRoles::stpiStatus(const std::string& name) const {
  auto it = stpiStatus_.find(name);
  return it == stpiStatus_.end() ? nullptr : it->second.get();
}

void MrpPortRoles::stpiStatusIs(const std::string& name) {
  if (stpiStatus_.count(name)) return;
  Quarn::Ptr<Stp::StpiStatus> status = stpStatus_->stpiStatus(name);
  if (!status) return;
  stpiStatus_.emplace(name, std::make_unique<MrpStpiStatusReactor>(status, this));
}

void MrpPortRoles::handleStpiStatus(const std::string& name) {
  if (stpStatus_->stpiStatus(name)) {
    stpiStatusIs(name);
  } else {
    stpiStatusDel(name);
  }
}

}  // namespace Mrp
