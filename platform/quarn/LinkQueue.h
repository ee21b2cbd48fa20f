#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>
#include <map>
#include <stdexcept>

namespace Quarn {

// A FIFO whose entries carry an unsigned index, 32-bit unless told
// otherwise. An enqueued entry gets max(next index, index of the tail + 1);
// the next index then becomes that index + 1. Once that runs past the last
// index, numbering starts again behind the tail, from 0 in an empty queue,
// so a queue that keeps draining never runs out; only a queue whose tail
// holds the last index is full. Entries can also be placed or removed by
// index.
template <class T, class IndexType = std::uint32_t>
class LinkQueue {
 public:
  using Index = IndexType;
  static_assert(std::numeric_limits<Index>::digits < 64, "the next index must fit beside the last one");

  bool empty() const { return entries_.empty(); }
  std::size_t size() const { return entries_.size(); }
  std::uint64_t nextIndex() const { return nextIndex_; }

  // Appends `value`; returns its index.
  Index enq(const T& value) {
    const std::uint64_t afterTail = entries_.empty() ? 0 : std::uint64_t{entries_.rbegin()->first} + 1;
    std::uint64_t index = std::max(nextIndex_, afterTail);
    if (index > kLastIndex) index = afterTail;
    if (index > kLastIndex) throw std::range_error("linkqueue index space full");
    entries_.emplace_hint(entries_.end(), static_cast<Index>(index), value);
    nextIndex_ = index + 1;
    return static_cast<Index>(index);
  }

  // Removes and returns the head. The queue must not be empty.
  T deq() {
    if (entries_.empty()) throw std::out_of_range("linkqueue empty");
    T value = std::move(entries_.begin()->second);
    entries_.erase(entries_.begin());
    return value;
  }

  const T& head() const { return entries_.begin()->second; }
  const T* at(Index index) const {
    auto it = entries_.find(index);
    return it == entries_.end() ? nullptr : &it->second;
  }

  // Places `value` at `index`, replacing an entry already there.
  void is(Index index, const T& value) {
    entries_.insert_or_assign(index, value);
  }
  void del(Index index) { entries_.erase(index); }
  void delAll() { entries_.clear(); }

  auto begin() const { return entries_.begin(); }
  auto end() const { return entries_.end(); }

 private:
  static constexpr std::uint64_t kLastIndex = std::numeric_limits<Index>::max();

  std::map<Index, T> entries_;
  std::uint64_t nextIndex_ = 0;
};

}  // namespace Quarn
