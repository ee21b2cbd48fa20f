#include "MrpMsrp/FailureInformation.h"

#include "MrpModel/MrpValueText.h"

namespace Mrp {

namespace {

constexpr std::string_view kType = "Mrp::FailureInformation";

}  // namespace

std::ostream& operator<<(std::ostream& os, const FailureInformation& value) {
  return os << "Value('" << kType << "', ** {'bridgeId': " << value.bridgeId()
            << ", 'failureCode': " << static_cast<unsigned>(value.failureCode()) << "})";
}

std::optional<FailureInformation> FailureInformation::fromString(std::string_view text) {
  const auto fields = mrpValueFields(text, kType, {"bridgeId", "failureCode"});
  if (!fields) return std::nullopt;
  const auto bridgeId = mrpUnsignedFromText<std::uint64_t>((*fields)[0]);
  const auto failureCode = mrpUnsignedFromText<std::uint8_t>((*fields)[1]);
  if (!bridgeId || !failureCode) return std::nullopt;
  return FailureInformation(*bridgeId, *failureCode);
}

}  // namespace Mrp
