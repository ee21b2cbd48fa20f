#include "MrpModel/MrpValueText.h"

#include <algorithm>

namespace Mrp {

namespace {

// Consumes a text form from the front; every step fails rather than read
// past the end.
class ValueTextReader {
 public:
  explicit ValueTextReader(std::string_view text) : rest_(text) {}

  bool literal(std::string_view token) {
    skipSpace();
    if (!rest_.starts_with(token)) return false;
    rest_.remove_prefix(token.size());
    return true;
  }

  // A name in single quotes; names carry no quotes of their own.
  std::optional<std::string_view> quoted() {
    if (!literal("'")) return std::nullopt;
    const std::size_t close = rest_.find('\'');
    if (close == std::string_view::npos) return std::nullopt;
    const std::string_view name = rest_.substr(0, close);
    rest_.remove_prefix(close + 1);
    return name;
  }

  // A field's value: everything up to the ',' or '}' that ends it, skipping
  // over nested brackets and quoted names.
  std::optional<std::string_view> fieldValue() {
    skipSpace();
    int depth = 0;
    bool inQuote = false;
    std::size_t i = 0;
    for (; i < rest_.size(); ++i) {
      const char c = rest_[i];
      if (c == '\'') {
        inQuote = !inQuote;
      } else if (inQuote) {
        continue;
      } else if (c == '(' || c == '{' || c == '[') {
        ++depth;
      } else if (c == ')' || c == '}' || c == ']') {
        if (depth == 0 && c == '}') break;
        if (--depth < 0) return std::nullopt;
      } else if (c == ',' && depth == 0) {
        break;
      }
    }
    if (i == rest_.size()) return std::nullopt;
    std::string_view value = rest_.substr(0, i);
    rest_.remove_prefix(i);
    while (!value.empty() && value.back() == ' ') value.remove_suffix(1);
    if (value.empty()) return std::nullopt;
    return value;
  }

  bool atEnd() {
    skipSpace();
    return rest_.empty();
  }

 private:
  void skipSpace() {
    while (!rest_.empty() && rest_.front() == ' ') rest_.remove_prefix(1);
  }

  std::string_view rest_;
};

}  // namespace

bool mrpValueFieldsOf(std::string_view text, std::string_view typeName, std::span<const std::string_view> names,
                      std::span<std::string_view> values) {
  if (values.size() != names.size()) return false;
  ValueTextReader reader(text);
  if (!reader.literal("Value(") || reader.quoted() != typeName || !reader.literal(",") || !reader.literal("**") ||
      !reader.literal("{")) {
    return false;
  }
  std::size_t seen = 0;
  std::fill(values.begin(), values.end(), std::string_view());
  if (!reader.literal("}")) {
    do {
      const auto name = reader.quoted();
      if (!name || !reader.literal(":")) return false;
      const auto field = std::find(names.begin(), names.end(), *name);
      if (field == names.end()) return false;
      std::string_view& value = values[static_cast<std::size_t>(field - names.begin())];
      if (!value.empty()) return false;
      const auto fieldText = reader.fieldValue();
      if (!fieldText) return false;
      value = *fieldText;
      ++seen;
    } while (reader.literal(","));
    if (!reader.literal("}")) return false;
  }
  return seen == names.size() && reader.literal(")") && reader.atEnd();
}

}  // namespace Mrp
