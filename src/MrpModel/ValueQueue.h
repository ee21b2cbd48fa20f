#pragma once

#include <span>

#include <array>
#include <cstdint>

#include "MrpModel/ValueIndex.h"

namespace Mrp {

// A queue of at most 65 value octets whose positions are ValueIndexes; the
// read and write positions wrap from 64 back to 0. Appending to a full queue
// throws std::range_error("ArrayQueue full").
class ValueQueue {
 public:
  static constexpr std::size_t kCapacity = ValueIndex::max + 1;

  std::size_t size() const { return size_; }
  bool empty() const { return size_ == 0; }
  bool full() const { return size_ == kCapacity; }
  // Position of the first octet, and the position the next append takes.
  ValueIndex head() const { return ValueIndex(head_); }
  ValueIndex tail() const { return ValueIndex(wrap(head_ + size_)); }

  void enq(std::uint8_t octet);
  // Removes and returns the first octet; throws std::out_of_range when empty.
  std::uint8_t deq();

  // Whether `index` holds an octet, and the octet there (0 when it holds none).
  bool has(ValueIndex index) const { return offsetOf(index) < size_; }
  std::uint8_t at(ValueIndex index) const;
  // Writes the octet at `index`. A position behind the tail extends the
  // queue up to it (the gap reads as 0); an empty queue starts at `index`.
  void is(ValueIndex index, std::uint8_t octet);
  // Removes the octet at `index`; the octets behind it move up one position.
  void del(ValueIndex index);
  // Empties the queue and restarts its positions at 0.
  void delAll();
  // Holds `octets` from position 0; throws "ArrayQueue full" for more than 65.
  void assign(std::span<const std::uint8_t> octets);

 private:
  static std::size_t wrap(std::size_t position) { return position % kCapacity; }
  std::size_t offsetOf(ValueIndex index) const { return wrap(index.value() + kCapacity - head_); }

  std::array<std::uint8_t, kCapacity> octets_{};
  std::size_t head_ = 0;
  std::size_t size_ = 0;
};

}  // namespace Mrp
