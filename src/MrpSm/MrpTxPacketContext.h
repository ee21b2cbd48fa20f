#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "quarn/Ptr.h"
#include "velo/IntfId.h"
#include "velo/Pkt.h"

namespace Mrp {

// One MRPDU under construction for a port: its packet and where the last
// message and vector begin, so the next attribute can extend them.
//
// Positions are offsets from the start of the packet's data, where the first
// message is written. Every octet access goes through octets(), which refuses
// anything outside the packet, so no sequence of encoder calls can write past
// the buffer. Only the first 65535 octets are used: positions and lengths are
// 16-bit, like the wire's own.
class MrpTxPacketContext : public Quarn::PtrInterface {
 public:
  using Position = std::optional<std::uint16_t>;

  // Clears the packet's data: the encoder begins packed-event octets without
  // clearing them, so every octet it has not written must read as zero.
  MrpTxPacketContext(Velo::IntfId intfId, Quarn::Ptr<Velo::Pkt> pkt);
  MrpTxPacketContext(const MrpTxPacketContext&) = delete;
  MrpTxPacketContext& operator=(const MrpTxPacketContext&) = delete;

  const Velo::IntfId& intfId() const { return intfId_; }
  const Quarn::Ptr<Velo::Pkt>& pkt() const { return pkt_; }

  // The first octet of the last message written; empty when there is none.
  Position curMessage() const { return curMessage_; }
  void curMessageIs(Position position) { curMessage_ = position; }
  // The VectorHeader of the last vector of curMessage; empty when none.
  Position curVector() const { return curVector_; }
  void curVectorIs(Position position) { curVector_ = position; }
  // curVector for a writer that needs one: throws std::logic_error without.
  std::uint16_t curVectorOrThrow() const;

  std::uint8_t currentAttrType() const { return currentAttrType_; }
  void currentAttrTypeIs(std::uint8_t type) { currentAttrType_ = type; }

  // Octets usable for the MRPDU: the packet's data, at most 65535.
  std::size_t capacity() const;
  // The `n` octets at `offset`. Throws std::out_of_range when they do not lie
  // inside the packet.
  std::span<std::uint8_t> octets(std::size_t offset, std::size_t n) const;
  // A big-endian 16-bit field at `offset`, checked like octets().
  std::uint16_t u16At(std::size_t offset) const;
  void u16AtIs(std::size_t offset, std::uint16_t value) const;

 private:
  const Velo::IntfId intfId_;
  const Quarn::Ptr<Velo::Pkt> pkt_;
  Position curMessage_;
  Position curVector_;
  std::uint8_t currentAttrType_ = 0;
};

}  // namespace Mrp
