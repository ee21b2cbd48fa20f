#pragma once

#include <cstdint>
#include <vector>

namespace MrpTest {

// `frame` with a VLAN tag (TPID 0x8100, `tci`) behind its MAC addresses.
// Header-only, for programs without the test framework too.
inline std::vector<std::uint8_t> vlanTagged(const std::vector<std::uint8_t>& frame, std::uint16_t tci) {
  constexpr std::size_t kMacAddrsSize = 12;
  std::vector<std::uint8_t> tagged;
  tagged.reserve(frame.size() + 4);
  tagged.assign(frame.begin(), frame.begin() + kMacAddrsSize);
  for (std::uint8_t octet : {std::uint8_t{0x81}, std::uint8_t{0x00}, static_cast<std::uint8_t>(tci >> 8),
                             static_cast<std::uint8_t>(tci)}) {
    tagged.push_back(octet);
  }
  tagged.insert(tagged.end(), frame.begin() + kMacAddrsSize, frame.end());
  return tagged;
}

}  // namespace MrpTest
