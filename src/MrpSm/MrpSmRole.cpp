#include "MrpSm/MrpSm.h"
#include "MrpSm/MrpSmTrace.h"

namespace Mrp {

namespace {

using Role = Stp::MstiPortStatus::Role;

// What a role change asks of the port's registrations.
enum class RoleAction { none, flush, redeclare };

bool forwarding(Role role) { return role == Role::root || role == Role::designated; }

// Only the alternate role flushes: another blocking role does nothing.
RoleAction roleActionOf(Role oldRole, Role newRole) {
  if (forwarding(oldRole) && newRole == Role::alternate) return RoleAction::flush;
  if (oldRole == Role::alternate && forwarding(newRole)) return RoleAction::redeclare;
  return RoleAction::none;
}

}  // namespace

void MrpSm::handleRole(const std::string& portName, const std::string& mstiName, const std::string& stpiName) {
  const Velo::IntfId intfId(portName);
  if (mstiName != mrpLib_->baseSpanningTreeTopo(intfId)) return;
  // Before packet access is set up no port is wanted.
  if (!desiredIntfDir_ || !desiredIntfDir_->intfDesired(intfId)) return;
  MRP_TRACE(7, "MrpSm::handleRole( " << portName << ", " << mstiName << ", " << stpiName << " )");
  const Quarn::Ptr<Stp::StpiStatus> stpi = stpStatus_->stpiStatus(stpiName);
  const Quarn::Ptr<Stp::MstiStatus> msti = stpi ? stpi->mstiStatus(mstiName) : nullptr;
  const Quarn::Ptr<Stp::MstiPortStatus> port = msti ? msti->mstiPortStatus(portName) : nullptr;
  if (!port) return;
  const Role newRole = port->role();
  auto known = oldPortRole_.find(intfId);
  const Role oldRole = known == oldPortRole_.end() ? Role::disabled : known->second;
  oldPortRole_[intfId] = newRole;
  if (standbyMode_ || !active() || newRole == oldRole) return;
  MRP_TRACE(7, "Port role for " << intfId << " changed from " << static_cast<unsigned>(oldRole) << " to "
                                << static_cast<unsigned>(newRole));
  const RoleAction action = roleActionOf(oldRole, newRole);
  if (action == RoleAction::none) return;
  const bool flush = action == RoleAction::flush;
  MRP_TRACE(7, (flush ? "Flush! event occurred" : "Re-declare! event occurred"));
  for (std::uint8_t type = 1; type <= maxAttrTypes_; ++type) {
    leaveAllSm_->mrpPostLeaveAllToSm(intfId, type, flush ? MrpApplicantEvent::flush : MrpApplicantEvent::redeclare,
                                     flush ? MrpRegistrarEvent::flush : MrpRegistrarEvent::redeclare);
  }
}

}  // namespace Mrp
