#include "MrpModel/MrpIntfTypeApplicant.h"

#include "quarn/Collection.h"

namespace Mrp {

Quarn::Ptr<MrpAttrDatabase> MrpIntfTypeApplicant::mrpAttributeIs(std::uint64_t key) {
  return Quarn::entryIs(mrpAttribute_, key, [key] { return new MrpAttrDatabase(key); });
}

Quarn::Ptr<MrpAttrDatabase> MrpIntfTypeApplicant::mrpAttribute(std::uint64_t key) const {
  return Quarn::entryOf(mrpAttribute_, key);
}

}  // namespace Mrp
