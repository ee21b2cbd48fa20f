#pragma once

#include <cstdint>

#include "MrpMsrp/MsrpListenerEvent.h"

namespace Mrp {

// ThreePackedEvents: three events 0..5 to an octet, (e1 * 6 + e2) * 6 + e3.
// FourPackedEvents: four Listener declarations 0..3 to an octet, e1 in bits
// 7..6 down to e4 in bits 1..0. Value number n (from 1) lives in octet
// (n - 1) / 3 (or / 4) of the area, at position (n - 1) mod 3 (or mod 4).

// Throw std::out_of_range unless the event fits a packed position.
void mrpCheckThreePackedEvent(std::uint8_t event);
void mrpCheckFourPackedEvent(MsrpListenerEvent event);

// Set the event of value number `valueNumber` in the packed area that starts
// at `vector`, leaving the other positions of its octet as they are. The
// caller guarantees the area reaches that octet. Throw std::out_of_range,
// writing nothing, for an event that does not fit or value number 0.
void mrpEncodeThreePackedEvent(std::uint8_t* vector, std::uint8_t event, std::uint16_t valueNumber);
void mrpEncodeFourPackedEvent(std::uint8_t* vector, MsrpListenerEvent event, std::uint16_t valueNumber);

}  // namespace Mrp
