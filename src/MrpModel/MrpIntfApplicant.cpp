#include "MrpModel/MrpIntfApplicant.h"

#include "quarn/Collection.h"

namespace Mrp {

Quarn::Ptr<MrpIntfTypeApplicant> MrpIntfApplicant::intfTypeApplicantIs(std::uint8_t attributeType) {
  return Quarn::entryIs(intfTypeApplicant_, attributeType, [] { return new MrpIntfTypeApplicant; });
}

Quarn::Ptr<MrpIntfTypeApplicant> MrpIntfApplicant::intfTypeApplicant(std::uint8_t attributeType) const {
  return Quarn::entryOf(intfTypeApplicant_, attributeType);
}

}  // namespace Mrp
