#include "control/ControlAnswer.h"

namespace MrpCli {

nlohmann::ordered_json ControlAnswer::json() const {
  nlohmann::ordered_json json = {{"ok", ok}};
  if (ok) {
    json["result"] = result;
    json["text"] = text;
  } else {
    json["error"] = error;
  }
  return json;
}

std::string ControlAnswer::line() const {
  // An answer may hold any bytes a port or value name brought along.
  return json().dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

std::optional<ControlAnswer> ControlAnswer::fromLine(const std::string& line) {
  const auto json = nlohmann::ordered_json::parse(line, nullptr, false);
  if (!json.is_object() || !json.contains("ok") || !json["ok"].is_boolean()) return std::nullopt;
  if (!json["ok"].get<bool>()) {
    if (!json.contains("error") || !json["error"].is_string()) return std::nullopt;
    return failure(json["error"].get<std::string>());
  }
  ControlAnswer answer;
  if (json.contains("result")) answer.result = json["result"];
  if (json.contains("text") && json["text"].is_string()) answer.text = json["text"].get<std::string>();
  return answer;
}

}  // namespace MrpCli
