#pragma once

#include <cstdint>
#include <ostream>

namespace Mrp {

// Result of one level of the MRPDU parse.
#define MRP_PARSE_STATUS_VALUES(X)     \
  X(parseContinue, 0, "parseContinue") \
  X(parseEndOfPdu, 1, "parseEndOfPdu") \
  X(parseMalformed, 2, "parseMalformed")

enum class MrpParseStatus : std::uint8_t {
#define MRP_ENUM_VALUE(name, code, text) name = code,
  MRP_PARSE_STATUS_VALUES(MRP_ENUM_VALUE)
#undef MRP_ENUM_VALUE
};

// The value's name; a code without a name prints as its number.
std::ostream& operator<<(std::ostream& os, MrpParseStatus value);
// The value's name; its number for a code without one.
const char* enumText(MrpParseStatus value);

}  // namespace Mrp
