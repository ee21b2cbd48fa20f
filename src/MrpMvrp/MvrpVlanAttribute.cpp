#include "MrpMvrp/MvrpVlanAttribute.h"

#include "MrpModel/MrpValueText.h"

namespace Mrp {

namespace {

constexpr std::string_view kType = "Mrp::MvrpVlanAttribute";

}  // namespace

std::ostream& operator<<(std::ostream& os, const MvrpVlanAttribute& value) {
  return os << "Value('" << kType << "', ** {'vlanId': " << value.vlanId() << "})";
}

std::optional<MvrpVlanAttribute> MvrpVlanAttribute::fromString(std::string_view text) {
  const auto fields = mrpValueFields(text, kType, {"vlanId"});
  if (!fields) return std::nullopt;
  const auto vlanId = mrpUnsignedFromText<std::uint16_t>((*fields)[0]);
  if (!vlanId) return std::nullopt;
  return MvrpVlanAttribute(*vlanId);
}

}  // namespace Mrp
