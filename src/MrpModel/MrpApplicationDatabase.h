#pragma once

#include <map>
#include <optional>

#include "MrpModel/MrpIntfApplicant.h"
#include "MrpModel/MrpLeaveAllKey.h"
#include "quarn/Ptr.h"
#include "quarn/Types.h"
#include "velo/IntfId.h"

namespace Mrp {

// All registrations of one application, by port, and the LeaveAll period
// currently scheduled for each port and attribute type.
class MrpApplicationDatabase : public Quarn::PtrInterface {
 public:
  using IntfMap = std::map<Velo::IntfId, Quarn::Ptr<MrpIntfApplicant>>;
  using LeaveAllTimeMap = std::map<MrpLeaveAllKey, Quarn::Seconds>;

  Quarn::Ptr<MrpIntfApplicant> attrDatabaseIs(const Velo::IntfId& intfId);
  Quarn::Ptr<MrpIntfApplicant> attrDatabase(const Velo::IntfId& intfId) const;
  void attrDatabaseDel(const Velo::IntfId& intfId) { attrDatabase_.erase(intfId); }
  const IntfMap& attrDatabases() const { return attrDatabase_; }

  std::optional<Quarn::Seconds> leaveAllTime(const MrpLeaveAllKey& key) const;
  void leaveAllTimeIs(const MrpLeaveAllKey& key, Quarn::Seconds seconds) { leaveAllTime_[key] = seconds; }
  void leaveAllTimeDel(const MrpLeaveAllKey& key) { leaveAllTime_.erase(key); }
  const LeaveAllTimeMap& leaveAllTimes() const { return leaveAllTime_; }

 private:
  IntfMap attrDatabase_;
  LeaveAllTimeMap leaveAllTime_;
};

}  // namespace Mrp
