#pragma once

#include <cstdint>
#include <map>

#include "MrpModel/MrpIntfTypeApplicant.h"
#include "quarn/Ptr.h"

namespace Mrp {

// All registrations on one port, by attribute type.
class MrpIntfApplicant : public Quarn::PtrInterface {
 public:
  using TypeMap = std::map<std::uint8_t, Quarn::Ptr<MrpIntfTypeApplicant>>;

  Quarn::Ptr<MrpIntfTypeApplicant> intfTypeApplicantIs(std::uint8_t attributeType);
  Quarn::Ptr<MrpIntfTypeApplicant> intfTypeApplicant(std::uint8_t attributeType) const;
  void intfTypeApplicantDel(std::uint8_t attributeType) { intfTypeApplicant_.erase(attributeType); }
  const TypeMap& intfTypeApplicants() const { return intfTypeApplicant_; }

 private:
  TypeMap intfTypeApplicant_;
};

}  // namespace Mrp
