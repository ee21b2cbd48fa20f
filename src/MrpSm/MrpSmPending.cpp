#include "MrpSm/MrpSm.h"
#include "quarn/Collection.h"

namespace Mrp {

Quarn::Ptr<MrpAttrDatabase> MrpSm::addPendingAttr(const MrpAttribute& attribute) const {
  return Quarn::entryOf(addPendingAttr_, attribute);
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
