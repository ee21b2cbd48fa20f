#include "MrpMsrp/MsrpListenerAttribute.h"

#include "MrpModel/MrpValueText.h"

namespace Mrp {

namespace {

constexpr std::string_view kType = "Mrp::MsrpListenerAttribute";

}  // namespace

std::ostream& operator<<(std::ostream& os, const MsrpListenerAttribute& value) {
  return os << "Value('" << kType << "', ** {'streamId': " << value.streamId()
            << ", 'listenerEvent': " << value.listenerEvent() << "})";
}

std::optional<MsrpListenerAttribute> MsrpListenerAttribute::fromString(std::string_view text) {
  const auto fields = mrpValueFields(text, kType, {"streamId", "listenerEvent"});
  if (!fields) return std::nullopt;
  const auto streamId = mrpUnsignedFromText<std::uint64_t>((*fields)[0]);
  const auto listenerEvent = msrpListenerEventFromText((*fields)[1]);
  if (!streamId || !listenerEvent) return std::nullopt;
  return MsrpListenerAttribute(*streamId, *listenerEvent);
}

}  // namespace Mrp
