#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace MrpCli {

// A set of VLAN ids as a person reads it: ascending, runs of consecutive ids
// as ranges, "2, 100-110, 200". Repeated ids count once.
std::string vlanSetText(std::vector<std::uint16_t> vlans);

}  // namespace MrpCli
