#pragma once

#include <cstdint>
#include <string>

namespace Stp {

// The name of the per-VLAN spanning-tree instance of `vlanId`, e.g. "Vl10".
std::string pvstInstanceName(std::uint16_t vlanId);

}  // namespace Stp
