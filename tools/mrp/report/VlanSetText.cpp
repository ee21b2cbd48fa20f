#include "report/VlanSetText.h"

#include <algorithm>

namespace MrpCli {

std::string vlanSetText(std::vector<std::uint16_t> vlans) {
  std::sort(vlans.begin(), vlans.end());
  vlans.erase(std::unique(vlans.begin(), vlans.end()), vlans.end());
  std::string text;
  for (std::size_t first = 0; first < vlans.size();) {
    std::size_t last = first;
    while (last + 1 < vlans.size() && vlans[last + 1] == vlans[last] + 1) ++last;
    // Appended piece by piece: GCC 12 at -O3 misreads "literal" + string as an overlapping copy.
    if (!text.empty()) text.append(", ");
    text.append(std::to_string(vlans[first]));
    if (last > first) text.append("-").append(std::to_string(vlans[last]));
    first = last + 1;
  }
  return text;
}

}  // namespace MrpCli
