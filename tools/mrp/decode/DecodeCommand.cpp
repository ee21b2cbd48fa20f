#include "decode/DecodeCommand.h"

#include <CLI/CLI.hpp>

#include <istream>
#include <ostream>

#include "common/Applications.h"
#include "common/Hex.h"
#include "decode/Decoder.h"
#include "format/CaptureReader.h"
#include "format/JsonLine.h"

namespace MrpCli {

namespace {

constexpr int kBadInput = 2;

int fail(std::ostream& err, const std::string& message) {
  err << "mrp decode: " << message << '\n';
  return kBadInput;
}

}  // namespace

DecodeCommand::DecodeCommand(CLI::App& program)
    : command_(
          program.add_subcommand("decode", "Decode MRPDUs with the engine's own parser: one JSON object per frame")) {
  command_
      ->add_option_function<std::string>(
          "--app", [this](const std::string& name) { application_ = applicationNamed(name); },
          "The MRP application of hex input")
      ->type_name("msrp|mvrp")
      ->check(knownApplication());
  command_->add_option("--hex", hex_, "One MRPDU in hex, from its ProtocolVersion octet (spaces and colons ignored)")
      ->type_name("HEX");
  command_->add_option("FILE", file_, "A pcap or pcapng capture of Ethernet frames")->type_name("");
  command_->footer(
      "Inputs:\n"
      "  mrp decode --app msrp|mvrp --hex HEX   one MRPDU\n"
      "  mrp decode --app msrp|mvrp             one MRPDU in hex per line of standard input\n"
      "  mrp decode FILE                        the MSRP and MVRP frames of a capture; the\n"
      "                                         application follows from address and EtherType");
  command_->final_callback([this] { checkInputs(); });
}

void DecodeCommand::checkInputs() const {
  if (file_ && (application_ || hex_)) throw CLI::ValidationError("a capture file takes no --app or --hex");
  if (!file_ && !application_) throw CLI::ValidationError("--app msrp|mvrp is needed for hex input");
}

int DecodeCommand::run(std::istream& in, std::ostream& out, std::ostream& err) const {
  if (file_) return decodeCapture(out, err);
  if (hex_) return decodeHex(out, err);
  return decodeHexLines(in, out, err);
}

int DecodeCommand::decodeCapture(std::ostream& out, std::ostream& err) const {
  CaptureReader reader(*file_);
  Decoder decoder;
  unsigned frame = 0;
  while (auto captured = reader.next()) out << jsonLine(decoder.decodeFrame(++frame, captured->bytes)) << '\n';
  if (!reader.ok()) return fail(err, reader.error());
  return 0;
}

int DecodeCommand::decodeHexLines(std::istream& in, std::ostream& out, std::ostream& err) const {
  Decoder decoder;
  unsigned frame = 0;
  unsigned lineNumber = 0;
  for (std::string line; std::getline(in, line);) {
    ++lineNumber;
    if (line.find_first_not_of(" \t\r") == std::string::npos) continue;
    std::string error;
    const auto mrpdu = hexDecode(line, error);
    if (!mrpdu) return fail(err, "line " + std::to_string(lineNumber) + ": " + error);
    out << jsonLine(decoder.decodeMrpdu(++frame, *application_, *mrpdu)) << '\n';
  }
  return 0;
}

int DecodeCommand::decodeHex(std::ostream& out, std::ostream& err) const {
  std::string error;
  const auto mrpdu = hexDecode(*hex_, error);
  if (!mrpdu) return fail(err, "--hex: " + error);
  Decoder decoder;
  out << jsonLine(decoder.decodeMrpdu(1, *application_, *mrpdu)) << '\n';
  return 0;
}

}  // namespace MrpCli
