#include "MrpModel/MrpWireFormat.h"

#include "MrpMsrp/MsrpAttrType.h"
#include "MrpMvrp/MvrpAttrType.h"
#include "MrpSm/MrpSmTrace.h"

namespace Mrp {

namespace {

constexpr bool unpackAgreesWithDivision() {
  for (unsigned x = 0; x <= 0xFF; ++x) {
    const auto e = mrpUnpackThreePacked(static_cast<std::uint8_t>(x));
    if (e[0] != x / 36 || e[1] != (x / 6) % 6 || e[2] != x % 6) return false;
  }
  return true;
}
static_assert(unpackAgreesWithDivision());

}  // namespace

std::uint16_t mrpSizeOfMsrpAttribute(std::uint8_t attributeType) {
  switch (static_cast<MsrpAttrType>(attributeType)) {
    case MsrpAttrType::talkerAdvertise:
      return 25;
    case MsrpAttrType::talkerFailed:
      return 34;
    case MsrpAttrType::listenerVector:
      return 8;
    case MsrpAttrType::domainVector:
      return 4;
    case MsrpAttrType::invalidAttribute:
      break;
  }
  MRP_TRACE(4, " Invalid attribute type: " << static_cast<unsigned>(attributeType));
  return 0;
}

std::uint16_t mrpSizeOfMvrpAttribute(std::uint8_t attributeType) {
  if (static_cast<MvrpAttrType>(attributeType) == MvrpAttrType::vlanVector) return 2;
  MRP_TRACE(4, " Invalid attribute type: " << static_cast<unsigned>(attributeType));
  return 0;
}

std::uint16_t mrpSizeOfAttribute(std::uint8_t attributeType, std::uint8_t application) {
  switch (static_cast<MrpApplication>(application)) {
    case MrpApplication::msrp:
      return mrpSizeOfMsrpAttribute(attributeType);
    case MrpApplication::mvrp:
      return mrpSizeOfMvrpAttribute(attributeType);
  }
  MRP_TRACE(4, " Invalid application type: " << static_cast<unsigned>(application));
  return 0;
}

MrpApplicationFraming mrpDefaultApplicationFraming(MrpApplication application) {
  switch (application) {
    case MrpApplication::msrp:
      return {Velo::EthAddr(0x01, 0x80, 0xC2, 0x00, 0x00, 0x0E), 0x22EA};
    case MrpApplication::mvrp:
      return {Velo::EthAddr(0x01, 0x80, 0xC2, 0x00, 0x00, 0x21), 0x88F5};
  }
  return {};
}

}  // namespace Mrp
