#pragma once

#include <ostream>

// Defines the output operator of an enumeration from its value list
// X(name, code, text): the value's text, or its number when it has none.
#define MRP_ENUM_OUTPUT_CASE(name, code, text) \
  case EnumType::name:                         \
    return os << text;

#define MRP_ENUM_OUTPUT_OPERATOR(Enum, VALUES)             \
  std::ostream& operator<<(std::ostream& os, Enum value) { \
    using EnumType = Enum;                                 \
    switch (value) { VALUES(MRP_ENUM_OUTPUT_CASE) }        \
    return os << static_cast<unsigned>(value);             \
  }
