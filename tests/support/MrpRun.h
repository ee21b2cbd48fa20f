#pragma once

#include <sstream>
#include <string>
#include <vector>

#include "MrpProgram.h"

namespace MrpTest {

// What one run of the mrp program printed and returned.
struct MrpRun {
  int status;
  std::string out;
  std::string err;
};

// Runs the mrp program in this process on `args` (without the program name).
inline MrpRun mrp(const std::vector<std::string>& args, const std::string& input = "") {
  std::istringstream in(input);
  std::ostringstream out, err;
  const int status = MrpCli::runMrp(args, in, out, err);
  return {status, out.str(), err.str()};
}

}  // namespace MrpTest
