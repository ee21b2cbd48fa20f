#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <utility>
#include <vector>

namespace Quarn {

// A FIFO whose entries carry an unsigned 32-bit position, kept in one array:
// once it has grown, enqueuing and dequeuing allocate nothing. Positions
// count from 0 again whenever the queue is empty. Iterating yields
// (position, value) pairs, oldest first.
template <class T>
class IndexedFifo {
 public:
  using Index = std::uint32_t;
  using Entry = std::pair<Index, T>;

  bool empty() const { return head_ == entries_.size(); }
  std::size_t size() const { return entries_.size() - head_; }

  // Appends `value`; returns its position.
  Index enq(const T& value) {
    const auto index = static_cast<Index>(entries_.size() - head_ + nextIndex_);
    entries_.emplace_back(index, value);
    return index;
  }

  // Removes and returns the oldest value; throws std::out_of_range when empty.
  T deq() {
    if (empty()) throw std::out_of_range("queue empty");
    T value = std::move(entries_[head_++].second);
    ++nextIndex_;
    if (empty()) delAll();
    return value;
  }

  const T& head() const { return entries_[head_].second; }

  void delAll() {
    entries_.clear();
    head_ = 0;
    nextIndex_ = 0;
  }

  auto begin() const { return entries_.begin() + static_cast<std::ptrdiff_t>(head_); }
  auto end() const { return entries_.end(); }

 private:
  std::vector<Entry> entries_;
  std::size_t head_ = 0;
  // The position of the oldest entry.
  Index nextIndex_ = 0;
};

}  // namespace Quarn
