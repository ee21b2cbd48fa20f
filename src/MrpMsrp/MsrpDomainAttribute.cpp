#include "MrpMsrp/MsrpDomainAttribute.h"

#include "MrpModel/MrpValueText.h"

namespace Mrp {

namespace {

constexpr std::string_view kType = "Mrp::MsrpDomainAttribute";

}  // namespace

std::ostream& operator<<(std::ostream& os, const MsrpDomainAttribute& value) {
  return os << "Value('" << kType << "', ** {'srClassId': " << static_cast<unsigned>(value.srClassId())
            << ", 'srClassPriority': " << static_cast<unsigned>(value.srClassPriority())
            << ", 'srClassVID': " << value.srClassVID() << "})";
}

std::optional<MsrpDomainAttribute> MsrpDomainAttribute::fromString(std::string_view text) {
  const auto fields = mrpValueFields(text, kType, {"srClassId", "srClassPriority", "srClassVID"});
  if (!fields) return std::nullopt;
  const auto srClassId = mrpUnsignedFromText<std::uint8_t>((*fields)[0]);
  const auto srClassPriority = mrpUnsignedFromText<std::uint8_t>((*fields)[1]);
  const auto srClassVID = mrpUnsignedFromText<std::uint16_t>((*fields)[2]);
  if (!srClassId || !srClassPriority || !srClassVID) return std::nullopt;
  return MsrpDomainAttribute(*srClassId, *srClassPriority, *srClassVID);
}

}  // namespace Mrp
