#pragma once

#include <cstdint>
#include <optional>
#include <ostream>
#include <string_view>

#include "quarn/Nbo.h"

namespace Mrp {

// A VLAN identifier value, as on the wire (2 octets). No range check: a
// vector may run past 4094.
class MvrpVlanAttribute {
 public:
  MvrpVlanAttribute() = default;
  explicit MvrpVlanAttribute(std::uint16_t vlanId) : vlanId_(vlanId) {}

  // Reads the text form written by operator<<; nullopt if malformed.
  static std::optional<MvrpVlanAttribute> fromString(std::string_view text);

  std::uint16_t vlanId() const { return vlanId_.value(); }
  void vlanIdIs(std::uint16_t vlanId) { vlanId_.valueIs(vlanId); }

  friend bool operator==(const MvrpVlanAttribute&, const MvrpVlanAttribute&) = default;

 private:
  Quarn::NboU16 vlanId_;
};

static_assert(sizeof(MvrpVlanAttribute) == 2 && alignof(MvrpVlanAttribute) == 1);

// Value('Mrp::MvrpVlanAttribute', ** {'vlanId': 10})
std::ostream& operator<<(std::ostream& os, const MvrpVlanAttribute& value);

}  // namespace Mrp
