#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace MrpCli {

// What the kernel tells of a network interface under /sys/class/net.
class SysfsInterface {
 public:
  explicit SysfsInterface(std::string name, std::string root = "/sys/class/net")
      : name_(std::move(name)), root_(std::move(root)) {}

  // The link speed in bit/s; nullopt when the kernel does not know one (an
  // interface that is absent or down, or a virtual one without a speed).
  std::optional<std::uint64_t> speed() const;
  // The 48-bit MAC address; nullopt when it cannot be read.
  std::optional<std::uint64_t> address() const;

 private:
  std::optional<std::string> attribute(const char* file) const;

  std::string name_;
  std::string root_;
};

}  // namespace MrpCli
