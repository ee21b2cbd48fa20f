// mrp: the command-line face of libMrpSm.

#include <iostream>
#include <string>
#include <vector>

#include "MrpProgram.h"

int main(int argc, char** argv) {
  return MrpCli::runMrp(std::vector<std::string>(argv + 1, argv + argc), std::cin, std::cout, std::cerr);
}
