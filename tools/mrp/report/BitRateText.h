#pragma once

#include <cstdint>
#include <string>

namespace MrpCli {

// A rate in bit/s as a person reads it, in the largest unit that keeps it at
// least 1 and with no more than three decimals, trailing zeros dropped:
// "9.088 Mb/s", "750 Mb/s", "1 Gb/s", "3.392 Mb/s", "800 bit/s".
std::string bitRateText(std::uint64_t bitsPerSecond);

}  // namespace MrpCli
