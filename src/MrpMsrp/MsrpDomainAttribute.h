#pragma once

#include <cstdint>
#include <optional>
#include <ostream>
#include <string_view>

#include "quarn/Nbo.h"

namespace Mrp {

// An SR class domain value, as on the wire (4 octets).
class MsrpDomainAttribute {
 public:
  MsrpDomainAttribute() = default;
  MsrpDomainAttribute(std::uint8_t srClassId, std::uint8_t srClassPriority, std::uint16_t srClassVID)
      : srClassId_(srClassId), srClassPriority_(srClassPriority), srClassVID_(srClassVID) {}

  // Reads the text form written by operator<<; nullopt if malformed.
  static std::optional<MsrpDomainAttribute> fromString(std::string_view text);

  std::uint8_t srClassId() const { return srClassId_; }
  void srClassIdIs(std::uint8_t id) { srClassId_ = id; }
  std::uint8_t srClassPriority() const { return srClassPriority_; }
  void srClassPriorityIs(std::uint8_t priority) { srClassPriority_ = priority; }
  std::uint16_t srClassVID() const { return srClassVID_.value(); }
  void srClassVIDIs(std::uint16_t vid) { srClassVID_.valueIs(vid); }

  friend bool operator==(const MsrpDomainAttribute&, const MsrpDomainAttribute&) = default;

 private:
  std::uint8_t srClassId_ = 0;
  std::uint8_t srClassPriority_ = 0;
  Quarn::NboU16 srClassVID_;
};

static_assert(sizeof(MsrpDomainAttribute) == 4 && alignof(MsrpDomainAttribute) == 1);

// Value('Mrp::MsrpDomainAttribute', ** {'srClassId': 6, 'srClassPriority': 3, 'srClassVID': 2})
std::ostream& operator<<(std::ostream& os, const MsrpDomainAttribute& value);

}  // namespace Mrp
