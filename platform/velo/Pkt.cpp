#include "velo/Pkt.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace Velo {

namespace {

std::size_t checkedSum(std::size_t a, std::size_t b, std::size_t c) {
  constexpr std::size_t kMax = std::numeric_limits<std::size_t>::max();
  if (b > kMax - a || c > kMax - a - b) throw std::length_error("Pkt: buffer size overflows");
  return a + b + c;
}

}  // namespace

Pkt::Pkt(std::size_t headRoom, std::size_t dataBytes, std::size_t tailRoom)
    : capacity_(checkedSum(headRoom, dataBytes, tailRoom)),
      head_(headRoom),
      bytes_(dataBytes),
      buf_(std::make_unique<std::uint8_t[]>(capacity_)) {}

Quarn::Ptr<Pkt> Pkt::pktNew(std::size_t dataBytes, std::size_t headRoom, std::size_t tailRoom) {
  return Quarn::Ptr<Pkt>(new Pkt(headRoom, dataBytes, tailRoom));
}

Quarn::Ptr<Pkt> Pkt::pktNew(const std::uint8_t* p, std::size_t n, std::size_t headRoom) {
  Quarn::Ptr<Pkt> pkt = pktNew(n, headRoom);
  std::copy_n(p, n, pkt->data());
  return pkt;
}

bool Pkt::delSharedHeadData(std::size_t n) {
  if (n > bytes_) return false;
  head_ += n;
  bytes_ -= n;
  return true;
}

std::uint8_t* Pkt::prepend(std::size_t n) {
  if (n > head_) return nullptr;
  head_ -= n;
  bytes_ += n;
  return data();
}

bool Pkt::trim(std::size_t newLength) {
  if (newLength > bytes_) return false;
  bytes_ = newLength;
  return true;
}

std::uint8_t* Pkt::append(std::size_t n) {
  if (n > tailRoom()) return nullptr;
  // Earlier trims may have left old data in the tail room.
  std::uint8_t* added = data() + bytes_;
  std::fill_n(added, n, std::uint8_t{0});
  bytes_ += n;
  return added;
}

Quarn::Ptr<Pkt> Pkt::copy() const { return pktNew(data(), bytes_); }

}  // namespace Velo
