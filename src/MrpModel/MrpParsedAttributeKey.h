#pragma once

#include <cstdint>
#include <functional>
#include <ostream>

namespace Mrp {

// Identity of one attribute received in the current frame: its type and its
// 64-bit key. Ordered by type, then key.
struct MrpParsedAttributeKey {
  std::uint8_t attributeType = 0;
  std::uint64_t attributeKey = 0;

  std::size_t hash() const {
    return std::hash<std::uint64_t>{}(attributeKey) ^ (std::size_t{attributeType} * 0x9e3779b97f4a7c15ULL);
  }

  friend bool operator==(const MrpParsedAttributeKey&, const MrpParsedAttributeKey&) = default;
  friend auto operator<=>(const MrpParsedAttributeKey&, const MrpParsedAttributeKey&) = default;
};

std::ostream& operator<<(std::ostream& os, const MrpParsedAttributeKey& key);

}  // namespace Mrp

template <>
struct std::hash<Mrp::MrpParsedAttributeKey> {
  std::size_t operator()(const Mrp::MrpParsedAttributeKey& key) const noexcept { return key.hash(); }
};
