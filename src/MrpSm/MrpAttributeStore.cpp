#include "MrpSm/MrpAttributeStore.h"

#include <iterator>

#include "MrpSm/MrpDatabaseReviewSm.h"
#include "quarn/Collection.h"

namespace Mrp {

MrpAttributeStore::MrpAttributeStore(Quarn::Ptr<MrpStatus> mrpStatus, MrpApplication application)
    : mrpStatus_(std::move(mrpStatus)), application_(application) {}

Quarn::Ptr<MrpIntfTypeApplicant> MrpAttributeStore::mrpIntfTypeApplicant(const Velo::IntfId& intfId,
                                                                         std::uint8_t attributeType) const {
  const Quarn::Ptr<MrpApplicationDatabase> database = mrpStatus_->applicationDatabase(application_);
  if (!database) return nullptr;
  const Quarn::Ptr<MrpIntfApplicant> intf = database->attrDatabase(intfId);
  return intf ? intf->intfTypeApplicant(attributeType) : nullptr;
}

Quarn::Ptr<MrpAttrDatabase> MrpAttributeStore::mrpGetAttrFromDatabase(const Velo::IntfId& intfId,
                                                                      std::uint8_t attributeType,
                                                                      const std::uint64_t& key,
                                                                      bool useLocalCopy) const {
  const MrpAttribute attribute{intfId, attributeType, key};
  // A pending addition is found without walking down to the port and type.
  if (MrpAttrDatabase* pending = useLocalCopy ? pendingAddition(attribute) : nullptr) return pending;
  return storedIn(mrpIntfTypeApplicant(intfId, attributeType).ptr(), attribute);
}

Quarn::Ptr<MrpAttrDatabase> MrpAttributeStore::createEntryInDatabase(const Velo::IntfId& intfId,
                                                                     std::uint8_t attributeType,
                                                                     const std::uint64_t& key) {
  return mrpStatus_->applicationDatabaseIs(application_)
      ->attrDatabaseIs(intfId)
      ->intfTypeApplicantIs(attributeType)
      ->mrpAttributeIs(key);
}

Quarn::Ptr<MrpAttrDatabase> MrpAttributeStore::addPendingAttr(const MrpAttribute& attribute) const {
  return pendingAddition(attribute);
}

MrpAttrDatabase* MrpAttributeStore::pendingAdditionFound(const MrpAttribute& attribute) const {
  const auto at = addPendingLowerBound(attribute);
  return at != addPendingAttr_.end() && at->first == attribute ? at->second.ptr() : nullptr;
}

MrpAttributeStore::AddPendingAttrMap::const_iterator MrpAttributeStore::addPendingLowerBound(
    const MrpAttribute& attribute) const {
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

void MrpAttributeStore::addPendingAttrIs(const MrpAttribute& attribute, Quarn::Ptr<MrpAttrDatabase> entry) {
  const AddPendingAttrMap::const_iterator bound = addPendingLowerBound(attribute);
  auto at = addPendingAttr_.erase(bound, bound);  // the same position, writable
  if (at != addPendingAttr_.end() && at->first == attribute) {
    at->second = std::move(entry);
  } else {
    at = addPendingAttr_.emplace_hint(at, attribute, std::move(entry));
  }
  addPendingFinger_ = {at, addPendingErasures_};
}

bool MrpAttributeStore::deletePendingListed(const MrpAttribute& attribute) const {
  auto it = deletePendingAttr_.find(attribute);
  return it != deletePendingAttr_.end() && it->second;
}

// A stored attribute pending deletion is re-created as a fresh entry: its
// deletion is cancelled and the stored entry is overwritten when the
// addition is committed.
Quarn::Ptr<MrpAttrDatabase> MrpAttributeStore::addAttrToAddPending(const MrpAttribute& attribute) {
  const auto& [intfId, attributeType, key] = attribute;
  if (Quarn::Ptr<MrpAttrDatabase> stored = mrpGetAttrFromDatabase(intfId, attributeType, key, false)) return stored;
  Quarn::Ptr<MrpAttrDatabase> entry = new MrpAttrDatabase(key);
  addPendingAttrIs(attribute, entry);
  deletePendingAttrDel(attribute);
  addToAttrIter(intfId, attributeType, key);
  requestReview(addReview_);
  return entry;
}

void MrpAttributeStore::removeAttrFromAddPending(const MrpAttribute& attribute) {
  const auto& [intfId, attributeType, key] = attribute;
  if (!mrpGetAttrFromDatabase(intfId, attributeType, key, false) && addPendingAttr(attribute)) {
    removeFromAttrIter(intfId, attributeType, key);
  }
  addPendingAttrDel(attribute);
}

void MrpAttributeStore::addAttrToDeletePending(const MrpAttribute& attribute) {
  const auto& [intfId, attributeType, key] = attribute;
  const Quarn::Ptr<MrpAttrDatabase> stored = mrpGetAttrFromDatabase(intfId, attributeType, key, false);
  if (!stored) {
    // Never committed: dropping the pending addition is the whole deletion.
    if (addPendingAttr(attribute)) removeAttrFromAddPending(attribute);
    return;
  }
  deletePendingAttrIs(attribute, true);
  removeAttrFromAddPending(attribute);
  requestReview(deleteReview_);
}

void MrpAttributeStore::requestReview(MrpDatabaseReviewSm* review) {
  if (review) review->doUpdateReviewTimer();
}

Quarn::Ptr<MrpAttrIter> MrpAttributeStore::mrpAttrIter(const MrpAttrIter::Key& key) const {
  return Quarn::entryOf(mrpAttrIter_, key);
}

Quarn::Ptr<MrpAttrIter> MrpAttributeStore::mrpAttrIterIs(const MrpAttrIter::Key& key) {
  return Quarn::entryIs(mrpAttrIter_, key, [&key] { return new MrpAttrIter(key); });
}

void MrpAttributeStore::addToAttrIter(const Velo::IntfId& intfId, std::uint8_t attributeType,
                                      const std::uint64_t& key) {
  mrpAttrIterIs({intfId, attributeType})->attributeKeyIs(key, true);
}

void MrpAttributeStore::removeFromAttrIter(const Velo::IntfId& intfId, std::uint8_t attributeType,
                                           const std::uint64_t& key) {
  const MrpAttrIter::Key iterKey{intfId, attributeType};
  const Quarn::Ptr<MrpAttrIter> iter = mrpAttrIter(iterKey);
  if (!iter) return;
  iter->attributeKeyIs(key, false);
  if (iter->attributeKeys().empty()) mrpAttrIterDel(iterKey);
}

void MrpAttributeStore::doRebuildAttrIter() {
  Quarn::Ptr<MrpApplicationDatabase> database = mrpStatus_->applicationDatabase(application_);
  if (!database) return;
  for (const auto& [intfId, intfApplicant] : database->attrDatabases()) {
    for (const auto& [attributeType, typeApplicant] : intfApplicant->intfTypeApplicants()) {
      Quarn::Ptr<MrpAttrIter> iter = mrpAttrIterIs({intfId, attributeType});
      for (const auto& [attributeKey, entry] : typeApplicant->mrpAttributes()) iter->attributeKeyIs(attributeKey, true);
    }
  }
}

}  // namespace Mrp
