#include "MrpMsrp/MsrpTalkerAdvertiseAttribute.h"

#include "MrpModel/MrpValueText.h"

namespace Mrp {

namespace {

constexpr std::string_view kType = "Mrp::MsrpTalkerAdvertiseAttribute";

}  // namespace

std::ostream& operator<<(std::ostream& os, const MsrpTalkerAdvertiseAttribute& value) {
  return os << "Value('" << kType << "', ** {'streamId': " << value.streamId() << ", 'frame': " << value.frame()
            << ", 'tSpec': " << value.tSpec() << ", 'priorityAndRank': " << value.priorityAndRank()
            << ", 'accumulatedLatency': " << value.accumulatedLatency() << "})";
}

std::optional<MsrpTalkerAdvertiseAttribute> MsrpTalkerAdvertiseAttribute::fromString(std::string_view text) {
  const auto fields =
      mrpValueFields(text, kType, {"streamId", "frame", "tSpec", "priorityAndRank", "accumulatedLatency"});
  if (!fields) return std::nullopt;
  const auto streamId = mrpUnsignedFromText<std::uint64_t>((*fields)[0]);
  const auto frame = DataFrameParameters::fromString((*fields)[1]);
  const auto tSpec = Tspec::fromString((*fields)[2]);
  const auto priorityAndRank = PriorityAndRank::fromString((*fields)[3]);
  const auto accumulatedLatency = mrpUnsignedFromText<std::uint32_t>((*fields)[4]);
  if (!streamId || !frame || !tSpec || !priorityAndRank || !accumulatedLatency) return std::nullopt;
  return MsrpTalkerAdvertiseAttribute(*streamId, *frame, *tSpec, *priorityAndRank, *accumulatedLatency);
}

}  // namespace Mrp
