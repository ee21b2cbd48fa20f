#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>

#include "quarn/Ptr.h"
#include "quarn/SortedMap.h"
#include "velo/IntfId.h"

namespace Mrp {

// The ordered set of attribute keys registered on one port for one
// attribute type, so a port's registrations are walked without touching the
// store of other ports.
class MrpAttrIter : public Quarn::PtrInterface {
 public:
  struct Key {
    Velo::IntfId intfId;
    std::uint8_t attributeType = 0;

    // "Value('Mrp::MrpAttrIter::Key', ** {'intfId': <port>, 'attributeType': <number>})"
    std::string stringValue() const;
    // The key whose text form is `text`; nullopt for any other text.
    static std::optional<Key> fromString(std::string_view text);

    friend bool operator==(const Key&, const Key&) = default;
    // By port, then attribute type.
    friend auto operator<=>(const Key&, const Key&) = default;
  };

  explicit MrpAttrIter(Key key) : key_(std::move(key)) {}

  const Key& key() const { return key_; }

  // Adds (true) or removes (false) one key.
  void attributeKeyIs(std::uint64_t attributeKey, bool present);
  bool attributeKey(std::uint64_t attributeKey) const { return attributeKeys_.contains(attributeKey); }
  // Ascending.
  const Quarn::SortedSet<std::uint64_t>& attributeKeys() const { return attributeKeys_; }

 private:
  Key key_;
  Quarn::SortedSet<std::uint64_t> attributeKeys_;
};

std::ostream& operator<<(std::ostream& os, const MrpAttrIter::Key& key);

}  // namespace Mrp

template <>
struct std::hash<Mrp::MrpAttrIter::Key> {
  std::size_t operator()(const Mrp::MrpAttrIter::Key& k) const noexcept {
    const std::size_t h = std::hash<Velo::IntfId>{}(k.intfId);
    return h ^ (std::hash<std::uint8_t>{}(k.attributeType) + 0x9e3779b97f4a7c15ULL + (h << 6) + (h >> 2));
  }
};
