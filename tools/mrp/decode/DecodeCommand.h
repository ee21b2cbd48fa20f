#pragma once

#include <iosfwd>
#include <optional>
#include <string>

#include "MrpModel/MrpApplication.h"

namespace CLI {
class App;
}

namespace MrpCli {

// `mrp decode`: prints one JSON line per MRPDU.
//   mrp decode --app msrp|mvrp --hex HEX
//   mrp decode --app msrp|mvrp            (one MRPDU in hex per line of `in`)
//   mrp decode FILE                       (a pcap or pcapng capture)
class DecodeCommand {
 public:
  // Adds the subcommand, its options and their checks to `program`; bad
  // arguments make the program's parse throw.
  explicit DecodeCommand(CLI::App& program);

  // Decodes the input the arguments named. Returns the exit status: 0, or 2
  // after a one-line error on `err` for bad input.
  int run(std::istream& in, std::ostream& out, std::ostream& err) const;

 private:
  void checkInputs() const;
  int decodeCapture(std::ostream& out, std::ostream& err) const;
  int decodeHexLines(std::istream& in, std::ostream& out, std::ostream& err) const;
  int decodeHex(std::ostream& out, std::ostream& err) const;

  CLI::App* command_;
  std::optional<Mrp::MrpApplication> application_;
  std::optional<std::string> hex_;
  std::optional<std::string> file_;
};

}  // namespace MrpCli
