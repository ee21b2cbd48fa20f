#pragma once

#include <cstdint>

#include "quarn/Ptr.h"
#include "velo/IntfId.h"
#include "velo/Pkt.h"

namespace Mrp {

// One MRPDU under construction for a port: its packet and where the last
// message and vector begin, so the next attribute can extend them.
class MrpTxPacketContext : public Quarn::PtrInterface {
 public:
  MrpTxPacketContext(Velo::IntfId intfId, Quarn::Ptr<Velo::Pkt> pkt) : intfId_(std::move(intfId)), pkt_(std::move(pkt)) {}
  MrpTxPacketContext(const MrpTxPacketContext&) = delete;
  MrpTxPacketContext& operator=(const MrpTxPacketContext&) = delete;

  const Velo::IntfId& intfId() const { return intfId_; }
  const Quarn::Ptr<Velo::Pkt>& pkt() const { return pkt_; }

  // Positions in the packet's data; null when there is none yet.
  std::uint8_t* curMessage() const { return curMessage_; }
  void curMessageIs(std::uint8_t* position) { curMessage_ = position; }
  std::uint8_t* curVector() const { return curVector_; }
  void curVectorIs(std::uint8_t* position) { curVector_ = position; }

  std::uint8_t currentAttrType() const { return currentAttrType_; }
  void currentAttrTypeIs(std::uint8_t type) { currentAttrType_ = type; }

 private:
  const Velo::IntfId intfId_;
  const Quarn::Ptr<Velo::Pkt> pkt_;
  std::uint8_t* curMessage_ = nullptr;
  std::uint8_t* curVector_ = nullptr;
  std::uint8_t currentAttrType_ = 0;
};

}  // namespace Mrp
