#pragma once

#include <cstdint>
#include <functional>
#include <ostream>

#include "velo/IntfId.h"

namespace Mrp {

// Key of the LeaveAll period scheduled for one port and attribute type.
struct MrpLeaveAllKey {
  Velo::IntfId intfId;
  std::uint8_t attributeType = 0;

  friend bool operator==(const MrpLeaveAllKey&, const MrpLeaveAllKey&) = default;
  friend auto operator<=>(const MrpLeaveAllKey&, const MrpLeaveAllKey&) = default;
};

std::ostream& operator<<(std::ostream& os, const MrpLeaveAllKey& key);

}  // namespace Mrp
