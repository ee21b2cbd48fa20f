#include "MrpModel/VlanId.h"

#include <stdexcept>

namespace Mrp {

namespace {

std::uint16_t checked(unsigned value) {
  if (value < VlanId::min || value > VlanId::max) throw std::range_error("VlanId::value < 1 or > 4094 not allowed");
  return static_cast<std::uint16_t>(value);
}

}  // namespace

VlanId::VlanId(unsigned value) : value_(checked(value)) {}

}  // namespace Mrp
