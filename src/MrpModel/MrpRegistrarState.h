#pragma once

#include <cstdint>
#include <ostream>

namespace Mrp {

// Registrar state of one attribute.
// One list gives both the codes and their printable names.
#define MRP_REGISTRAR_STATE_VALUES(X) \
  X(in, 0, "IN") \
  X(lv, 1, "LV") \
  X(mt, 2, "MT")

enum class MrpRegistrarState : std::uint8_t {
#define MRP_ENUM_VALUE(name, code, text) name = code,
  MRP_REGISTRAR_STATE_VALUES(MRP_ENUM_VALUE)
#undef MRP_ENUM_VALUE
};

// The value's name; a code without a name prints as its number.
std::ostream& operator<<(std::ostream& os, MrpRegistrarState value);
// The value's name; its number for a code without one.
const char* enumText(MrpRegistrarState value);

}  // namespace Mrp
