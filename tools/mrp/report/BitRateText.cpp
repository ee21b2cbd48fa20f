#include "report/BitRateText.h"

namespace MrpCli {

std::string bitRateText(std::uint64_t bitsPerSecond) {
  struct Unit {
    std::uint64_t scale;
    const char* name;
  };
  constexpr Unit kUnits[] = {{1'000'000'000, "Gb/s"}, {1'000'000, "Mb/s"}, {1'000, "kb/s"}};
  for (const Unit& unit : kUnits) {
    if (bitsPerSecond < unit.scale) continue;
    // Whole units and thousandths, rounded to nearest.
    std::uint64_t whole = bitsPerSecond / unit.scale;
    std::uint64_t fraction = (bitsPerSecond % unit.scale * 1000 + unit.scale / 2) / unit.scale;
    if (fraction == 1000) {
      ++whole;
      fraction = 0;
    }
    std::string text = std::to_string(whole);
    if (fraction != 0) {
      // Three digits with their leading zeros, then none trailing.
      std::string decimals = std::to_string(1000 + fraction).substr(1);
      while (decimals.back() == '0') decimals.pop_back();
      text.append(".").append(decimals);
    }
    return text.append(" ").append(unit.name);
  }
  return std::to_string(bitsPerSecond).append(" bit/s");
}

}  // namespace MrpCli
