#pragma once

#include <cstddef>
#include <vector>

#include "MrpModel/MrpParsedAttribute.h"
#include "MrpModel/MrpParsedAttributeKey.h"
#include "quarn/Ptr.h"

namespace Mrp {

// The attributes collected from the current frame, by key: an open-addressed
// hash table over records that are recycled from frame to frame, so that
// steady traffic collects without allocating. A record somebody else still
// holds is never recycled.
//
// Keys hash to themselves, so a vector's consecutive keys fill consecutive
// slots and are collected in memory order. An erased key leaves a marker
// that lookups pass over (shifting the rest of such a run back would cost
// the run's length); the markers go when the table is cleared for the next
// frame or grows.
class MrpParsedAttributeTable {
 public:
  MrpParsedAttributeTable();

  std::size_t size() const { return size_; }
  bool empty() const { return size_ == 0; }

  // Null when absent.
  Quarn::Ptr<MrpParsedAttribute> find(const MrpParsedAttributeKey& key) const;
  // The record of `key`, a fresh one (no event, no value octets) when absent.
  Quarn::Ptr<MrpParsedAttribute> findOrCreate(const MrpParsedAttributeKey& key);
  void erase(const MrpParsedAttributeKey& key);
  void clear();

 private:
  struct Slot {
    MrpParsedAttributeKey key;
    Quarn::Ptr<MrpParsedAttribute> attribute;  // null: free, or erased when `erased`
    bool erased = false;
  };

  // The slot holding `key`, or the free slot where its probe ended.
  std::size_t slotOf(const MrpParsedAttributeKey& key) const;
  void doGrow();
  // Keeps a record for reuse unless somebody else holds it.
  void doRecycle(Quarn::Ptr<MrpParsedAttribute> attribute);

  std::vector<Slot> slots_;  // a power of two of them, at most half used or erased
  std::size_t size_ = 0;
  std::size_t erased_ = 0;
  std::vector<Quarn::Ptr<MrpParsedAttribute>> spare_;
};

}  // namespace Mrp
