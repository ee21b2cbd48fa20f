#pragma once

#include <span>

#include <cstdint>

#include "MrpModel/MrpParsedAttributeKey.h"
#include "MrpModel/ValueIndex.h"
#include "MrpModel/ValueQueue.h"
#include "quarn/Ptr.h"

namespace Mrp {

// One attribute collected from the current frame: the last event received
// for it and its value octets (the FirstValue layout of its type, advanced to
// this value's position in the vector).
class MrpParsedAttribute : public Quarn::PtrInterface {
 public:
  explicit MrpParsedAttribute(const MrpParsedAttributeKey& key) : key_(key) {}

  const MrpParsedAttributeKey& key() const { return key_; }

  std::uint8_t attributeEvent() const { return attributeEvent_; }
  void attributeEventIs(std::uint8_t event) { attributeEvent_ = event; }

  const ValueQueue& attributeValues() const { return attributeValue_; }
  std::uint8_t attributeValue(ValueIndex index) const { return attributeValue_.at(index); }
  void attributeValueIs(ValueIndex index, std::uint8_t octet) { attributeValue_.is(index, octet); }
  void attributeValueEnq(std::uint8_t octet) { attributeValue_.enq(octet); }
  std::uint8_t attributeValueDeq() { return attributeValue_.deq(); }
  void attributeValueDel(ValueIndex index) { attributeValue_.del(index); }
  void attributeValueDelAll() { attributeValue_.delAll(); }
  // All the octets at once, from index 0.
  void attributeValueIs(std::span<const std::uint8_t> octets) { attributeValue_.assign(octets); }

 private:
  friend class MrpParsedAttributeTable;
  // A recycled record starts over for another key.
  void reuse(const MrpParsedAttributeKey& key) {
    key_ = key;
    attributeEvent_ = 0;
    attributeValue_.delAll();
  }

  MrpParsedAttributeKey key_;
  std::uint8_t attributeEvent_ = 0;
  ValueQueue attributeValue_;
};

}  // namespace Mrp
