#pragma once

#include <cstdint>
#include <optional>
#include <ostream>
#include <string_view>

namespace Mrp {

// The MSRP attribute types; the codes are those of the wire.
#define MRP_MSRP_ATTR_TYPE_VALUES(X)         \
  X(invalidAttribute, 0, "invalidAttribute") \
  X(talkerAdvertise, 1, "talkerAdvertise")   \
  X(talkerFailed, 2, "talkerFailed")         \
  X(listenerVector, 3, "listenerVector")     \
  X(domainVector, 4, "domainVector")

enum class MsrpAttrType : std::uint8_t {
#define MRP_ENUM_VALUE(name, code, text) name = code,
  MRP_MSRP_ATTR_TYPE_VALUES(MRP_ENUM_VALUE)
#undef MRP_ENUM_VALUE
};

// The value's name; a code without a name prints as its number.
std::ostream& operator<<(std::ostream& os, MsrpAttrType value);
// The value's name; its number for a code without one.
const char* enumText(MsrpAttrType value);
// The value named by its text or its number; nullopt for anything else.
std::optional<MsrpAttrType> msrpAttrTypeFromText(std::string_view text);

}  // namespace Mrp
