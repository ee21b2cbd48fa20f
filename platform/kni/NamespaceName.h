#pragma once

#include <cstddef>
#include <ostream>
#include <string>

namespace KernelNetInfo {

// The name of a kernel network namespace, at most 150 bytes.
class NamespaceName {
 public:
  static constexpr std::size_t kMaxBytes = 150;
  // The namespace the system runs in.
  static constexpr const char* kDefault = "default";

  NamespaceName() : NamespaceName(kDefault) {}
  // Throws std::range_error "NamespaceName::bytes > 150 not allowed".
  explicit NamespaceName(std::string name);

  const std::string& string() const { return name_; }

  friend bool operator==(const NamespaceName&, const NamespaceName&) = default;
  friend std::ostream& operator<<(std::ostream& os, const NamespaceName& n) { return os << n.name_; }

 private:
  std::string name_;
};

}  // namespace KernelNetInfo
