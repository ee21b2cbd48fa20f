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

// The key the engine gives a value (the VLAN id, the stream id of talkers
// and listeners, a domain's class id), and the largest key of its type.
inline std::uint64_t mrpKeyOf(const MvrpVlanAttribute& v) { return v.vlanId(); }
inline std::uint64_t mrpKeyOf(const MsrpTalkerAdvertiseAttribute& v) { return v.streamId(); }
inline std::uint64_t mrpKeyOf(const MsrpTalkerFailedAttribute& v) { return v.talkerAdvertiseAttribute().streamId(); }
inline std::uint64_t mrpKeyOf(const MsrpListenerAttribute& v) { return v.streamId(); }
inline std::uint64_t mrpKeyOf(const MsrpDomainAttribute& v) { return v.srClassId(); }
inline constexpr std::uint64_t mrpKeyLimitOf(const MvrpVlanAttribute&) { return UINT16_MAX; }
inline constexpr std::uint64_t mrpKeyLimitOf(const MsrpTalkerAdvertiseAttribute&) { return UINT64_MAX; }
inline constexpr std::uint64_t mrpKeyLimitOf(const MsrpTalkerFailedAttribute&) { return UINT64_MAX; }
inline constexpr std::uint64_t mrpKeyLimitOf(const MsrpListenerAttribute&) { return UINT64_MAX; }
inline constexpr std::uint64_t mrpKeyLimitOf(const MsrpDomainAttribute&) { return UINT8_MAX; }

}  // namespace Mrp
