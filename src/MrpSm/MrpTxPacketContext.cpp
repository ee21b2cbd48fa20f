#include "MrpSm/MrpTxPacketContext.h"

#include <algorithm>
#include <stdexcept>

namespace Mrp {

MrpTxPacketContext::MrpTxPacketContext(Velo::IntfId intfId, Quarn::Ptr<Velo::Pkt> pkt)
    : intfId_(std::move(intfId)), pkt_(std::move(pkt)) {
  if (pkt_) std::fill_n(pkt_->data(), pkt_->bytes(), std::uint8_t{0});
}

std::uint16_t MrpTxPacketContext::curVectorOrThrow() const {
  if (!curVector_) throw std::logic_error("MrpTxPacketContext without a current vector");
  return *curVector_;
}

std::size_t MrpTxPacketContext::capacity() const {
  return pkt_ ? std::min<std::size_t>(pkt_->bytes(), UINT16_MAX) : 0;
}

std::span<std::uint8_t> MrpTxPacketContext::octets(std::size_t offset, std::size_t n) const {
  if (!pkt_ || offset > capacity() || n > capacity() - offset) {
    throw std::out_of_range("MrpTxPacketContext octets past the end of the packet not allowed");
  }
  return {pkt_->data() + offset, n};
}

std::uint16_t MrpTxPacketContext::u16At(std::size_t offset) const {
  const auto field = octets(offset, 2);
  return static_cast<std::uint16_t>((field[0] << 8) | field[1]);
}

void MrpTxPacketContext::u16AtIs(std::size_t offset, std::uint16_t value) const {
  const auto field = octets(offset, 2);
  field[0] = static_cast<std::uint8_t>(value >> 8);
  field[1] = static_cast<std::uint8_t>(value & 0xff);
}

}  // namespace Mrp
