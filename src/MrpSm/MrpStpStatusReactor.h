#pragma once

#include <string>

#include "stp/Status.h"

namespace Mrp {

class MrpPortRoles;

// Watches the spanning-tree status for instances that come and go, so the
// engine's port roles keep one instance watcher per instance.
class MrpStpStatusReactor : public Stp::Status::Notifiee {
 public:
  explicit MrpStpStatusReactor(MrpPortRoles* portRoles) : portRoles_(portRoles) {}

  // Null once the engine is going away.
  MrpPortRoles* portRoles() const { return portRoles_; }
  void portRolesIs(MrpPortRoles* portRoles) { portRoles_ = portRoles; }

  void onStpiStatus(const std::string& name) override;

 private:
  MrpPortRoles* portRoles_;
};

}  // namespace Mrp
