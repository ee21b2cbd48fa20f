#include "MrpSm/MrpAttrIter.h"

#include <sstream>

#include "MrpModel/MrpValueText.h"

namespace Mrp {

namespace {

constexpr std::string_view kType = "Mrp::MrpAttrIter::Key";

}  // namespace

std::string MrpAttrIter::Key::stringValue() const {
  std::ostringstream text;
  text << "Value('" << kType << "', ** {'intfId': " << intfId
       << ", 'attributeType': " << static_cast<unsigned>(attributeType) << "})";
  return text.str();
}

std::optional<MrpAttrIter::Key> MrpAttrIter::Key::fromString(std::string_view text) {
  const auto fields = mrpValueFields(text, kType, {"intfId", "attributeType"});
  if (!fields) return std::nullopt;
  const auto attributeType = mrpUnsignedFromText<std::uint8_t>((*fields)[1]);
  if (!attributeType) return std::nullopt;
  return Key{Velo::IntfId(std::string((*fields)[0])), *attributeType};
}

void MrpAttrIter::attributeKeyIs(std::uint64_t attributeKey, bool present) {
  if (present) {
    attributeKeys_.insert(attributeKey);
  } else {
    attributeKeys_.erase(attributeKey);
  }
}

std::ostream& operator<<(std::ostream& os, const MrpAttrIter::Key& key) { return os << key.stringValue(); }

}  // namespace Mrp
