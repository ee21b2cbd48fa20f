#pragma once

#include <compare>
#include <functional>
#include <ostream>
#include <string>
#include <utility>

namespace Velo {

// Identifier of a port, e.g. "Ethernet1". The default id is empty.
//
// Names are interned: every id of one name shares one process-wide copy
// with its hash, so ids compare equal, hash and copy without touching the
// characters. Ports are few and their names are kept for the life of the
// process. The hash is the name's own, so hashed containers iterate in the
// same order from run to run.
class IntfId {
 public:
  IntfId() : name_(&emptyName()) {}
  explicit IntfId(const std::string& name) : name_(&interned(name)) {}

  const std::string& name() const { return name_->first; }
  const std::string& stringValue() const { return name_->first; }
  bool empty() const { return name_->first.empty(); }
  std::size_t hash() const { return name_->second; }

  friend bool operator==(const IntfId& a, const IntfId& b) { return a.name_ == b.name_; }
  // In name order.
  friend std::strong_ordering operator<=>(const IntfId& a, const IntfId& b) {
    return a.name_ == b.name_ ? std::strong_ordering::equal : a.name_->first <=> b.name_->first;
  }
  friend std::ostream& operator<<(std::ostream& os, const IntfId& id) { return os << id.name_->first; }

 private:
  // A name and its hash.
  using Name = std::pair<const std::string, std::size_t>;
  static const Name& emptyName();
  // The process's one copy of `name`.
  static const Name& interned(const std::string& name);

  const Name* name_;
};

}  // namespace Velo

template <>
struct std::hash<Velo::IntfId> {
  std::size_t operator()(const Velo::IntfId& id) const noexcept { return id.hash(); }
};
