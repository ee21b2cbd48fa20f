#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace CLI {
class Validator;
}

namespace MrpCli {

// Why `text` is not an address to serve the metrics on, ADDR:PORT with ADDR
// an IPv4 address or a host name and PORT 1-65535 ("127.0.0.1:9464",
// "localhost:9464"); nullopt when it is.
std::optional<std::string> listenAddressFault(std::string_view text);
// An option check that accepts ADDR:PORT.
CLI::Validator listenAddress();

}  // namespace MrpCli
