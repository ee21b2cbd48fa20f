#include "MrpMsrp/MsrpListenerStreamAttribute.h"

#include "MrpModel/MrpValueText.h"

namespace Mrp {

namespace {

constexpr std::string_view kType = "Mrp::MsrpListenerStreamAttribute";

}  // namespace

std::ostream& operator<<(std::ostream& os, const MsrpListenerStreamAttribute& value) {
  return os << "Value('" << kType << "', ** {'streamId': " << value.streamId() << "})";
}

std::optional<MsrpListenerStreamAttribute> MsrpListenerStreamAttribute::fromString(std::string_view text) {
  const auto fields = mrpValueFields(text, kType, {"streamId"});
  if (!fields) return std::nullopt;
  const auto streamId = mrpUnsignedFromText<std::uint64_t>((*fields)[0]);
  if (!streamId) return std::nullopt;
  return MsrpListenerStreamAttribute(*streamId);
}

}  // namespace Mrp
