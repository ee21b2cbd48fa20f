#pragma once

#include <map>
#include <optional>

#include "quarn/Notifiee.h"
#include "quarn/Ptr.h"
#include "quarn/Types.h"
#include "velo/IntfId.h"

namespace Mrp {

// The configuration an engine obeys. Every setter that changes a value
// notifies the engine's machines, which react to the new value.
class MrpConfig : public Quarn::PtrInterface {
 public:
  using IntfTimeMap = std::map<Velo::IntfId, Quarn::Seconds>;

  class Notifiee : public Quarn::BaseNotifiee<MrpConfig> {
   public:
    virtual void onLeaveTime() {}
    virtual void onIntfLeaveTime(const Velo::IntfId&) {}
    virtual void onLeaveAllTime() {}
    virtual void onIntfLeaveAllTime(const Velo::IntfId&) {}
    virtual void onTxLeaveAllExpiryTime() {}
    virtual void onMrpFlooding() {}
    virtual void onTimersEnabled() {}
  };

  // Defaults: the timer values of the standard (leave 0.6 s, LeaveAll 10 s),
  // timers on, no flooding. The agent owning the record may change them.
  static constexpr Quarn::Seconds kDefaultLeaveTime = 0.6;
  static constexpr Quarn::Seconds kDefaultLeaveAllTime = 10.0;

  Quarn::Seconds leaveTime() const { return leaveTime_; }
  void leaveTimeIs(Quarn::Seconds t);

  // Per-port periods; an absent port has none.
  std::optional<Quarn::Seconds> intfLeaveTime(const Velo::IntfId& intfId) const;
  void intfLeaveTimeIs(const Velo::IntfId& intfId, Quarn::Seconds t);
  void intfLeaveTimeDel(const Velo::IntfId& intfId);
  const IntfTimeMap& intfLeaveTimes() const { return intfLeaveTime_; }

  Quarn::Seconds leaveAllTime() const { return leaveAllTime_; }
  void leaveAllTimeIs(Quarn::Seconds t);

  std::optional<Quarn::Seconds> intfLeaveAllTime(const Velo::IntfId& intfId) const;
  void intfLeaveAllTimeIs(const Velo::IntfId& intfId, Quarn::Seconds t);
  void intfLeaveAllTimeDel(const Velo::IntfId& intfId);
  const IntfTimeMap& intfLeaveAllTimes() const { return intfLeaveAllTime_; }

  Quarn::Seconds txLeaveAllExpiryTime() const { return txLeaveAllExpiryTime_; }
  void txLeaveAllExpiryTimeIs(Quarn::Seconds t);

  bool mrpFlooding() const { return mrpFlooding_; }
  void mrpFloodingIs(bool flooding);

  bool timersEnabled() const { return timersEnabled_; }
  void timersEnabledIs(bool enabled);

  void notifieeAdd(Notifiee* n) { notifiees_.add(n); }
  void notifieeDel(Notifiee* n) { notifiees_.remove(n); }

 private:
  template <class T, class OnChange>
  void fieldIs(T& field, const T& value, OnChange onChange);
  void intfTimeIs(IntfTimeMap& map, const Velo::IntfId& intfId, Quarn::Seconds t,
                  void (Notifiee::*onChange)(const Velo::IntfId&));
  void intfTimeDel(IntfTimeMap& map, const Velo::IntfId& intfId, void (Notifiee::*onChange)(const Velo::IntfId&));

  Quarn::Seconds leaveTime_ = kDefaultLeaveTime;
  IntfTimeMap intfLeaveTime_;
  Quarn::Seconds leaveAllTime_ = kDefaultLeaveAllTime;
  IntfTimeMap intfLeaveAllTime_;
  Quarn::Seconds txLeaveAllExpiryTime_ = kDefaultLeaveTime;
  bool mrpFlooding_ = false;
  bool timersEnabled_ = true;
  Quarn::NotifieeList<Notifiee> notifiees_;
};

}  // namespace Mrp
