#include "common/Hex.h"

namespace MrpCli {

namespace {

int digit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

}  // namespace

std::optional<std::vector<std::uint8_t>> hexDecode(std::string_view text, std::string& error) {
  if (text.substr(0, 2) == "0x" || text.substr(0, 2) == "0X") text.remove_prefix(2);
  std::vector<std::uint8_t> octets;
  int high = -1;
  for (char c : text) {
    if (c == ' ' || c == ':' || c == '\t' || c == '\r') continue;
    const int d = digit(c);
    if (d < 0) {
      error = std::string("not a hex digit: '") + c + "'";
      return std::nullopt;
    }
    if (high < 0) {
      high = d;
    } else {
      octets.push_back(static_cast<std::uint8_t>(high * 16 + d));
      high = -1;
    }
  }
  if (high >= 0) {
    error = "odd number of hex digits";
    return std::nullopt;
  }
  return octets;
}

std::string hexEncode(const std::uint8_t* p, std::size_t n) {
  static constexpr char kDigits[] = "0123456789abcdef";
  std::string s;
  s.reserve(2 * n);
  for (std::size_t i = 0; i < n; ++i) {
    s += kDigits[p[i] >> 4];
    s += kDigits[p[i] & 0xf];
  }
  return s;
}

}  // namespace MrpCli
