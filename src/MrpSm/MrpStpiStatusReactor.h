#pragma once

#include <map>
#include <memory>
#include <string>

#include "MrpSm/MrpMstiStatusReactor.h"
#include "quarn/Ptr.h"
#include "stp/StpiStatus.h"

namespace Mrp {

class MrpPortRoles;

// Watches one spanning-tree protocol instance status for the port roles: one
// watcher per tree instance (MSTI) in it, created and deleted as they come
// and go, each watching its ports' roles.
class MrpStpiStatusReactor : public Stp::StpiStatus::Notifiee {
 public:
  MrpStpiStatusReactor(Quarn::Ptr<Stp::StpiStatus> stpiStatus, MrpPortRoles* portRoles);

  const std::string& name() const { return stpiStatus_->name(); }
  const Quarn::Ptr<Stp::StpiStatus>& stpiStatus() const { return stpiStatus_; }
  // Null once the engine is going away.
  MrpPortRoles* portRoles() const { return portRoles_; }
  void portRolesIs(MrpPortRoles* portRoles) { portRoles_ = portRoles; }

  MrpMstiStatusReactor* mstiStatus(const std::string& name) const;
  std::size_t mstiStatusCount() const { return mstiStatus_.size(); }

  void onMstiStatus(const std::string& name) override;

 private:
  void mstiStatusIs(const std::string& name);

  Quarn::Ptr<Stp::StpiStatus> stpiStatus_;
  MrpPortRoles* portRoles_;
  std::map<std::string, std::unique_ptr<MrpMstiStatusReactor>> mstiStatus_;
};

}  // namespace Mrp
