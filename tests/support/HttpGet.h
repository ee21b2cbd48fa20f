#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace MrpTest {

// The body of `GET path` from http://127.0.0.1:port (HTTP/1.0, the
// connection closed by the server), in the calling thread's network
// namespace; nullopt when it cannot connect or the answer is not 200 OK.
std::optional<std::string> httpGet(std::uint16_t port, const std::string& path);

}  // namespace MrpTest
