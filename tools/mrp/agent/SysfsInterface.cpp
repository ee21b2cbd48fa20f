#include "agent/SysfsInterface.h"

#include <charconv>
#include <fstream>

#include "BridgeId.h"

namespace MrpCli {

std::optional<std::string> SysfsInterface::attribute(const char* file) const {
  std::ifstream in(root_ + "/" + name_ + "/" + file);
  std::string line;
  // Reading the speed of a link that is down fails with EINVAL.
  if (!in || !std::getline(in, line)) return std::nullopt;
  return line;
}

std::optional<std::uint64_t> SysfsInterface::speed() const {
  const std::optional<std::string> text = attribute("speed");
  if (!text) return std::nullopt;
  // Mb/s; -1 (or 4294967295) when unknown.
  std::int64_t megabits = 0;
  const auto [end, error] = std::from_chars(text->data(), text->data() + text->size(), megabits);
  if (error != std::errc() || end != text->data() + text->size() || megabits <= 0 || megabits >= 0xffffffffLL) {
    return std::nullopt;
  }
  return static_cast<std::uint64_t>(megabits) * 1'000'000;
}

std::optional<std::uint64_t> SysfsInterface::address() const {
  const std::optional<std::string> text = attribute("address");
  if (!text) return std::nullopt;
  // "02:00:00:00:00:01": the last six octets of a bridge id's text form.
  return MrpAgent::bridgeIdFromText(std::string("00:00:").append(*text));
}

}  // namespace MrpCli
