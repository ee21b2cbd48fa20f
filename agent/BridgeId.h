#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace MrpAgent {

// A bridge's 8-octet identifier, as a Talker Failed carries it: written
// "80:00:02:00:00:00:00:01".
std::string bridgeIdText(std::uint64_t bridgeId);
// nullopt unless eight two-digit hex octets separated by ':'.
std::optional<std::uint64_t> bridgeIdFromText(std::string_view text);
// A stable identifier for a bridge that is given none: priority 0x8000 and
// a locally administered address made from the name.
std::uint64_t bridgeIdOfName(std::string_view name);

}  // namespace MrpAgent
