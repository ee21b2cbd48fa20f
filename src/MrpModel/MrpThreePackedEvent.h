#pragma once

#include <cstdint>
#include <ostream>

namespace Mrp {

// Attribute event carried in a three-packed position of a vector.
// One list gives both the codes and their printable names.
#define MRP_THREE_PACKED_EVENT_VALUES(X) \
  X(newEvent, 0, "New") \
  X(joinIn, 1, "JoinIn") \
  X(in, 2, "In") \
  X(joinMt, 3, "JoinMt") \
  X(mt, 4, "Mt") \
  X(lv, 5, "Lv")

enum class MrpThreePackedEvent : std::uint8_t {
#define MRP_ENUM_VALUE(name, code, text) name = code,
  MRP_THREE_PACKED_EVENT_VALUES(MRP_ENUM_VALUE)
#undef MRP_ENUM_VALUE
};

// The value's name; a code without a name prints as its number.
std::ostream& operator<<(std::ostream& os, MrpThreePackedEvent value);
// The value's name; its number for a code without one.
const char* enumText(MrpThreePackedEvent value);

}  // namespace Mrp
