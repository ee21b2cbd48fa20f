#include "common/ListenAddress.h"

#include <CLI/CLI.hpp>
#include <arpa/inet.h>

#include <algorithm>
#include <cctype>
#include <charconv>

namespace MrpCli {

namespace {

constexpr std::size_t kMaxHostName = 253;
constexpr std::size_t kMaxLabel = 63;

bool isAddress(int family, std::string_view text) {
  unsigned char address[sizeof(in6_addr)];
  return inet_pton(family, std::string(text).c_str(), address) == 1;
}

bool isLabel(std::string_view label) {
  const auto letterDigitOrHyphen = [](char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '-'; };
  return !label.empty() && label.size() <= kMaxLabel && label.front() != '-' && label.back() != '-' &&
         std::all_of(label.begin(), label.end(), letterDigitOrHyphen);
}

// Letters, digits and hyphens in dot-separated labels; one of only digits
// and dots is a (bad) IPv4 address, not a name.
bool isHostName(std::string_view name) {
  if (name.empty() || name.size() > kMaxHostName) return false;
  if (name.find_first_not_of("0123456789.") == std::string_view::npos) return false;
  for (std::size_t from = 0;;) {
    const std::size_t dot = name.find('.', from);
    if (!isLabel(name.substr(from, dot == std::string_view::npos ? std::string_view::npos : dot - from))) return false;
    if (dot == std::string_view::npos) return true;
    from = dot + 1;
  }
}

bool isHost(std::string_view host) { return isAddress(AF_INET, host) || isHostName(host); }

bool isBracketedIpv6(std::string_view host) {
  return host.size() >= 2 && host.front() == '[' && host.back() == ']' &&
         isAddress(AF_INET6, host.substr(1, host.size() - 2));
}

bool isPort(std::string_view text) {
  unsigned port = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
  return error == std::errc() && end == text.data() + text.size() && port >= 1 && port <= 65535;
}

}  // namespace

std::optional<std::string> listenAddressFault(std::string_view text) {
  const std::string quoted = "'" + std::string(text) + "'";
  const std::size_t colon = text.rfind(':');
  // "[::1]" has colons, but no port.
  if (colon == std::string_view::npos || colon == 0 || text.find(']', colon) != std::string_view::npos) {
    return quoted + " is not ADDR:PORT (e.g. 127.0.0.1:9464 or localhost:9464)";
  }
  const std::string_view host = text.substr(0, colon);
  // The web server the metrics are served with is built without IPv6.
  if (isBracketedIpv6(host)) return quoted + ": the metrics are served over IPv4 only";
  if (!isHost(host)) return quoted + ": '" + std::string(host) + "' is not an IPv4 address or a host name";
  if (!isPort(text.substr(colon + 1))) return quoted + ": the port is not a number 1-65535";
  return std::nullopt;
}

CLI::Validator listenAddress() {
  return CLI::Validator([](std::string& value) { return listenAddressFault(value).value_or(""); }, "");
}

}  // namespace MrpCli
