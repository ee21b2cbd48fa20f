#pragma once

#include <string>

#include "stp/Status.h"

namespace Mrp {

class MrpSm;

// Watches the spanning-tree status for instances that come and go, so the
// engine keeps one instance watcher per instance.
class MrpStpStatusReactor : public Stp::Status::Notifiee {
 public:
  explicit MrpStpStatusReactor(MrpSm* mrpSm) : mrpSm_(mrpSm) {}

  // Null once the engine is going away.
  MrpSm* mrpSm() const { return mrpSm_; }
  void mrpSmIs(MrpSm* mrpSm) { mrpSm_ = mrpSm; }

  void onStpiStatus(const std::string& name) override;

 private:
  MrpSm* mrpSm_;
};

}  // namespace Mrp
