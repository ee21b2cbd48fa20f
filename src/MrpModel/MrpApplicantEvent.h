#pragma once

#include <cstdint>
#include <ostream>

namespace Mrp {

// Event handed to the applicant machine.
// One list gives both the codes and their printable names.
#define MRP_APPLICANT_EVENT_VALUES(X) \
  X(newReq, 0, "New!") \
  X(joinReq, 1, "Join!") \
  X(lvReq, 2, "Lv!") \
  X(redeclare, 3, "Re-declare!") \
  X(flush, 4, "Flush!") \
  X(rNew, 5, "rNew!") \
  X(rJoinIn, 6, "rJoinIn!") \
  X(rIn, 7, "rIn!") \
  X(rJoinMt, 8, "rJoinMt!") \
  X(rMt, 9, "rMt!") \
  X(rLv, 10, "rLv!") \
  X(rxLvAll_, 11, "rLA!") \
  X(txLvAll, 12, "txLA!") \
  X(noEvent, 13, "noEvent")

enum class MrpApplicantEvent : std::uint8_t {
#define MRP_ENUM_VALUE(name, code, text) name = code,
  MRP_APPLICANT_EVENT_VALUES(MRP_ENUM_VALUE)
#undef MRP_ENUM_VALUE
};

// The value's name; a code without a name prints as its number.
std::ostream& operator<<(std::ostream& os, MrpApplicantEvent value);
// The value's name; its number for a code without one.
const char* enumText(MrpApplicantEvent value);

}  // namespace Mrp
