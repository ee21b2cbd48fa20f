#include "MrpModel/MrpApplicationDatabase.h"

#include "quarn/Collection.h"

namespace Mrp {

Quarn::Ptr<MrpIntfApplicant> MrpApplicationDatabase::attrDatabaseIs(const Velo::IntfId& intfId) {
  return Quarn::entryIs(attrDatabase_, intfId, [] { return new MrpIntfApplicant; });
}

Quarn::Ptr<MrpIntfApplicant> MrpApplicationDatabase::attrDatabase(const Velo::IntfId& intfId) const {
  return Quarn::entryOf(attrDatabase_, intfId);
}

std::optional<Quarn::Seconds> MrpApplicationDatabase::leaveAllTime(const MrpLeaveAllKey& key) const {
  auto it = leaveAllTime_.find(key);
  if (it == leaveAllTime_.end()) return std::nullopt;
  return it->second;
}

}  // namespace Mrp
