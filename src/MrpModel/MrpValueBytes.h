#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <span>
#include <type_traits>

namespace Mrp {

// A value record whose object representation is its stored octets: no
// padding, alignment 1, copyable octet for octet.
template <class Record>
concept MrpWireImage = std::is_trivially_copyable_v<Record> && alignof(Record) == 1;

// The octets of a value as the attribute database stores them.
template <MrpWireImage Record>
std::span<const std::uint8_t, sizeof(Record)> valueBytes(const Record& record) {
  return std::span<const std::uint8_t, sizeof(Record)>(reinterpret_cast<const std::uint8_t*>(&record), sizeof(Record));
}

// The octets would outlive a temporary.
template <MrpWireImage Record>
void valueBytes(const Record&&) = delete;

// The value whose octets are `bytes`: octets past the end of a short span
// read as zero, octets past sizeof(Record) are ignored.
template <MrpWireImage Record>
Record valueFromBytes(std::span<const std::uint8_t> bytes) {
  std::array<std::uint8_t, sizeof(Record)> image{};
  std::copy_n(bytes.begin(), std::min(bytes.size(), image.size()), image.begin());
  return std::bit_cast<Record>(image);
}

}  // namespace Mrp
