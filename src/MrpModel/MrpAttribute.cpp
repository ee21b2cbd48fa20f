#include "MrpModel/MrpAttribute.h"

namespace Mrp {

std::ostream& operator<<(std::ostream& os, const MrpAttribute& attribute) {
  return os << "Value('Mrp::MrpAttribute', ** {'intfId': " << attribute.intfId
            << ", 'attributeType': " << static_cast<unsigned>(attribute.attributeType)
            << ", 'attributeKey': " << attribute.attributeKey << "})";
}

}  // namespace Mrp
