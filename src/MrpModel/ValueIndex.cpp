#include "MrpModel/ValueIndex.h"

#include <stdexcept>

namespace Mrp {

namespace {

std::uint8_t checked(unsigned value) {
  if (value > ValueIndex::max) {
    throw std::range_error("ValueIndex::value < ValueIndex::min or > ValueIndex::max not allowed");
  }
  return static_cast<std::uint8_t>(value);
}

}  // namespace

ValueIndex::ValueIndex(unsigned value) : value_(checked(value)) {}

ValueIndex& ValueIndex::operator++() {
  value_ = checked(value_ + 1u);
  return *this;
}

}  // namespace Mrp
