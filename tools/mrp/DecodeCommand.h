#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace MrpCli {

// `mrp decode`: prints one JSON line per MRPDU. Returns the exit status:
// 0, or 2 after a one-line error on `err` for bad input.
//   mrp decode --app msrp|mvrp --hex HEX
//   mrp decode --app msrp|mvrp            (one MRPDU in hex per line of `in`)
//   mrp decode FILE                       (a pcap or pcapng capture)
int runDecode(const std::vector<std::string>& args, std::istream& in, std::ostream& out, std::ostream& err);

}  // namespace MrpCli
