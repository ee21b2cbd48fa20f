#include "MrpModel/MrpIntfTypeApplicant.h"

#include "quarn/Collection.h"

namespace Mrp {

Quarn::Ptr<MrpAttrDatabase> MrpIntfTypeApplicant::mrpAttributeIs(std::uint64_t key) {
  return mrpAttribute_.findOrInsert(key, [key] { return Quarn::Ptr<MrpAttrDatabase>(new MrpAttrDatabase(key)); });
}

Quarn::Ptr<MrpAttrDatabase> MrpIntfTypeApplicant::mrpAttribute(std::uint64_t key) const {
  const Quarn::Ptr<MrpAttrDatabase>* entry = mrpAttribute_.find(key);
  return entry ? *entry : nullptr;
}

}  // namespace Mrp
