#pragma once

#include <map>
#include <memory>
#include <string>

#include "MrpSm/MrpMstiPortStatusReactor.h"
#include "quarn/Ptr.h"
#include "stp/MstiStatus.h"

namespace Mrp {

class MrpStpiStatusReactor;

// Watches one spanning-tree instance (MSTI) for the engine: one port watcher
// per port entry, created and deleted as entries come and go.
class MrpMstiStatusReactor : public Stp::MstiStatus::Notifiee {
 public:
  MrpMstiStatusReactor(Quarn::Ptr<Stp::MstiStatus> mstiStatus, MrpStpiStatusReactor* parent);

  const std::string& name() const { return mstiStatus_->name(); }
  MrpStpiStatusReactor* parent() const { return parent_; }

  MrpMstiPortStatusReactor* mstiPortStatus(const std::string& name) const;
  std::size_t mstiPortStatusCount() const { return mstiPortStatus_.size(); }

  void onMstiPortStatus(const std::string& name) override;
  // A port watcher's role changed or it was just created.
  void handleRole(const std::string& portName) const;

 private:
  void mstiPortStatusIs(const std::string& name);

  Quarn::Ptr<Stp::MstiStatus> mstiStatus_;
  MrpStpiStatusReactor* parent_;
  std::map<std::string, std::unique_ptr<MrpMstiPortStatusReactor>> mstiPortStatus_;
};

}  // namespace Mrp
