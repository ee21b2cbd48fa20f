#pragma once

#include <cstdint>
#include <optional>
#include <ostream>
#include <string_view>
#include <type_traits>

#include "MrpModel/MrpValueText.h"

namespace Mrp {

// The decimal text of a code, for an enumeration value without a name. The
// text of a code up to 255 lives as long as the program; that of a larger
// one until the next larger one is asked for on the same thread.
const char* mrpCodeText(std::uint64_t code);

}  // namespace Mrp

// Defines, from an enumeration's value list X(name, code, text), its text
// function and its output operator: the value's text, or its number when it
// has none.
#define MRP_ENUM_TEXT_CASE(name, code, text) \
  case EnumType::name:                       \
    return text;

#define MRP_ENUM_OUTPUT_OPERATOR(Enum, VALUES)                                             \
  const char* enumText(Enum value) {                                                       \
    using EnumType = Enum;                                                                 \
    switch (value) { VALUES(MRP_ENUM_TEXT_CASE) }                                          \
    return ::Mrp::mrpCodeText(static_cast<std::uint64_t>(value));                          \
  }                                                                                        \
  std::ostream& operator<<(std::ostream& os, Enum value) { return os << enumText(value); }

// Defines `std::optional<Enum> function(std::string_view)`, the inverse of the
// output operator: a value's text, or a number that fits the enumeration.
#define MRP_ENUM_FROM_TEXT_CASE(name, code, text) \
  if (input == text) return EnumType::name;

#define MRP_ENUM_FROM_TEXT(Enum, function, VALUES)                                     \
  std::optional<Enum> function(std::string_view input) {                               \
    using EnumType = Enum;                                                             \
    VALUES(MRP_ENUM_FROM_TEXT_CASE)                                                    \
    const auto code = ::Mrp::mrpUnsignedFromText<std::underlying_type_t<Enum>>(input); \
    if (!code) return std::nullopt;                                                    \
    return static_cast<Enum>(*code);                                                   \
  }
