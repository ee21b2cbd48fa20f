#pragma once

#include <cstddef>
#include <string>
#include <utility>

#include "quarn/Notifiee.h"
#include "quarn/PtrMap.h"
#include "stp/MstiStatus.h"

namespace Stp {

// One running spanning-tree protocol instance and its tree instances.
class StpiStatus : public Quarn::PtrInterface {
 public:
  using MstiStatusMap = Quarn::PtrMap<std::string, MstiStatus>::Map;

  // onMstiStatus(name) reports a tree instance added or removed; changes
  // inside it are reported by the instance itself.
  class Notifiee : public Quarn::BaseNotifiee<StpiStatus> {
   public:
    virtual void onMstiStatus(const std::string& /*name*/) {}
  };

  explicit StpiStatus(std::string name) : name_(std::move(name)) {}

  const std::string& name() const { return name_; }

  // The tree instance `name`, created when absent.
  Quarn::Ptr<MstiStatus> mstiStatusIs(const std::string& name);
  // Null when absent.
  Quarn::Ptr<MstiStatus> mstiStatus(const std::string& name) const { return mstiStatus_.find(name); }
  // By value: `name` may be the key of the entry being removed.
  void mstiStatusDel(std::string name);
  std::size_t mstiStatusCount() const { return mstiStatus_.size(); }
  const MstiStatusMap& mstiStatuses() const { return mstiStatus_.map(); }

  void notifieeAdd(Notifiee* n) { notifiees_.add(n); }
  void notifieeDel(Notifiee* n) { notifiees_.remove(n); }

 private:
  void notifyMstiStatus(const std::string& name);

  std::string name_;
  Quarn::PtrMap<std::string, MstiStatus> mstiStatus_;
  Quarn::NotifieeList<Notifiee> notifiees_;
};

}  // namespace Stp
