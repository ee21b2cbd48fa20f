#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace MrpTest {

// Sets (or, with no value, unsets) one environment variable for the life of
// the object, and puts back what was there before.
class ScopedEnv {
 public:
  ScopedEnv(std::string name, const std::optional<std::string>& value) : name_(std::move(name)) {
    if (const char* before = std::getenv(name_.c_str())) before_ = before;
    valueIs(value);
  }
  ~ScopedEnv() { valueIs(before_); }
  ScopedEnv(const ScopedEnv&) = delete;
  ScopedEnv& operator=(const ScopedEnv&) = delete;

 private:
  void valueIs(const std::optional<std::string>& value) const {
    if (value) {
      setenv(name_.c_str(), value->c_str(), 1);
    } else {
      unsetenv(name_.c_str());
    }
  }

  std::string name_;
  std::optional<std::string> before_;
};

}  // namespace MrpTest
