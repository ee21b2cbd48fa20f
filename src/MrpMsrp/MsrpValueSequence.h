#pragma once

#include <cstdint>

#include "MrpMsrp/MsrpDomainAttribute.h"
#include "MrpMsrp/MsrpTalkerAdvertiseAttribute.h"
#include "velo/EthAddr.h"

namespace Mrp {

// How the values of one vector follow from its FirstValue. The increments wrap
// and the in-sequence tests do not, on purpose: a vector never continues
// across a wrap, so a wrapped value always starts a new vector.

// The talker value one position further: streamId + 1 (64-bit) and the
// frame's dmac + 1 as a 48-bit number, a carry out of the 48 bits lost; the
// other fields unchanged.
MsrpTalkerAdvertiseAttribute mrpIncrementTalkerAttribute(MsrpTalkerAdvertiseAttribute value);
// The talker value `distance` positions further by the same rule, untraced.
MsrpTalkerAdvertiseAttribute mrpAdvanceTalkerAttribute(MsrpTalkerAdvertiseAttribute value, std::uint64_t distance);
// The domain value `distance` positions further: class id and priority
// advance modulo 256, the VID stays.
MsrpDomainAttribute mrpAdvanceDomainAttribute(MsrpDomainAttribute value, std::uint64_t distance);

// True when the talker value (streamId, dmac) is `distance` positions after
// (firstStreamId, firstDmac): the stream ids modulo 2^64, the addresses as
// 48-bit numbers without wrap.
bool mrpTalkerValueInSequence(std::uint64_t firstStreamId, std::uint64_t streamId, Velo::EthAddr firstDmac,
                              Velo::EthAddr dmac, std::uint16_t distance);

// True when the domain value (classId, priority) is `distance` positions
// after (firstClassId, firstPriority), the sums taken without wrap at 256.
bool mrpDomainValueInSequence(std::uint8_t firstClassId, std::uint8_t classId, std::uint8_t firstPriority,
                              std::uint8_t priority, std::uint16_t distance);

}  // namespace Mrp
