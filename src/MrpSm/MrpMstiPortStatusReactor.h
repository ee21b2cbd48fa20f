#pragma once

#include <string>

#include "quarn/Ptr.h"
#include "stp/MstiPortStatus.h"

namespace Mrp {

class MrpMstiStatusReactor;

// Watches the role of one port in one spanning-tree instance for the engine.
// It evaluates the role when it is created and on every change.
class MrpMstiPortStatusReactor : public Stp::MstiPortStatus::Notifiee {
 public:
  MrpMstiPortStatusReactor(Quarn::Ptr<Stp::MstiPortStatus> mstiPortStatus, MrpMstiStatusReactor* parent);

  // The port's name.
  const std::string& name() const { return mstiPortStatus_->name(); }
  MrpMstiStatusReactor* parent() const { return parent_; }

  void onRole() override;

 private:
  Quarn::Ptr<Stp::MstiPortStatus> mstiPortStatus_;
  MrpMstiStatusReactor* parent_;
};

}  // namespace Mrp
