#pragma once

#include <cstdint>
#include <ostream>

namespace Mrp {

// Event handed to the registrar machine.
// One list gives both the codes and their printable names.
#define MRP_REGISTRAR_EVENT_VALUES(X) \
  X(rNew, 0, "rNew!") \
  X(rJoinIn, 1, "rJoinIn!") \
  X(rJoinMt, 2, "rJoinMt!") \
  X(rLv, 3, "rLv!") \
  X(regLvAll_, 4, "rLA!") \
  X(txLvAll, 5, "txLA!") \
  X(redeclare, 6, "Re-declare!") \
  X(flush, 7, "Flush!") \
  X(leaveTimer, 8, "leavetimer!") \
  X(noEvent, 9, "noEvent")

enum class MrpRegistrarEvent : std::uint8_t {
#define MRP_ENUM_VALUE(name, code, text) name = code,
  MRP_REGISTRAR_EVENT_VALUES(MRP_ENUM_VALUE)
#undef MRP_ENUM_VALUE
};

// The value's name; a code without a name prints as its number.
std::ostream& operator<<(std::ostream& os, MrpRegistrarEvent value);
// The value's name; its number for a code without one.
const char* enumText(MrpRegistrarEvent value);

}  // namespace Mrp
