#include "MrpModel/MrpParsedAttributeKey.h"

namespace Mrp {

std::ostream& operator<<(std::ostream& os, const MrpParsedAttributeKey& key) {
  return os << "Value('Mrp::MrpParsedAttributeKey', ** {'attributeType': " << static_cast<unsigned>(key.attributeType)
            << ", 'attributeKey': " << key.attributeKey << "})";
}

}  // namespace Mrp
