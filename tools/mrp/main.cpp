// mrp: the command-line face of libMrpSm.

#include <cstdio>
#include <cstring>
#include <string>

namespace {

constexpr const char* kUsage =
    "usage: mrp <command> [options]\n"
    "\n"
    "Runs the Multiple Registration Protocol engine of libMrpSm (MSRP and MVRP).\n"
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
  const std::string arg = argv[1];
  if (arg == "-h" || arg == "--help") {
    std::fputs(kUsage, stdout);
    return 0;
  }
  if (arg == "-V" || arg == "--version") {
    std::printf("mrp %s\n", MRP_VERSION);
    return 0;
  }
  std::fprintf(stderr, "mrp: unknown command or option '%s' (try 'mrp --help')\n", arg.c_str());
  return 2;
}
