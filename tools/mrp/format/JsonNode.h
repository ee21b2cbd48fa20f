#pragma once

#include <nlohmann/json.hpp>

#include <cstdint>
#include <initializer_list>
#include <stdexcept>
#include <string>
#include <vector>
#include <string_view>

namespace MrpCli {

// What is wrong with a JSON input, and where: "events[3].declare.vlan: 4095
// is not a VLAN id (1..4094)", or "not JSON: ..." for text that is not JSON.
class JsonInputError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// "a, b, c": names for a message that says which are allowed.
std::string commaListed(const std::vector<std::string>& names);

// The JSON of text; throws JsonInputError "not JSON: ..." for text that is not.
nlohmann::ordered_json jsonParsed(std::string_view text);
// The same, and a member named twice in one object is a JsonInputError
// naming it ("ports.eth1: named twice") rather than the last one winning.
nlohmann::ordered_json jsonParsedWithUniqueNames(std::string_view text);

// A member of a JSON input with the place it has there, for messages. Every
// check throws JsonInputError naming the place.
class JsonNode {
 public:
  using Json = nlohmann::ordered_json;

  JsonNode(const Json& json, std::string place) : json_(json), place_(std::move(place)) {}

  const Json& json() const { return json_; }
  const std::string& place() const { return place_; }

  [[noreturn]] void fail(const std::string& message) const;

  bool has(const char* name) const { return json_.contains(name); }
  // The member `name`; missing is an error.
  JsonNode operator[](const char* name) const;
  JsonNode item(std::size_t index) const;

  void object() const;
  // An object whose members are all among `names`.
  const JsonNode& object(std::initializer_list<std::string_view> names) const;
  std::size_t listSize() const;
  std::string string() const;
  bool boolean() const;
  // A number of seconds, 0 or more.
  double seconds() const;
  // A whole number in [lo, hi]; `noun` names what it is for the message,
  // `meanings` what the numbers stand for, if they stand for names.
  std::uint64_t whole(std::uint64_t lo, std::uint64_t hi, const char* noun, const char* meanings = nullptr) const;

 private:
  std::string child(std::string_view name) const;

  const Json& json_;
  std::string place_;
};

}  // namespace MrpCli
