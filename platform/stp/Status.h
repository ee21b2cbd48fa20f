#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "quarn/Notifiee.h"
#include "quarn/PtrMap.h"
#include "stp/StpiStatus.h"

namespace Stp {

// The spanning-tree mode code published in Status::mode().
using Mode = std::uint32_t;
// Multiple spanning trees, VLANs grouped into tree instances.
inline constexpr Mode kModeMstp = 0;
// One rapid spanning tree for all VLANs.
inline constexpr Mode kModeRstp = 2;
// One classic spanning tree for all VLANs.
inline constexpr Mode kModeStp = 3;
// No spanning-tree protocol; redundancy comes from backup port pairs.
inline constexpr Mode kModeBackup = 100;
// One rapid spanning tree per VLAN, its instance named by pvstInstanceName().
inline constexpr Mode kModePvst = 101;
// No spanning tree: every port forwards.
inline constexpr Mode kModeNone = 0xFFFFFFFF;

// The root of the spanning-tree state: the mode and the running instances.
class Status : public Quarn::PtrInterface {
 public:
  using StpiStatusMap = Quarn::PtrMap<std::string, StpiStatus>::Map;

  // onStpiStatus(name) reports an instance added or removed; changes inside
  // it are reported by the instance itself.
  class Notifiee : public Quarn::BaseNotifiee<Status> {
   public:
    virtual void onMode() {}
    virtual void onStpiStatus(const std::string& /*name*/) {}
  };

  Mode mode() const { return mode_; }
  void modeIs(Mode mode);

  // The instance `name`, created when absent.
  Quarn::Ptr<StpiStatus> stpiStatusIs(const std::string& name);
  // Null when absent.
  Quarn::Ptr<StpiStatus> stpiStatus(const std::string& name) const { return stpiStatus_.find(name); }
  // By value: `name` may be the key of the entry being removed.
  void stpiStatusDel(std::string name);
  std::size_t stpiStatusCount() const { return stpiStatus_.size(); }
  const StpiStatusMap& stpiStatuses() const { return stpiStatus_.map(); }

  void notifieeAdd(Notifiee* n) { notifiees_.add(n); }
  void notifieeDel(Notifiee* n) { notifiees_.remove(n); }

 private:
  void notifyStpiStatus(const std::string& name);

  Mode mode_ = kModeNone;
  Quarn::PtrMap<std::string, StpiStatus> stpiStatus_;
  Quarn::NotifieeList<Notifiee> notifiees_;
};

}  // namespace Stp
