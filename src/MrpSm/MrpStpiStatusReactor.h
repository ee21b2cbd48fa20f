#pragma once

#include <string>

#include "quarn/Ptr.h"
#include "stp/StpiStatus.h"

namespace Mrp {

class MrpSm;

// Watches one spanning-tree instance status for the engine.
class MrpStpiStatusReactor : public Stp::StpiStatus::Notifiee {
 public:
  MrpStpiStatusReactor(Quarn::Ptr<Stp::StpiStatus> stpiStatus, MrpSm* mrpSm);

  const std::string& name() const { return stpiStatus_->name(); }
  const Quarn::Ptr<Stp::StpiStatus>& stpiStatus() const { return stpiStatus_; }
  // Null once the engine is going away.
  MrpSm* mrpSm() const { return mrpSm_; }
  void mrpSmIs(MrpSm* mrpSm) { mrpSm_ = mrpSm; }

 private:
  Quarn::Ptr<Stp::StpiStatus> stpiStatus_;
  MrpSm* mrpSm_;
};

}  // namespace Mrp
