#include "MrpMsrp/MsrpTalkerFailedAttribute.h"

#include "MrpModel/MrpValueText.h"

namespace Mrp {

namespace {

constexpr std::string_view kType = "Mrp::MsrpTalkerFailedAttribute";

}  // namespace

std::ostream& operator<<(std::ostream& os, const MsrpTalkerFailedAttribute& value) {
  return os << "Value('" << kType << "', ** {'talkerAdvertiseAttribute': " << value.talkerAdvertiseAttribute()
            << ", 'failureInformation': " << value.failureInformation() << "})";
}

std::optional<MsrpTalkerFailedAttribute> MsrpTalkerFailedAttribute::fromString(std::string_view text) {
  const auto fields = mrpValueFields(text, kType, {"talkerAdvertiseAttribute", "failureInformation"});
  if (!fields) return std::nullopt;
  const auto talker = MsrpTalkerAdvertiseAttribute::fromString((*fields)[0]);
  const auto failure = FailureInformation::fromString((*fields)[1]);
  if (!talker || !failure) return std::nullopt;
  return MsrpTalkerFailedAttribute(*talker, *failure);
}

}  // namespace Mrp
