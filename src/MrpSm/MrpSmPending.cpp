#include "MrpSm/MrpSm.h"

#include <iterator>

namespace Mrp {

Quarn::Ptr<MrpAttrDatabase> MrpSm::addPendingAttr(const MrpAttribute& attribute) const {
  const auto at = addPendingLowerBound(attribute);
  return at != addPendingAttr_.end() && at->first == attribute ? at->second : nullptr;
}

MrpSm::AddPendingAttrMap::const_iterator MrpSm::addPendingLowerBound(const MrpAttribute& attribute) const {
  const AddPendingAttrMap& map = addPendingAttr_;
  // `at` is the lower bound when everything before it is less and it is not.
  const auto isLowerBound = [&](AddPendingAttrMap::const_iterator at) {
    return (at == map.end() || !(at->first < attribute)) && (at == map.begin() || std::prev(at)->first < attribute);
  };
  const auto remembered = [&](AddPendingAttrMap::const_iterator at) {
    addPendingFinger_ = {at, addPendingErasures_};
    return at;
  };
  // Past the last entry, the usual place of a new one, needs no step along the tree.
  if (map.empty() || std::prev(map.end())->first < attribute) return remembered(map.end());
  if (addPendingFinger_.erasures == addPendingErasures_) {
    const AddPendingAttrMap::const_iterator finger = addPendingFinger_.at;
    if (isLowerBound(finger)) return remembered(finger);
    if (finger != map.end() && isLowerBound(std::next(finger))) return remembered(std::next(finger));
  }
  return remembered(map.lower_bound(attribute));
}

void MrpSm::addPendingAttrIs(const MrpAttribute& attribute, Quarn::Ptr<MrpAttrDatabase> entry) {
  const AddPendingAttrMap::const_iterator bound = addPendingLowerBound(attribute);
  auto at = addPendingAttr_.erase(bound, bound);  // the same position, writable
  if (at != addPendingAttr_.end() && at->first == attribute) {
    at->second = std::move(entry);
  } else {
    at = addPendingAttr_.emplace_hint(at, attribute, std::move(entry));
  }
  addPendingFinger_ = {at, addPendingErasures_};
}

bool MrpSm::deletePendingAttr(const MrpAttribute& attribute) const {
  auto it = deletePendingAttr_.find(attribute);
  return it != deletePendingAttr_.end() && it->second;
}

// A stored attribute pending deletion is re-created as a fresh entry: its
// deletion is cancelled and the stored entry is overwritten when the
// addition is committed.
Quarn::Ptr<MrpAttrDatabase> MrpSm::addAttrToAddPending(const MrpAttribute& attribute) {
  const auto& [intfId, attributeType, key] = attribute;
  if (Quarn::Ptr<MrpAttrDatabase> stored = mrpGetAttrFromDatabase(intfId, attributeType, key, false)) return stored;
  Quarn::Ptr<MrpAttrDatabase> entry = new MrpAttrDatabase(key);
  addPendingAttrIs(attribute, entry);
  deletePendingAttrDel(attribute);
  addToAttrIter(intfId, attributeType, key);
  mrpDatabaseAddSm_->doUpdateReviewTimer();
  return entry;
}

void MrpSm::removeAttrFromAddPending(const MrpAttribute& attribute) {
  const auto& [intfId, attributeType, key] = attribute;
  if (!mrpGetAttrFromDatabase(intfId, attributeType, key, false) && addPendingAttr(attribute)) {
    removeFromAttrIter(intfId, attributeType, key);
  }
  addPendingAttrDel(attribute);
}

void MrpSm::addAttrToDeletePending(const MrpAttribute& attribute) {
  const auto& [intfId, attributeType, key] = attribute;
  const Quarn::Ptr<MrpAttrDatabase> stored = mrpGetAttrFromDatabase(intfId, attributeType, key, false);
  if (!stored) {
    // Never committed: dropping the pending addition is the whole deletion.
    if (addPendingAttr(attribute)) removeAttrFromAddPending(attribute);
    return;
  }
  deletePendingAttrIs(attribute, true);
  removeAttrFromAddPending(attribute);
  mrpDatabaseDeleteSm_->doUpdateReviewTimer();
}

}  // namespace Mrp
