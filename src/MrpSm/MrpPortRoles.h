#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "MrpSm/MrpStpStatusReactor.h"
#include "MrpSm/MrpStpiStatusReactor.h"
#include "quarn/Types.h"
#include "quarn/Ptr.h"
#include "stp/MstiPortStatus.h"
#include "stp/Status.h"
#include "velo/IntfId.h"

namespace Mrp {

// The spanning-tree side of an engine: one watcher per spanning-tree
// instance, the last role seen per port, and what a role change asks of the
// port's registrations (Flush! or Re-declare!), which the owner carries out.
class MrpPortRoles {
 public:
  using Role = Stp::MstiPortStatus::Role;
  using RoleMap = std::map<Velo::IntfId, Role>;
  enum class RoleAction { none, flush, redeclare };

  // What judging a role needs from the engine.
  class Owner {
   public:
    // The topology that governs the port's base VLAN; std::range_error for
    // a base VLAN outside 1..4094.
    virtual Quarn::String baseSpanningTreeTopo(const Velo::IntfId& intfId) const = 0;
    // Whether packet access is wanted on the port.
    virtual bool portWanted(const Velo::IntfId& intfId) const = 0;
    // Whether role changes act: the engine is active and not in standby.
    virtual bool rolesAct() const = 0;
    // Flush! or Re-declare! for every attribute type of the port.
    virtual void roleActionIs(const Velo::IntfId& intfId, RoleAction action) = 0;

   protected:
    ~Owner() = default;
  };

  // Only the alternate role flushes: another blocking role does nothing.
  static RoleAction roleActionOf(Role oldRole, Role newRole);

  // Watches every instance present in `stpStatus`. Roles seen before
  // judgingIs() are kept and judged then, in the order they were seen.
  MrpPortRoles(Quarn::Ptr<Stp::Status> stpStatus, Owner& owner);
  MrpPortRoles(const MrpPortRoles&) = delete;
  MrpPortRoles& operator=(const MrpPortRoles&) = delete;
  ~MrpPortRoles();

  // The owner can judge roles from now on.
  void judgingIs();
  bool judging() const { return judging_; }
  // Silences every watcher, so nothing reaches an owner that is going away.
  void detach();

  // The last role seen per port, also while in standby.
  const RoleMap& oldPortRole() const { return oldPortRole_; }
  // Judges the role of a port in a tree instance of a spanning-tree
  // instance: only the topology of the port's base VLAN counts, and only on
  // a port wanted for packet access.
  void handleRole(const std::string& portName, const std::string& mstiName, const std::string& stpiName);

  MrpStpiStatusReactor* stpiStatus(const std::string& name) const;
  std::size_t stpiStatusCount() const { return stpiStatus_.size(); }
  void stpiStatusIs(const std::string& name);
  void stpiStatusDel(const std::string& name) { stpiStatus_.erase(name); }
  // An instance appeared in or left the spanning-tree status.
  void handleStpiStatus(const std::string& name);

 private:
  struct RoleSeen {
    std::string portName;
    std::string mstiName;
    std::string stpiName;
  };
  // The port's role in the named tree, if it is there.
  Quarn::Ptr<Stp::MstiPortStatus> portStatus(const RoleSeen& seen) const;
  void judge(const RoleSeen& seen);

  Quarn::Ptr<Stp::Status> stpStatus_;
  Owner& owner_;
  MrpStpStatusReactor stpStatusReactor_;
  std::map<std::string, std::unique_ptr<MrpStpiStatusReactor>> stpiStatus_;
  RoleMap oldPortRole_;
  bool judging_ = false;
  std::vector<RoleSeen> deferred_;
};

}  // namespace Mrp
