#include "kni/NamespaceName.h"

#include <stdexcept>

namespace KernelNetInfo {

NamespaceName::NamespaceName(std::string name) : name_(std::move(name)) {
  if (name_.size() > kMaxBytes) throw std::range_error("NamespaceName::bytes > 150 not allowed");
}

}  // namespace KernelNetInfo
