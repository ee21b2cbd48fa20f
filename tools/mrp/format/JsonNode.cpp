#include "format/JsonNode.h"

#include <algorithm>
#include <cmath>
#include <set>

namespace MrpCli {

namespace {

// nlohmann's message without its "[json.exception.parse_error.101] " tag.
std::string parseMessage(const nlohmann::json::parse_error& error) {
  const std::string what = error.what();
  const auto tagEnd = what.find("] ");
  return tagEnd == std::string::npos ? what : what.substr(tagEnd + 2);
}

// Follows a parse to know the place of each member, and refuses a name an
// object has already.
class UniqueNames {
 public:
  using Json = nlohmann::ordered_json;

  bool operator()(int, Json::parse_event_t event, const Json& parsed) {
    switch (event) {
      case Json::parse_event_t::object_start:
      case Json::parse_event_t::array_start:
        open_.push_back({event == Json::parse_event_t::array_start, placeOfNext(), {}, 0});
        break;
      case Json::parse_event_t::key:
        doName(parsed.get<std::string>());
        break;
      case Json::parse_event_t::object_end:
      case Json::parse_event_t::array_end:
        open_.pop_back();
        doCount();
        break;
      case Json::parse_event_t::value:
        doCount();
        break;
    }
    return true;
  }

 private:
  struct Container {
    bool array;
    std::string place;
    std::set<std::string> names;
    std::size_t items;
  };

  std::string placeOfNext() const {
    if (open_.empty()) return "";
    const Container& in = open_.back();
    if (in.array) return in.place + "[" + std::to_string(in.items) + "]";
    return in.place.empty() ? name_ : in.place + "." + name_;
  }
  void doName(const std::string& name) {
    name_ = name;
    if (!open_.back().names.insert(name).second) throw JsonInputError(placeOfNext() + ": named twice");
  }
  void doCount() {
    if (!open_.empty() && open_.back().array) ++open_.back().items;
  }

  std::vector<Container> open_;
  std::string name_;  // of the member being read
};

nlohmann::ordered_json parsedWith(std::string_view text, nlohmann::ordered_json::parser_callback_t callback) {
  try {
    return nlohmann::ordered_json::parse(text, std::move(callback));
  } catch (const nlohmann::json::parse_error& error) {
    throw JsonInputError("not JSON: " + parseMessage(error));
  }
}

}  // namespace

std::string commaListed(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) text.append(text.empty() ? "" : ", ").append(name);
  return text;
}

nlohmann::ordered_json jsonParsed(std::string_view text) { return parsedWith(text, nullptr); }

nlohmann::ordered_json jsonParsedWithUniqueNames(std::string_view text) { return parsedWith(text, UniqueNames()); }

void JsonNode::fail(const std::string& message) const {
  throw JsonInputError((place_.empty() ? "" : place_ + ": ") + message);
}

JsonNode JsonNode::operator[](const char* name) const {
  if (!has(name)) JsonNode(json_, child(name)).fail("missing");
  return JsonNode(json_.at(name), child(name));
}

JsonNode JsonNode::item(std::size_t index) const {
  return JsonNode(json_.at(index), place_ + "[" + std::to_string(index) + "]");
}

void JsonNode::object() const {
  if (!json_.is_object()) fail("an object is needed");
}

const JsonNode& JsonNode::object(std::initializer_list<std::string_view> names) const {
  object();
  for (const auto& [name, member] : json_.items()) {
    if (std::find(names.begin(), names.end(), name) == names.end()) JsonNode(member, child(name)).fail("unknown field");
  }
  return *this;
}

std::size_t JsonNode::listSize() const {
  if (!json_.is_array()) fail("a list is needed");
  return json_.size();
}

std::string JsonNode::string() const {
  if (!json_.is_string()) fail("a string is needed");
  return json_.get<std::string>();
}

bool JsonNode::boolean() const {
  if (!json_.is_boolean()) fail("true or false is needed");
  return json_.get<bool>();
}

double JsonNode::seconds() const {
  if (!json_.is_number()) fail("a number of seconds is needed");
  const double value = json_.get<double>();
  if (!(value >= 0) || !std::isfinite(value)) fail(json_.dump() + " is not a time (seconds, 0 or more)");
  return value;
}

std::uint64_t JsonNode::whole(std::uint64_t lo, std::uint64_t hi, const char* noun, const char* meanings) const {
  const bool inRange =
      json_.is_number_unsigned() && json_.get<std::uint64_t>() >= lo && json_.get<std::uint64_t>() <= hi;
  if (inRange) return json_.get<std::uint64_t>();
  if (!json_.is_number_integer()) fail("a whole number is needed");
  fail(json_.dump() + " is not " + noun + " (" + std::to_string(lo) + ".." + std::to_string(hi) +
       (meanings ? std::string(": ") + meanings : "") + ")");
}

std::string JsonNode::child(std::string_view name) const {
  return (place_.empty() ? "" : place_ + ".") + std::string(name);
}

}  // namespace MrpCli
