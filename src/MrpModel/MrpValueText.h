#pragma once

#include <array>
#include <charconv>
#include <cstddef>
#include <optional>
#include <span>
#include <string_view>
#include <type_traits>

namespace Mrp {

// Reading the text form of a value record,
//   Value('<type>', ** {'<field>': <value>, '<field>': <value>})
// where a field's value may itself be such a text form.

// Fills values[i] with the text of the field names[i]. False, with `values`
// unspecified, unless `text` is the text form of `typeName` with exactly the
// fields `names` (in any order, each once).
bool mrpValueFieldsOf(std::string_view text, std::string_view typeName, std::span<const std::string_view> names,
                      std::span<std::string_view> values);

// The texts of the fields `names` of the text form of `typeName`, in the order
// of `names`; nullopt when `text` is not that text form.
template <std::size_t N>
std::optional<std::array<std::string_view, N>> mrpValueFields(std::string_view text, std::string_view typeName,
                                                              const std::string_view (&names)[N]) {
  std::array<std::string_view, N> values;
  if (!mrpValueFieldsOf(text, typeName, names, values)) return std::nullopt;
  return values;
}

// A decimal number that fits T and spans the whole text; nullopt otherwise.
template <class T>
std::optional<T> mrpUnsignedFromText(std::string_view text) {
  static_assert(std::is_unsigned_v<T>);
  T value{};
  const char* end = text.data() + text.size();
  const auto [at, ec] = std::from_chars(text.data(), end, value);
  if (text.empty() || ec != std::errc() || at != end) return std::nullopt;
  return value;
}

}  // namespace Mrp
