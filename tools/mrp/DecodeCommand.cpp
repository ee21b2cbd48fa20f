#include "DecodeCommand.h"

#include <istream>
#include <optional>
#include <ostream>

#include "CaptureReader.h"
#include "Decoder.h"
#include "Hex.h"

namespace MrpCli {

namespace {

constexpr int kBadInput = 2;

struct DecodeOptions {
  std::optional<Mrp::MrpApplication> application;
  std::optional<std::string> hex;
  std::optional<std::string> pcapFile;
};

int fail(std::ostream& err, const std::string& message) {
  err << "mrp decode: " << message << '\n';
  return kBadInput;
}

// Parses the arguments; returns an error message, empty on success.
std::string parseOptions(const std::vector<std::string>& args, DecodeOptions& options) {
  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string& arg = args[i];
    if (arg == "--app" || arg == "--hex") {
      if (i + 1 >= args.size()) return arg + " needs a value";
      const std::string& value = args[++i];
      if (arg == "--hex") {
        options.hex = value;
      } else if (value == "msrp") {
        options.application = Mrp::MrpApplication::msrp;
      } else if (value == "mvrp") {
        options.application = Mrp::MrpApplication::mvrp;
      } else {
        return "unknown application '" + value + "' (msrp or mvrp)";
      }
    } else if (!arg.empty() && arg[0] == '-') {
      return "unknown option '" + arg + "'";
    } else if (options.pcapFile) {
      return "more than one file given";
    } else {
      options.pcapFile = arg;
    }
  }
  if (options.pcapFile && (options.application || options.hex)) return "a capture file takes no --app or --hex";
  if (!options.pcapFile && !options.application) return "--app msrp|mvrp is needed for hex input";
  return "";
}

int decodeCapture(const std::string& path, std::ostream& out, std::ostream& err) {
  CaptureReader reader(path);
  Decoder decoder;
  unsigned frame = 0;
  while (auto captured = reader.next()) out << decoder.decodeFrame(++frame, captured->bytes) << '\n';
  if (!reader.ok()) return fail(err, reader.error());
  return 0;
}

int decodeHexLines(Mrp::MrpApplication application, std::istream& in, std::ostream& out, std::ostream& err) {
  Decoder decoder;
  unsigned frame = 0;
  unsigned lineNumber = 0;
  for (std::string line; std::getline(in, line);) {
    ++lineNumber;
    if (line.find_first_not_of(" \t\r") == std::string::npos) continue;
    std::string error;
    const auto mrpdu = hexDecode(line, error);
    if (!mrpdu) return fail(err, "line " + std::to_string(lineNumber) + ": " + error);
    out << decoder.decodeMrpdu(++frame, application, *mrpdu) << '\n';
  }
  return 0;
}

}  // namespace

int runDecode(const std::vector<std::string>& args, std::istream& in, std::ostream& out, std::ostream& err) {
  DecodeOptions options;
  if (const std::string error = parseOptions(args, options); !error.empty()) return fail(err, error);
  if (options.pcapFile) return decodeCapture(*options.pcapFile, out, err);
  if (!options.hex) return decodeHexLines(*options.application, in, out, err);
  std::string error;
  const auto mrpdu = hexDecode(*options.hex, error);
  if (!mrpdu) return fail(err, "--hex: " + error);
  Decoder decoder;
  out << decoder.decodeMrpdu(1, *options.application, *mrpdu) << '\n';
  return 0;
}

}  // namespace MrpCli
