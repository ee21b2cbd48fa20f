#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <unordered_map>

#include "MrpModel/MrpApplication.h"
#include "MrpModel/MrpAttrDatabase.h"
#include "MrpModel/MrpAttribute.h"
#include "MrpModel/MrpIntfTypeApplicant.h"
#include "MrpModel/MrpStatus.h"
#include "MrpSm/MrpAttrIter.h"
#include "quarn/Ptr.h"
#include "velo/IntfId.h"

namespace Mrp {

class MrpDatabaseReviewSm;

// The registrations of one application as the engine sees them: the store
// in the status record, the additions and deletions not yet committed to
// it, and the index of keys per (port, attribute type).
//
// A pending addition is found only by look-ups that ask for it; a pending
// deletion makes the attribute read as absent at once. Each change to the
// pending maps asks its review machine, if any, to commit it later.
class MrpAttributeStore {
 public:
  using AttrIterMap = std::unordered_map<MrpAttrIter::Key, Quarn::Ptr<MrpAttrIter>>;
  // Ordered so batches go port by port in ascending type and key.
  using AddPendingAttrMap = std::map<MrpAttribute, Quarn::Ptr<MrpAttrDatabase>>;
  using DeletePendingAttrMap = std::map<MrpAttribute, bool>;

  MrpAttributeStore(Quarn::Ptr<MrpStatus> mrpStatus, MrpApplication application);
  MrpAttributeStore(const MrpAttributeStore&) = delete;
  MrpAttributeStore& operator=(const MrpAttributeStore&) = delete;

  const Quarn::Ptr<MrpStatus>& mrpStatus() const { return mrpStatus_; }
  MrpApplication application() const { return application_; }

  // The machines that commit additions and deletions; none while the
  // engine is in standby, and then nothing is asked of them.
  void reviewMachinesIs(MrpDatabaseReviewSm* addReview, MrpDatabaseReviewSm* deleteReview) {
    addReview_ = addReview;
    deleteReview_ = deleteReview;
  }

  // ---- Look-ups ----
  // The entry of an attribute, or null; creates nothing. A pending addition
  // is found only with `useLocalCopy`; an attribute pending deletion reads
  // as absent.
  Quarn::Ptr<MrpAttrDatabase> mrpGetAttrFromDatabase(const Velo::IntfId& intfId, std::uint8_t attributeType,
                                                     const std::uint64_t& key, bool useLocalCopy) const;
  // The same with the port and type's collection, looked up once by the
  // caller for many keys (null when the store has none): a received
  // vector's values. Pending maps are searched only when not empty.
  MrpAttrDatabase* entryIn(const MrpIntfTypeApplicant* registrations, const MrpAttribute& attribute) const {
    if (MrpAttrDatabase* pending = pendingAddition(attribute)) return pending;
    return storedIn(registrations, attribute);
  }
  // The store's entry, made with any missing level; used to commit additions.
  Quarn::Ptr<MrpAttrDatabase> createEntryInDatabase(const Velo::IntfId& intfId, std::uint8_t attributeType,
                                                    const std::uint64_t& key);
  // The store's collection of one port and type, or null; creates nothing.
  Quarn::Ptr<MrpIntfTypeApplicant> mrpIntfTypeApplicant(const Velo::IntfId& intfId,
                                                        std::uint8_t attributeType) const;

  // ---- Batched updates ----
  // The stored entry, or a new pending one that replaces any earlier
  // pending one and cancels a pending deletion.
  Quarn::Ptr<MrpAttrDatabase> addAttrToAddPending(const MrpAttribute& attribute);
  // Drops a pending addition; the index keeps a key that is also stored.
  void removeAttrFromAddPending(const MrpAttribute& attribute);
  // Queues a stored attribute for deletion; one never committed is simply
  // dropped, one neither stored nor pending is ignored.
  void addAttrToDeletePending(const MrpAttribute& attribute);

  const AddPendingAttrMap& addPendingAttrs() const { return addPendingAttr_; }
  Quarn::Ptr<MrpAttrDatabase> addPendingAttr(const MrpAttribute& attribute) const;
  void addPendingAttrIs(const MrpAttribute& attribute, Quarn::Ptr<MrpAttrDatabase> entry);
  void addPendingAttrDel(const MrpAttribute& attribute) {
    ++addPendingErasures_;
    addPendingAttr_.erase(attribute);
  }
  void addPendingAttrDelAll() {
    ++addPendingErasures_;
    addPendingAttr_.clear();
  }

