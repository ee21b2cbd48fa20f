#include "format/JsonLine.h"

namespace MrpCli {

namespace {

void append(std::string& text, const nlohmann::ordered_json& value) {
  if (value.is_object()) {
    text += '{';
    const char* separator = "";
    for (const auto& [key, member] : value.items()) {
      text += separator;
      text += nlohmann::ordered_json(key).dump();
      text += ": ";
      append(text, member);
      separator = ", ";
    }
    text += '}';
  } else if (value.is_array()) {
    text += '[';
    const char* separator = "";
    for (const auto& element : value) {
      text += separator;
      append(text, element);
      separator = ", ";
    }
    text += ']';
  } else {
    text += value.dump();
  }
}

}  // namespace

std::string jsonLine(const nlohmann::ordered_json& value) {
  std::string text;
  append(text, value);
  return text;
}

}  // namespace MrpCli
