#pragma once

#include "MrpMsrp/FailureInformation.h"
#include "MrpMsrp/MsrpTalkerAdvertiseAttribute.h"

namespace Mrp {

// A Talker Failed value: the Talker Advertise octets, then why it failed
// (34 octets).
class MsrpTalkerFailedAttribute {
 public:
  MsrpTalkerFailedAttribute() = default;

  const MsrpTalkerAdvertiseAttribute& talkerAdvertiseAttribute() const { return talkerAdvertiseAttribute_; }
  void talkerAdvertiseAttributeIs(const MsrpTalkerAdvertiseAttribute& a) { talkerAdvertiseAttribute_ = a; }
  const FailureInformation& failureInformation() const { return failureInformation_; }
  void failureInformationIs(const FailureInformation& f) { failureInformation_ = f; }

  // True for the all-zero value.
  bool operator!() const { return *this == MsrpTalkerFailedAttribute(); }
  friend bool operator==(const MsrpTalkerFailedAttribute&, const MsrpTalkerFailedAttribute&) = default;

 private:
  MsrpTalkerAdvertiseAttribute talkerAdvertiseAttribute_;
  FailureInformation failureInformation_;
};

static_assert(sizeof(MsrpTalkerFailedAttribute) == 34);

}  // namespace Mrp
