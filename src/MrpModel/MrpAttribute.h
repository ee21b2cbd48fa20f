#pragma once

#include <cstdint>
#include <functional>
#include <ostream>

#include "velo/IntfId.h"

namespace Mrp {

// Identity of one registration: port, attribute type and 64-bit key.
struct MrpAttribute {
  Velo::IntfId intfId;
  std::uint8_t attributeType = 0;
  std::uint64_t attributeKey = 0;

  friend bool operator==(const MrpAttribute&, const MrpAttribute&) = default;
  // Port, then type, then key: batches commit port by port.
  friend auto operator<=>(const MrpAttribute&, const MrpAttribute&) = default;
};

std::ostream& operator<<(std::ostream& os, const MrpAttribute& attribute);

}  // namespace Mrp

template <>
struct std::hash<Mrp::MrpAttribute> {
  std::size_t operator()(const Mrp::MrpAttribute& a) const noexcept {
    std::size_t h = std::hash<Velo::IntfId>{}(a.intfId);
    h ^= std::hash<std::uint64_t>{}(a.attributeKey) + 0x9e3779b97f4a7c15ULL + (h << 6) + (h >> 2);
    h ^= std::hash<std::uint8_t>{}(a.attributeType) + 0x9e3779b97f4a7c15ULL + (h << 6) + (h >> 2);
    return h;
  }
};
