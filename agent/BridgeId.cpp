#include "BridgeId.h"

#include <cstdio>

namespace MrpAgent {

std::string bridgeIdText(std::uint64_t bridgeId) {
  std::string text;
  for (int shift = 56; shift >= 0; shift -= 8) {
    char octet[3];
    std::snprintf(octet, sizeof octet, "%02x", static_cast<unsigned>((bridgeId >> shift) & 0xff));
    if (!text.empty()) text.push_back(':');
    text.append(octet);
  }
  return text;
}

namespace {

std::optional<unsigned> hexDigit(char c) {
  if (c >= '0' && c <= '9') return static_cast<unsigned>(c - '0');
  if (c >= 'a' && c <= 'f') return static_cast<unsigned>(c - 'a' + 10);
  if (c >= 'A' && c <= 'F') return static_cast<unsigned>(c - 'A' + 10);
  return std::nullopt;
}

}  // namespace

std::optional<std::uint64_t> bridgeIdFromText(std::string_view text) {
  constexpr std::size_t kLength = 8 * 3 - 1;
  if (text.size() != kLength) return std::nullopt;
  std::uint64_t id = 0;
  for (std::size_t i = 0; i < kLength; i += 3) {
    const std::optional<unsigned> high = hexDigit(text[i]);
    const std::optional<unsigned> low = hexDigit(text[i + 1]);
    if (!high || !low || (i + 2 < kLength && text[i + 2] != ':')) return std::nullopt;
    id = (id << 8) | (*high << 4) | *low;
  }
  return id;
}

std::uint64_t bridgeIdOfName(std::string_view name) {
  // FNV-1a: the same name gives the same identifier on every run and host.
  std::uint64_t hash = 0xcbf29ce484222325ULL;
  for (char c : name) {
    hash ^= static_cast<unsigned char>(c);
    hash *= 0x100000001b3ULL;
  }
  std::uint64_t address = hash & 0xffffffffffffULL;
  // Unicast and locally administered.
  address = (address & ~(0x01ULL << 40)) | (0x02ULL << 40);
  return (0x8000ULL << 48) | address;
}

}  // namespace MrpAgent
