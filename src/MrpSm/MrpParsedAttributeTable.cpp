#include "MrpSm/MrpParsedAttributeTable.h"

namespace Mrp {

namespace {

constexpr std::size_t kInitialSlots = 64;

}  // namespace

MrpParsedAttributeTable::MrpParsedAttributeTable() : slots_(kInitialSlots) {}

// Linear probing from the key's hash, past erased slots.
std::size_t MrpParsedAttributeTable::slotOf(const MrpParsedAttributeKey& key) const {
  const std::size_t mask = slots_.size() - 1;
  std::size_t i = key.hash() & mask;
  while ((slots_[i].attribute && !(slots_[i].key == key)) || slots_[i].erased) i = (i + 1) & mask;
  return i;
}

Quarn::Ptr<MrpParsedAttribute> MrpParsedAttributeTable::find(const MrpParsedAttributeKey& key) const {
  return slots_[slotOf(key)].attribute;
}

Quarn::Ptr<MrpParsedAttribute> MrpParsedAttributeTable::findOrCreate(const MrpParsedAttributeKey& key) {
  std::size_t i = slotOf(key);
  if (slots_[i].attribute) return slots_[i].attribute;
  if ((size_ + erased_ + 1) * 2 > slots_.size()) {
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
  slots_[i] = {key, attribute, false};
  ++size_;
  return attribute;
}

void MrpParsedAttributeTable::erase(const MrpParsedAttributeKey& key) {
  Slot& slot = slots_[slotOf(key)];
  if (!slot.attribute) return;
  doRecycle(std::move(slot.attribute));
  slot.erased = true;
  --size_;
  ++erased_;
}

void MrpParsedAttributeTable::clear() {
  if (size_ == 0 && erased_ == 0) return;
  for (Slot& slot : slots_) {
    if (slot.attribute) doRecycle(std::move(slot.attribute));
    slot.erased = false;
  }
  size_ = 0;
  erased_ = 0;
}

// Twice the slots when the live records need them, else the same number:
// either way without the erased markers.
void MrpParsedAttributeTable::doGrow() {
  const std::size_t slots = (size_ + 1) * 2 > slots_.size() / 2 ? slots_.size() * 2 : slots_.size();
  std::vector<Slot> old(slots);
  old.swap(slots_);
  erased_ = 0;
  for (Slot& slot : old) {
    if (slot.attribute) slots_[slotOf(slot.key)] = std::move(slot);
  }
}

void MrpParsedAttributeTable::doRecycle(Quarn::Ptr<MrpParsedAttribute> attribute) {
  if (attribute->references() == 1) spare_.push_back(std::move(attribute));
}

}  // namespace Mrp