  const DeletePendingAttrMap& deletePendingAttrs() const { return deletePendingAttr_; }
  // False when the attribute is not listed.
  bool deletePendingAttr(const MrpAttribute& attribute) const {
    return !deletePendingAttr_.empty() && deletePendingListed(attribute);
  }
  void deletePendingAttrIs(const MrpAttribute& attribute, bool pending) {
    deletePendingAttr_[attribute] = pending;
  }
  void deletePendingAttrDel(const MrpAttribute& attribute) {
    deletePendingAttr_.erase(attribute);
  }
  void deletePendingAttrDelAll() {
    deletePendingAttr_.clear();
  }

  // ---- The attribute index ----
  // A key joins with its first addition and leaves with its deletion; an
  // emptied (port, type) entry goes away.
  const AttrIterMap& mrpAttrIters() const { return mrpAttrIter_; }
  Quarn::Ptr<MrpAttrIter> mrpAttrIter(const MrpAttrIter::Key& key) const;
  Quarn::Ptr<MrpAttrIter> mrpAttrIterIs(const MrpAttrIter::Key& key);
  void mrpAttrIterDel(const MrpAttrIter::Key& key) { mrpAttrIter_.erase(key); }
  void mrpAttrIterDelAll() { mrpAttrIter_.clear(); }
  void addToAttrIter(const Velo::IntfId& intfId, std::uint8_t attributeType, const std::uint64_t& key);
  void removeFromAttrIter(const Velo::IntfId& intfId, std::uint8_t attributeType, const std::uint64_t& key);
  // Calls `handle(key)` for each key indexed for the port and type, in
  // ascending order. The walk survives changes to the index made on the
  // way: each step takes the first key after the one just handled.
  template <class Handle>
  void mrpAttrIterWalk(const Velo::IntfId& intfId, std::uint8_t attributeType, Handle&& handle);
  // Indexes every (port, type) of the store with its keys, so registrations
  // stored by an earlier active engine survive a switch from standby.
  void doRebuildAttrIter();

 private:
  // The stored entry, absent while its deletion is pending.
  MrpAttrDatabase* storedIn(const MrpIntfTypeApplicant* registrations, const MrpAttribute& attribute) const {
    if (!registrations) return nullptr;
    const Quarn::Ptr<MrpAttrDatabase>* stored = registrations->mrpAttributes().find(attribute.attributeKey);
    return stored && !deletePendingAttr(attribute) ? stored->ptr() : nullptr;
  }
  // The look-ups of the pending maps, which are mostly empty and then not searched.
  MrpAttrDatabase* pendingAddition(const MrpAttribute& attribute) const {
    return addPendingAttr_.empty() ? nullptr : pendingAdditionFound(attribute);
  }
  MrpAttrDatabase* pendingAdditionFound(const MrpAttribute& attribute) const;
  bool deletePendingListed(const MrpAttribute& attribute) const;
  // The first pending addition not before `attribute`, tried beside the
  // last one found before the whole map is searched.
  AddPendingAttrMap::const_iterator addPendingLowerBound(const MrpAttribute& attribute) const;
  void requestReview(MrpDatabaseReviewSm* review);

  Quarn::Ptr<MrpStatus> mrpStatus_;
  MrpApplication application_;
  MrpDatabaseReviewSm* addReview_ = nullptr;
  MrpDatabaseReviewSm* deleteReview_ = nullptr;
  AttrIterMap mrpAttrIter_;

  AddPendingAttrMap addPendingAttr_;
  // Where the last look-up or insertion of a pending addition ended, valid
  // while nothing has been erased since: a frame's values come in key order,
  // so the next one is found beside it, not by a walk down the tree.
  struct PendingFinger {
    AddPendingAttrMap::const_iterator at;
    std::uint64_t erasures = ~std::uint64_t{0};
  };
  mutable PendingFinger addPendingFinger_;
  std::uint64_t addPendingErasures_ = 0;
  DeletePendingAttrMap deletePendingAttr_;
};

template <class Handle>
void MrpAttributeStore::mrpAttrIterWalk(const Velo::IntfId& intfId, std::uint8_t attributeType,
                                        Handle&& handle) {
  const MrpAttrIter::Key iterKey{intfId, attributeType};
  std::optional<std::uint64_t> previous;
  for (;;) {
    const Quarn::Ptr<MrpAttrIter> iter = mrpAttrIter(iterKey);
    if (!iter) return;
    const auto& keys = iter->attributeKeys();
    const auto next = previous ? keys.upper_bound(*previous) : keys.begin();
    if (next == keys.end()) return;
    previous = *next;
    handle(*next);
  }
}

}  // namespace Mrp
