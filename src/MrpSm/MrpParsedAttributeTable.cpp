#include "MrpSm/MrpParsedAttributeTable.h"

namespace Mrp {

namespace {

constexpr std::size_t kInitialSlots = 64;

}  // namespace

MrpParsedAttributeTable::MrpParsedAttributeTable() : slots_(kInitialSlots) {}

// Linear probing from the key's hash: the slot holding the key, or the free
// slot where it would go.
std::size_t MrpParsedAttributeTable::slotOf(const MrpParsedAttributeKey& key) const {
  const std::size_t mask = slots_.size() - 1;
  std::size_t i = key.hash() & mask;
  while (slots_[i].attribute && !(slots_[i].key == key)) i = (i + 1) & mask;
  return i;
}

Quarn::Ptr<MrpParsedAttribute> MrpParsedAttributeTable::find(const MrpParsedAttributeKey& key) const {
  return slots_[slotOf(key)].attribute;
}

Quarn::Ptr<MrpParsedAttribute> MrpParsedAttributeTable::findOrCreate(const MrpParsedAttributeKey& key) {
  std::size_t i = slotOf(key);
  if (slots_[i].attribute) return slots_[i].attribute;
  if ((size_ + 1) * 2 > slots_.size()) {
    doGrow();
    i = slotOf(key);
  }
  Quarn::Ptr<MrpParsedAttribute> attribute;
  if (spare_.empty()) {
    attribute = new MrpParsedAttribute(key);
  } else {
    attribute = std::move(spare_.back());
    spare_.pop_back();
    attribute->reuse(key);
  }
  slots_[i] = {key, attribute};
  ++size_;
  return attribute;
}

// Backward-shift deletion: the entries after the freed slot move up so that
// every probe sequence stays unbroken.
void MrpParsedAttributeTable::erase(const MrpParsedAttributeKey& key) {
  std::size_t hole = slotOf(key);
  if (!slots_[hole].attribute) return;
  doRecycle(std::move(slots_[hole].attribute));
  --size_;
  const std::size_t mask = slots_.size() - 1;
  for (std::size_t j = (hole + 1) & mask; slots_[j].attribute; j = (j + 1) & mask) {
    const std::size_t home = slots_[j].key.hash() & mask;
    // Move j into the hole unless its home lies cyclically in (hole, j].
    const bool homeBetween = hole <= j ? (hole < home && home <= j) : (hole < home || home <= j);
    if (homeBetween) continue;
    slots_[hole] = std::move(slots_[j]);
    hole = j;
  }
}

void MrpParsedAttributeTable::clear() {
  if (size_ == 0) return;
  for (Slot& slot : slots_) {
    if (slot.attribute) doRecycle(std::move(slot.attribute));
  }
  size_ = 0;
}

void MrpParsedAttributeTable::doGrow() {
  std::vector<Slot> old(slots_.size() * 2);
  old.swap(slots_);
  for (Slot& slot : old) {
    if (slot.attribute) slots_[slotOf(slot.key)] = std::move(slot);
  }
}

void MrpParsedAttributeTable::doRecycle(Quarn::Ptr<MrpParsedAttribute> attribute) {
  if (attribute->references() == 1) spare_.push_back(std::move(attribute));
}

}  // namespace Mrp
