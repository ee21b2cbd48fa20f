#include "decode/DecodeCommand.h"

#include <CLI/CLI.hpp>
#include <unistd.h>

#include <iostream>

#include "common/Applications.h"
#include "common/Hex.h"
#include "decode/Decoder.h"
#include "decode/FrameText.h"
#include "format/CaptureReader.h"
#include "format/JsonLine.h"

namespace MrpCli {

namespace {

constexpr int kBadInput = 2;

int fail(std::ostream& err, const std::string& message) {
  err << "mrp decode: " << message << '\n';
  return kBadInput;
}

// Whether `out` writes to the process's standard output, and that is a terminal.
bool isTerminal(const std::ostream& out) { return out.rdbuf() == std::cout.rdbuf() && isatty(STDOUT_FILENO) == 1; }

// The frame in `form`; `seconds` since the capture's first frame.
void print(DecodeCommand::Form form, std::ostream& out, const DecodedFrame& decoded,
           std::optional<Quarn::Seconds> seconds = std::nullopt) {
  if (form == DecodeCommand::Form::json) {
    out << jsonLine(decodedFrameJson(decoded)) << '\n';
    return;
  }
  out << frameSummaryText(decoded, seconds) << '\n';
  if (form == DecodeCommand::Form::verbose) out << frameFieldsText(decoded);
}

}  // namespace

DecodeCommand::DecodeCommand(CLI::App& program)
    : command_(program.add_subcommand(
          "decode", "Decode MRPDUs with the engine's own parser: one line (text or JSON) per frame")) {
  command_
      ->add_option_function<std::string>(
          "--app", [this](const std::string& name) { application_ = applicationNamed(name); },
          "The MRP application of hex input")
      ->type_name("msrp|mvrp")
      ->check(knownApplication());
  command_->add_option("--hex", hex_, "One MRPDU in hex, from its ProtocolVersion octet (spaces and colons ignored)")
      ->type_name("HEX");
  command_->add_option("FILE", file_, "A pcap or pcapng capture of Ethernet frames")->type_name("");
  command_->add_flag("--text", text_, "One line of text per frame (the default on a terminal)");
  command_->add_flag("--json", json_, "One JSON object per frame (the default when the output is not a terminal)");
  command_->add_flag("-V,--verbose", verbose_,
                     "Text, with every field of every message and vector on an indented line of its own");
  command_->footer(
      "Inputs:\n"
      "  mrp decode --app msrp|mvrp --hex HEX   one MRPDU\n"
      "  mrp decode --app msrp|mvrp             one MRPDU in hex per line of standard input\n"
      "  mrp decode FILE                        the MSRP and MVRP frames of a capture; the\n"
      "                                         application follows from address and EtherType\n"
      "Text lines:\n"
      "  frame, seconds from the capture's first frame, sender, application, the attribute\n"
      "  types a LeaveAll was for, then each value with its event; runs of VLANs with one\n"
      "  event as ranges. What the engine counted against a frame follows in brackets:\n"
      "    3  2.000000  02:00:00:00:00:01  MVRP  LeaveAll VLAN  JoinIn VLAN 10-11, Lv VLAN 12\n"
      "    1  MVRP  JoinIn VLAN 10  [malformed: numOfMalformedPkts 1]");
  command_->final_callback([this] { checkInputs(); });
}

DecodeCommand::Form DecodeCommand::formOf(bool text, bool json, bool verbose, bool terminal) {
  if (verbose) return Form::verbose;
  if (text) return Form::text;
  if (json) return Form::json;
  return terminal ? Form::text : Form::json;
}

void DecodeCommand::checkInputs() const {
  if (file_ && (application_ || hex_)) throw CLI::ValidationError("a capture file takes no --app or --hex");
  if (!file_ && !application_) throw CLI::ValidationError("--app msrp|mvrp is needed for hex input");
  if (json_ && (text_ || verbose_)) throw CLI::ValidationError("--json takes no --text or --verbose");
}

int DecodeCommand::run(std::istream& in, std::ostream& out, std::ostream& err) const {
  const Form form = formOf(text_, json_, verbose_, isTerminal(out));
  if (file_) return decodeCapture(form, out, err);
  if (hex_) return decodeHex(form, out, err);
  return decodeHexLines(form, in, out, err);
}

int DecodeCommand::decodeCapture(Form form, std::ostream& out, std::ostream& err) const {
  CaptureReader reader(*file_);
  Decoder decoder;
  unsigned frame = 0;
  std::optional<Quarn::Seconds> first;
  while (auto captured = reader.next()) {
    if (!first) first = captured->seconds;
    print(form, out, decoder.describeFrame(++frame, captured->bytes), captured->seconds - *first);
  }
  if (!reader.ok()) return fail(err, reader.error());
  return 0;
}

int DecodeCommand::decodeHexLines(Form form, std::istream& in, std::ostream& out, std::ostream& err) const {
  Decoder decoder;
  unsigned frame = 0;
  unsigned lineNumber = 0;
  for (std::string line; std::getline(in, line);) {
    ++lineNumber;
    if (line.find_first_not_of(" \t\r") == std::string::npos) continue;
    std::string error;
    const auto mrpdu = hexDecode(line, error);
    if (!mrpdu) return fail(err, "line " + std::to_string(lineNumber) + ": " + error);
    print(form, out, decoder.describeMrpdu(++frame, *application_, *mrpdu));
  }
  return 0;
}

int DecodeCommand::decodeHex(Form form, std::ostream& out, std::ostream& err) const {
  std::string error;
  const auto mrpdu = hexDecode(*hex_, error);
  if (!mrpdu) return fail(err, "--hex: " + error);
  Decoder decoder;
  print(form, out, decoder.describeMrpdu(1, *application_, *mrpdu));
  return 0;
}

}  // namespace MrpCli
