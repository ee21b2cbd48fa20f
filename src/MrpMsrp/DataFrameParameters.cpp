#include "MrpMsrp/DataFrameParameters.h"

#include "MrpModel/MrpValueText.h"

namespace Mrp {

namespace {

constexpr std::string_view kType = "Mrp::DataFrameParameters";

}  // namespace

std::ostream& operator<<(std::ostream& os, const DataFrameParameters& value) {
  return os << "Value('" << kType << "', ** {'dmac': " << value.dmac() << ", 'vlanId': " << value.vlanId() << "})";
}

std::optional<DataFrameParameters> DataFrameParameters::fromString(std::string_view text) {
  const auto fields = mrpValueFields(text, kType, {"dmac", "vlanId"});
  if (!fields) return std::nullopt;
  const auto dmac = Velo::EthAddr::fromString((*fields)[0]);
  const auto vlanId = mrpUnsignedFromText<std::uint16_t>((*fields)[1]);
  if (!dmac || !vlanId) return std::nullopt;
  return DataFrameParameters(*dmac, *vlanId);
}

}  // namespace Mrp
