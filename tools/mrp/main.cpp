// mrp: the command-line face of libMrpSm.

#include <cstdio>
#include <iostream>
#include <string>
#include <vector>

#include "DecodeCommand.h"

namespace {

constexpr const char* kUsage =
    "usage: mrp <command> [options]\n"
    "\n"
    "Runs the Multiple Registration Protocol engine of libMrpSm (MSRP and MVRP).\n"
    "\n"
    "commands:\n"
    "  decode --app msrp|mvrp --hex HEX   decode one MRPDU (from its ProtocolVersion octet)\n"
    "  decode --app msrp|mvrp             decode one MRPDU per line of hex on standard input\n"
    "  decode FILE                        decode the MSRP and MVRP frames of a pcap or pcapng capture\n"
    "         decode prints one JSON object per frame\n"
    "\n"
    "options:\n"
    "  -h, --help       show this help and exit\n"
    "  -V, --version    show the version and exit\n"
    "\n"
    "environment:\n"
    "  MRP_TRACE        trace levels per tag, e.g. MRP_TRACE=\"MrpSm/0-9\" (levels 0-9)\n";

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fputs(kUsage, stderr);
    return 2;
  }
  const std::string command = argv[1];
  if (command == "-h" || command == "--help") {
    std::fputs(kUsage, stdout);
    return 0;
  }
  if (command == "-V" || command == "--version") {
    std::printf("mrp %s\n", MRP_VERSION);
    return 0;
  }
  if (command == "decode") {
    return MrpCli::runDecode(std::vector<std::string>(argv + 2, argv + argc), std::cin, std::cout, std::cerr);
  }
  std::fprintf(stderr, "mrp: unknown command or option '%s' (try 'mrp --help')\n", command.c_str());
  return 2;
}
