#pragma once

#include <cstdint>

#include "MrpMsrp/MsrpDomainAttribute.h"
#include "MrpMsrp/MsrpListenerAttribute.h"
#include "MrpMsrp/MsrpTalkerAdvertiseAttribute.h"
#include "MrpMsrp/MsrpTalkerFailedAttribute.h"
#include "MrpMsrp/MsrpValueSequence.h"
#include "MrpMvrp/MvrpVlanAttribute.h"

namespace Mrp {

// The value `distance` positions after `first` in a vector, by the increment
// rule of its type: stream ids as 64-bit numbers (a talker's address as a
// 48-bit one), a domain's class id and priority modulo 256, a VLAN id
// modulo 2^16; a Listener keeps its declaration, a Talker Failed its failure.
inline MvrpVlanAttribute mrpValueAt(const MvrpVlanAttribute& first, std::uint64_t distance) {
  return MvrpVlanAttribute(static_cast<std::uint16_t>(first.vlanId() + distance));
}
inline MsrpTalkerAdvertiseAttribute mrpValueAt(const MsrpTalkerAdvertiseAttribute& first, std::uint64_t distance) {
  return mrpAdvanceTalkerAttribute(first, distance);
}
inline MsrpTalkerFailedAttribute mrpValueAt(MsrpTalkerFailedAttribute first, std::uint64_t distance) {
  first.talkerAdvertiseAttributeIs(mrpAdvanceTalkerAttribute(first.talkerAdvertiseAttribute(), distance));
  return first;
}
inline MsrpListenerAttribute mrpValueAt(MsrpListenerAttribute first, std::uint64_t distance) {
  first.streamIdIs(first.streamId() + distance);
  return first;
}
inline MsrpDomainAttribute mrpValueAt(const MsrpDomainAttribute& first, std::uint64_t distance) {
  return mrpAdvanceDomainAttribute(first, distance);
}

}  // namespace Mrp
