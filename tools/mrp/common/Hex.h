#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace MrpCli {

// Octets from hex text; spaces, colons and a leading "0x" are ignored.
// nullopt (with `error` set) for a non-hex character or an odd digit count.
std::optional<std::vector<std::uint8_t>> hexDecode(std::string_view text, std::string& error);

// Lower-case hex, two digits per octet, no separators.
std::string hexEncode(const std::uint8_t* p, std::size_t n);

}  // namespace MrpCli
