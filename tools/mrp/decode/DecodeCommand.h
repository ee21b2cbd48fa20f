#pragma once

#include <iosfwd>
#include <optional>
#include <string>

#include "MrpModel/MrpApplication.h"

namespace CLI {
class App;
}

namespace MrpCli {

struct DecodedFrame;

// `mrp decode`: prints one line per MRPDU, as text or as JSON.
//   mrp decode --app msrp|mvrp --hex HEX
//   mrp decode --app msrp|mvrp            (one MRPDU in hex per line of `in`)
//   mrp decode FILE                       (a pcap or pcapng capture)
class DecodeCommand {
 public:
  enum class Form { text, verbose, json };

  // Adds the subcommand, its options and their checks to `program`; bad
  // arguments make the program's parse throw.
  explicit DecodeCommand(CLI::App& program);

  // Decodes the input the arguments named. Returns the exit status: 0, or 2
  // after a one-line error on `err` for bad input.
  int run(std::istream& in, std::ostream& out, std::ostream& err) const;

  // The output form the options ask for; without --text, --json or -V, text
  // for a terminal and JSON for a program.
  static Form formOf(bool text, bool json, bool verbose, bool terminal);

 private:
  void checkInputs() const;
  int decodeCapture(Form form, std::ostream& out, std::ostream& err) const;
  int decodeHexLines(Form form, std::istream& in, std::ostream& out, std::ostream& err) const;
  int decodeHex(Form form, std::ostream& out, std::ostream& err) const;

  CLI::App* command_;
  std::optional<Mrp::MrpApplication> application_;
  std::optional<std::string> hex_;
  std::optional<std::string> file_;
  bool text_ = false;
  bool json_ = false;
  bool verbose_ = false;
};

}  // namespace MrpCli
