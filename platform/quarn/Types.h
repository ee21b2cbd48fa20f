#pragma once

#include <limits>
#include <ostream>
#include <string>
#include <utility>

namespace Quarn {

using String = std::string;

// Time and durations, in seconds.
using Seconds = double;
inline constexpr Seconds kInfinity = std::numeric_limits<Seconds>::infinity();

// The name of a framework object ("MrpCounters", "Ethernet1" ...).
class Name {
 public:
  Name() = default;
  Name(const char* s) : value_(s) {}
  Name(String s) : value_(std::move(s)) {}

  const String& string() const { return value_; }
  bool empty() const { return value_.empty(); }

  friend bool operator==(const Name&, const Name&) = default;
  friend auto operator<=>(const Name&, const Name&) = default;
  friend std::ostream& operator<<(std::ostream& os, const Name& n) { return os << n.value_; }

 private:
  String value_;
};

}  // namespace Quarn

template <>
struct std::hash<Quarn::Name> {
  std::size_t operator()(const Quarn::Name& n) const noexcept { return std::hash<std::string>{}(n.string()); }
};
