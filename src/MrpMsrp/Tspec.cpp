#include "MrpMsrp/Tspec.h"

#include "MrpModel/MrpValueText.h"

namespace Mrp {

namespace {

constexpr std::string_view kType = "Mrp::Tspec";

}  // namespace

std::ostream& operator<<(std::ostream& os, const Tspec& value) {
  return os << "Value('" << kType << "', ** {'maxFrameSize': " << value.maxFrameSize()
            << ", 'maxIntervalFrames': " << value.maxIntervalFrames() << "})";
}

std::optional<Tspec> Tspec::fromString(std::string_view text) {
  const auto fields = mrpValueFields(text, kType, {"maxFrameSize", "maxIntervalFrames"});
  if (!fields) return std::nullopt;
  const auto maxFrameSize = mrpUnsignedFromText<std::uint16_t>((*fields)[0]);
  const auto maxIntervalFrames = mrpUnsignedFromText<std::uint16_t>((*fields)[1]);
  if (!maxFrameSize || !maxIntervalFrames) return std::nullopt;
  return Tspec(*maxFrameSize, *maxIntervalFrames);
}

}  // namespace Mrp
