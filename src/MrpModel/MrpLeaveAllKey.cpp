#include "MrpModel/MrpLeaveAllKey.h"

namespace Mrp {

std::ostream& operator<<(std::ostream& os, const MrpLeaveAllKey& key) {
  return os << "Value('Mrp::MrpLeaveAllKey', ** {'intfId': " << key.intfId
            << ", 'attributeType': " << static_cast<unsigned>(key.attributeType) << "})";
}

}  // namespace Mrp
