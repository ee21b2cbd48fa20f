#pragma once

#include <cstdint>
#include <ostream>

namespace Mrp {

// Applicant state of one attribute, in the column order of the applicant table.
// One list gives both the codes and their printable names.
#define MRP_APPLICANT_STATE_VALUES(X) \
  X(vo, 0, "VO") \
  X(vp, 1, "VP") \
  X(vn, 2, "VN") \
  X(an, 3, "AN") \
  X(aa, 4, "AA") \
  X(qa, 5, "QA") \
  X(la, 6, "LA") \
  X(ao, 7, "AO") \
  X(qo, 8, "QO") \
  X(ap, 9, "AP") \
  X(qp, 10, "QP") \
  X(lo, 11, "LO")

enum class MrpApplicantState : std::uint8_t {
#define MRP_ENUM_VALUE(name, code, text) name = code,
  MRP_APPLICANT_STATE_VALUES(MRP_ENUM_VALUE)
#undef MRP_ENUM_VALUE
};

// The value's name; a code without a name prints as its number.
std::ostream& operator<<(std::ostream& os, MrpApplicantState value);
// The value's name; its number for a code without one.
const char* enumText(MrpApplicantState value);

}  // namespace Mrp
