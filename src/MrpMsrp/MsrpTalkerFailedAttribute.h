#pragma once

#include <optional>
#include <ostream>
#include <string_view>

#include "MrpMsrp/FailureInformation.h"
#include "MrpMsrp/MsrpTalkerAdvertiseAttribute.h"

namespace Mrp {

// A Talker Failed value: the Talker Advertise octets, then why it failed
// (34 octets).
class MsrpTalkerFailedAttribute {
 public:
  MsrpTalkerFailedAttribute() = default;
  MsrpTalkerFailedAttribute(const MsrpTalkerAdvertiseAttribute& talkerAdvertiseAttribute,
                            const FailureInformation& failureInformation)
      : talkerAdvertiseAttribute_(talkerAdvertiseAttribute), failureInformation_(failureInformation) {}

  // Reads the text form written by operator<<; nullopt if malformed.
  static std::optional<MsrpTalkerFailedAttribute> fromString(std::string_view text);

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

static_assert(sizeof(MsrpTalkerFailedAttribute) == 34 && alignof(MsrpTalkerFailedAttribute) == 1);

// Value('Mrp::MsrpTalkerFailedAttribute', ** {'talkerAdvertiseAttribute': <MsrpTalkerAdvertiseAttribute>,
// 'failureInformation': <FailureInformation>})
std::ostream& operator<<(std::ostream& os, const MsrpTalkerFailedAttribute& value);

}  // namespace Mrp
