#include "MrpMsrp/PriorityAndRank.h"

#include "MrpModel/MrpValueText.h"

namespace Mrp {

namespace {

constexpr std::string_view kType = "Mrp::PriorityAndRank";

}  // namespace

std::ostream& operator<<(std::ostream& os, PriorityAndRank value) {
  return os << "Value('" << kType << "', ** {'priority': " << static_cast<unsigned>(value.priority())
            << ", 'rank': " << static_cast<unsigned>(value.rank()) << "})";
}

std::optional<PriorityAndRank> PriorityAndRank::fromString(std::string_view text) {
  const auto fields = mrpValueFields(text, kType, {"priority", "rank"});
  if (!fields) return std::nullopt;
  const auto priority = mrpUnsignedFromText<std::uint8_t>((*fields)[0]);
  const auto rank = mrpUnsignedFromText<std::uint8_t>((*fields)[1]);
  if (!priority || !rank || *priority > 7 || *rank > 1) return std::nullopt;
  return PriorityAndRank(*priority, *rank);
}

}  // namespace Mrp
