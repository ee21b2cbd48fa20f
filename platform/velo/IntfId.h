#pragma once

#include <functional>
#include <ostream>
#include <string>

namespace Velo {

// Identifier of a port, e.g. "Ethernet1". The default id is empty.
class IntfId {
 public:
  IntfId() = default;
  explicit IntfId(std::string name) : name_(std::move(name)) {}

  const std::string& name() const { return name_; }
  const std::string& stringValue() const { return name_; }
  bool empty() const { return name_.empty(); }

  friend bool operator==(const IntfId&, const IntfId&) = default;
  friend auto operator<=>(const IntfId&, const IntfId&) = default;
  friend std::ostream& operator<<(std::ostream& os, const IntfId& id) { return os << id.name_; }

 private:
  std::string name_;
};

}  // namespace Velo

template <>
struct std::hash<Velo::IntfId> {
  std::size_t operator()(const Velo::IntfId& id) const noexcept { return std::hash<std::string>{}(id.name()); }
};
