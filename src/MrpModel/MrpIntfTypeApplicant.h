#pragma once

#include <cstdint>
#include "quarn/SortedMap.h"

#include "MrpModel/MrpAttrDatabase.h"
#include "quarn/Ptr.h"

namespace Mrp {

// All registrations of one attribute type on one port, by ascending key.
class MrpIntfTypeApplicant : public Quarn::PtrInterface {
 public:
  using AttributeMap = Quarn::SortedMap<std::uint64_t, Quarn::Ptr<MrpAttrDatabase>>;

  // The entry of `key`, created on first use; an existing one is returned
  // untouched.
  Quarn::Ptr<MrpAttrDatabase> mrpAttributeIs(std::uint64_t key);
  Quarn::Ptr<MrpAttrDatabase> mrpAttribute(std::uint64_t key) const;
  void mrpAttributeDel(std::uint64_t key) { mrpAttribute_.erase(key); }
  const AttributeMap& mrpAttributes() const { return mrpAttribute_; }

 private:
  AttributeMap mrpAttribute_;
};

}  // namespace Mrp
