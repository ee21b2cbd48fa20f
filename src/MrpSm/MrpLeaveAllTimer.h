#pragma once

#include <cstdint>

#include "quarn/Ptr.h"
#include "quarn/Types.h"

namespace Mrp {

// When the next LeaveAll of one attribute type of a port is due.
class MrpLeaveAllTimer : public Quarn::PtrInterface {
 public:
  explicit MrpLeaveAllTimer(std::uint8_t attrType) : attrType_(attrType) {}

  std::uint8_t attrType() const { return attrType_; }
  // Absolute time on the engine's clock; 0 until set.
  Quarn::Seconds expiryTime() const { return expiryTime_; }
  void expiryTimeIs(Quarn::Seconds t) { expiryTime_ = t; }

 private:
  const std::uint8_t attrType_;
  Quarn::Seconds expiryTime_ = 0.0;
};

}  // namespace Mrp
