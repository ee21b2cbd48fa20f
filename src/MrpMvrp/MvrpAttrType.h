#pragma once

#include <cstdint>
#include <optional>
#include <ostream>
#include <string_view>

namespace Mrp {

// The MVRP attribute types; the codes are those of the wire.
#define MRP_MVRP_ATTR_TYPE_VALUES(X) \
  X(invalidAttr, 0, "invalidAttr")   \
  X(vlanVector, 1, "vlanVector")

enum class MvrpAttrType : std::uint8_t {
#define MRP_ENUM_VALUE(name, code, text) name = code,
  MRP_MVRP_ATTR_TYPE_VALUES(MRP_ENUM_VALUE)
#undef MRP_ENUM_VALUE
};

// The value's name; a code without a name prints as its number.
std::ostream& operator<<(std::ostream& os, MvrpAttrType value);
// The value's name; its number for a code without one.
const char* enumText(MvrpAttrType value);
// The value named by its text or its number; nullopt for anything else.
std::optional<MvrpAttrType> mvrpAttrTypeFromText(std::string_view text);

}  // namespace Mrp
