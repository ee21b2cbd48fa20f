#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "quarn/Ptr.h"

namespace Velo {

// A packet buffer: one contiguous allocation laid out as head room, data and
// tail room. Headers are pushed into the head room and popped off the front
// without moving the data; every operation stays inside the allocation.
class Pkt : public Quarn::PtrInterface {
 public:
  // Room for an Ethernet header and stacked VLAN tags without reallocating.
  static constexpr std::size_t kDefaultHeadRoom = 32;

  // `dataBytes` of zeros. Throws std::length_error when the sizes overflow.
  static Quarn::Ptr<Pkt> pktNew(std::size_t dataBytes, std::size_t headRoom = kDefaultHeadRoom,
                                std::size_t tailRoom = 0);
  // A copy of `n` bytes at `p`.
  static Quarn::Ptr<Pkt> pktNew(const std::uint8_t* p, std::size_t n, std::size_t headRoom = kDefaultHeadRoom);

  std::size_t bytes() const { return bytes_; }
  // The data is a single segment, so the front segment is all of it.
  std::size_t frontBytes() const { return bytes_; }
  std::uint8_t* data() { return buf_.get() + head_; }
  const std::uint8_t* data() const { return buf_.get() + head_; }
  std::span<const std::uint8_t> span() const { return {data(), bytes_}; }
  std::size_t headRoom() const { return head_; }
  std::size_t tailRoom() const { return capacity_ - head_ - bytes_; }

  // Removes `n` bytes from the front; false, changing nothing, if n > bytes().
  bool delSharedHeadData(std::size_t n);
  // Grows the data by `n` bytes at the front, for the caller to fill. Returns
  // the new front, or nullptr (changing nothing) if the head room is short.
  std::uint8_t* prepend(std::size_t n);
  // Shortens the data to `newLength`; false, changing nothing, if longer than bytes().
  bool trim(std::size_t newLength);
  // Grows the data by `n` zero bytes at the back. Returns the first new byte,
  // or nullptr (changing nothing) if the tail room is short.
  std::uint8_t* append(std::size_t n);

  // The same data in a new buffer with the default head room and no tail room.
  Quarn::Ptr<Pkt> copy() const;

 private:
  Pkt(std::size_t headRoom, std::size_t dataBytes, std::size_t tailRoom);

  std::size_t capacity_;
  std::size_t head_;
  std::size_t bytes_;
  std::unique_ptr<std::uint8_t[]> buf_;
};

}  // namespace Velo
