#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace MrpTest {

// For the SetUp() of a test that needs a program on the machine: when it is
// missing (`available` false), the test fails if the environment variable CI
// is set (CI must run it) and is skipped otherwise. `tool` names the program,
// `purpose` what CI would miss without it.
inline void requireTool(bool available, const std::string& tool, const std::string& purpose) {
  if (available) return;
  const char* ci = std::getenv("CI");
  if (ci && *ci) {
    FAIL() << tool << " is not installed, and CI is set: " << purpose << " must run";
  }
  GTEST_SKIP() << tool << " is not installed";
}

}  // namespace MrpTest
