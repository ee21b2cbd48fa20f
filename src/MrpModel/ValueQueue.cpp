#include "MrpModel/ValueQueue.h"

#include <algorithm>
#include <stdexcept>

namespace Mrp {

namespace {

[[noreturn]] void throwFull() { throw std::range_error("ArrayQueue full"); }

}  // namespace

void ValueQueue::enq(std::uint8_t octet) {
  if (full()) throwFull();
  octets_[wrap(head_ + size_)] = octet;
  ++size_;
}

std::uint8_t ValueQueue::deq() {
  if (empty()) throw std::out_of_range("ArrayQueue empty");
  const std::uint8_t octet = octets_[head_];
  head_ = wrap(head_ + 1);
  --size_;
  return octet;
}

std::uint8_t ValueQueue::at(ValueIndex index) const { return has(index) ? octets_[index.value()] : 0; }

void ValueQueue::is(ValueIndex index, std::uint8_t octet) {
  if (empty()) head_ = index.value();
  const std::size_t offset = offsetOf(index);
  while (offset >= size_) {
    enq(0);
  }
  octets_[index.value()] = octet;
}

void ValueQueue::del(ValueIndex index) {
  std::size_t offset = offsetOf(index);
  if (offset >= size_) return;
  for (; offset + 1 < size_; ++offset) {
    octets_[wrap(head_ + offset)] = octets_[wrap(head_ + offset + 1)];
  }
  --size_;
}

void ValueQueue::assign(std::span<const std::uint8_t> octets) {
  if (octets.size() > kCapacity) throwFull();
  std::copy(octets.begin(), octets.end(), octets_.begin());
  head_ = 0;
  size_ = octets.size();
}

void ValueQueue::delAll() {
  head_ = 0;
  size_ = 0;
}

}  // namespace Mrp
