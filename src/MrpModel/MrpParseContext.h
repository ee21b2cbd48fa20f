#pragma once

#include <cstdint>

#include "quarn/Ptr.h"
#include "quarn/Types.h"
#include "velo/IntfId.h"

namespace Mrp {

// The state of the parse of one received MRPDU, reused for every frame. It
// also holds the engine's current attribute (port, type, key).
class MrpParseContext : public Quarn::PtrInterface {
 public:
  explicit MrpParseContext(Quarn::Name name) : name_(std::move(name)) {}

  const Quarn::Name& name() const { return name_; }

  const Velo::IntfId& intfId() const { return intfId_; }
  void intfIdIs(const Velo::IntfId& intfId) { intfId_ = intfId; }
  std::uint8_t attributeType() const { return attributeType_; }
  void attributeTypeIs(std::uint8_t type) { attributeType_ = type; }
  std::uint8_t attributeLength() const { return attributeLength_; }
  void attributeLengthIs(std::uint8_t length) { attributeLength_ = length; }

  std::uint16_t attributeListBytesLeft() const { return attributeListBytesLeft_; }
  void attributeListBytesLeftIs(std::uint16_t bytes) { attributeListBytesLeft_ = bytes; }
  // Wraps modulo 2^16 like the 16-bit field it counts down.
  void attributeListBytesLeftDec(std::uint16_t by) {
    attributeListBytesLeft_ = static_cast<std::uint16_t>(attributeListBytesLeft_ - by);
  }

  std::uint16_t numberOfValues() const { return numberOfValues_; }
  void numberOfValuesIs(std::uint16_t n) { numberOfValues_ = n; }
  std::uint8_t leaveAll() const { return leaveAll_; }
  void leaveAllIs(std::uint8_t leaveAll) { leaveAll_ = leaveAll; }
  std::uint8_t attributeEvent() const { return attributeEvent_; }
  void attributeEventIs(std::uint8_t event) { attributeEvent_ = event; }
  std::uint64_t attributeKey() const { return attributeKey_; }
  void attributeKeyIs(std::uint64_t key) { attributeKey_ = key; }

  std::uint32_t eventsCounter() const { return eventsCounter_; }
  void eventsCounterIs(std::uint32_t n) { eventsCounter_ = n; }
  void eventsCounterInc(std::uint32_t by = 1) { eventsCounter_ += by; }

  bool sendTxLvAll() const { return sendTxLvAll_; }
  void sendTxLvAllIs(bool send) { sendTxLvAll_ = send; }

 private:
  Quarn::Name name_;
  Velo::IntfId intfId_;
  std::uint8_t attributeType_ = 0;
  std::uint8_t attributeLength_ = 0;
  std::uint16_t attributeListBytesLeft_ = 0;
  std::uint16_t numberOfValues_ = 0;
  std::uint8_t leaveAll_ = 0;
  std::uint8_t attributeEvent_ = 0;
  std::uint64_t attributeKey_ = 0;
  std::uint32_t eventsCounter_ = 0;
  bool sendTxLvAll_ = false;
};

}  // namespace Mrp
