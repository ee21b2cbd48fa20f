#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace MrpCli {

// The mrp program: reads the command line `args` (without the program name),
// runs the chosen subcommand on the given streams and returns the exit
// status. --help (on the program and on each subcommand) and --version print
// to `out` and return 0; bad arguments print one line to `err`, naming the
// command and pointing at its --help, and return 2.
int runMrp(const std::vector<std::string>& args, std::istream& in, std::ostream& out, std::ostream& err);

}  // namespace MrpCli
