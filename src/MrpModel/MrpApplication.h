#pragma once

#include <cstdint>
#include <ostream>

namespace Mrp {

// Which MRP application an engine serves; the codes are those of the wire.
// One list gives both the codes and their printable names.
#define MRP_APPLICATION_VALUES(X) \
  X(msrp, 1, "MSRP") \
  X(mvrp, 2, "MVRP")

enum class MrpApplication : std::uint8_t {
#define MRP_ENUM_VALUE(name, code, text) name = code,
  MRP_APPLICATION_VALUES(MRP_ENUM_VALUE)
#undef MRP_ENUM_VALUE
};

// The value's name; a code without a name prints as its number.
std::ostream& operator<<(std::ostream& os, MrpApplication value);
// The value's name; its number for a code without one.
const char* enumText(MrpApplication value);

}  // namespace Mrp
