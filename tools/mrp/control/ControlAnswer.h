#pragma once

#include <nlohmann/json.hpp>

#include <optional>
#include <string>

namespace MrpCli {

// The agent's answer to one control request, as it travels back on one line:
//   {"ok": true, "result": {...}, "text": "what a person reads"}
//   {"ok": false, "error": "attribute.vlan: 4095 is not a VLAN id (1..4094)"}
struct ControlAnswer {
  bool ok = true;
  std::string error;
  nlohmann::ordered_json result = nlohmann::ordered_json::object();
  std::string text;

  static ControlAnswer failure(std::string error) { return {false, std::move(error), {}, {}}; }
  // {"ok": ..., "result" and "text", or "error"}.
  nlohmann::ordered_json json() const;
  // The line, without its newline.
  std::string line() const;
  // The answer a line carries; nullopt for a line that is not one.
  static std::optional<ControlAnswer> fromLine(const std::string& line);
};

}  // namespace MrpCli
