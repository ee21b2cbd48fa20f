#include "MrpModel/MrpPackedEvents.h"

#include <stdexcept>

namespace Mrp {

namespace {

void checkValueNumber(std::uint16_t valueNumber) {
  if (valueNumber == 0) throw std::out_of_range("valueNumber < 1 not allowed");
}

}  // namespace

void mrpCheckThreePackedEvent(std::uint8_t event) {
  if (event > 5) throw std::out_of_range("MrpThreePackedEvent::value > 5 not allowed");
}

void mrpCheckFourPackedEvent(MsrpListenerEvent event) {
  if (static_cast<std::uint32_t>(event) > 3) throw std::out_of_range("MsrpListenerEvent::value > 3 not allowed");
}

void mrpEncodeThreePackedEvent(std::uint8_t* vector, std::uint8_t event, std::uint16_t valueNumber) {
  mrpCheckThreePackedEvent(event);
  checkValueNumber(valueNumber);
  const unsigned index = valueNumber - 1u;
  std::uint8_t& octet = vector[index / 3];
  unsigned events[3] = {octet / 36u, (octet / 6u) % 6u, octet % 6u};
  events[index % 3] = event;
  octet = static_cast<std::uint8_t>((events[0] * 6u + events[1]) * 6u + events[2]);
}

void mrpEncodeFourPackedEvent(std::uint8_t* vector, MsrpListenerEvent event, std::uint16_t valueNumber) {
  mrpCheckFourPackedEvent(event);
  checkValueNumber(valueNumber);
  const unsigned index = valueNumber - 1u;
  const unsigned shift = 6u - 2u * (index % 4);
  std::uint8_t& octet = vector[index / 4];
  octet = static_cast<std::uint8_t>((octet & ~(0x3u << shift)) | (static_cast<std::uint32_t>(event) << shift));
}

}  // namespace Mrp
