#include "MrpSm/MrpAttrIter.h"

namespace Mrp {

void MrpAttrIter::attributeKeyIs(std::uint64_t attributeKey, bool present) {
  if (present) {
    attributeKeys_.insert(attributeKey);
  } else {
    attributeKeys_.erase(attributeKey);
  }
}

std::ostream& operator<<(std::ostream& os, const MrpAttrIter::Key& key) {
  return os << "Value('Mrp::MrpAttrIter::Key', ** {'intfId': " << key.intfId
            << ", 'attributeType': " << static_cast<unsigned>(key.attributeType) << "})";
}

}  // namespace Mrp
