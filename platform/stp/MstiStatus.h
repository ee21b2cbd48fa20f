#pragma once

#include <cstddef>
#include <string>
#include <utility>

#include "quarn/Notifiee.h"
#include "quarn/PtrMap.h"
#include "stp/MstiPortStatus.h"

namespace Stp {

// One spanning-tree instance and the state of its ports.
class MstiStatus : public Quarn::PtrInterface {
 public:
  using MstiPortStatusMap = Quarn::PtrMap<std::string, MstiPortStatus>::Map;

  // onMstiPortStatus(name) reports a port entry added or removed; changes
  // inside an entry are reported by the entry itself.
  class Notifiee : public Quarn::BaseNotifiee<MstiStatus> {
   public:
    virtual void onMstiPortStatus(const std::string& /*name*/) {}
  };

  explicit MstiStatus(std::string name) : name_(std::move(name)) {}

  const std::string& name() const { return name_; }

  // The entry of port `name`, created when absent.
  Quarn::Ptr<MstiPortStatus> mstiPortStatusIs(const std::string& name);
  // Null when absent.
  Quarn::Ptr<MstiPortStatus> mstiPortStatus(const std::string& name) const { return mstiPortStatus_.find(name); }
  // By value: `name` may be the key of the entry being removed.
  void mstiPortStatusDel(std::string name);
  std::size_t mstiPortStatusCount() const { return mstiPortStatus_.size(); }
  const MstiPortStatusMap& mstiPortStatuses() const { return mstiPortStatus_.map(); }

  void notifieeAdd(Notifiee* n) { notifiees_.add(n); }
  void notifieeDel(Notifiee* n) { notifiees_.remove(n); }

 private:
  void notifyMstiPortStatus(const std::string& name);

  std::string name_;
  Quarn::PtrMap<std::string, MstiPortStatus> mstiPortStatus_;
  Quarn::NotifieeList<Notifiee> notifiees_;
};

}  // namespace Stp
