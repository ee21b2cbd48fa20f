#include "replay/ReplayCommand.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <ostream>

#include "common/Applications.h"
#include "decode/Decoder.h"
#include "format/CaptureReader.h"
#include "html/ReportRecorder.h"
#include "report/JsonTimeline.h"
#include "report/TextTimeline.h"
#include "sim/Simulation.h"

namespace MrpCli {

namespace {

constexpr int kBadInput = 2;

int fail(std::ostream& err, const std::string& message) {
  err << "mrp replay: " << message << '\n';
  return kBadInput;
}

// An option check that accepts a MAC address; its message names what was given.
CLI::Validator macAddress() {
  return CLI::Validator(
      [](std::string& value) -> std::string {
        if (Velo::EthAddr::fromString(value)) return "";
        return "not a MAC address '" + value + "' (like 00:1b:21:aa:bb:01)";
      },
      "");
}

struct MrpFrame {
  Quarn::Seconds seconds;
  Mrp::MrpApplication application;
  std::vector<std::uint8_t> bytes;
};

}  // namespace

ReplayCommand::ReplayCommand(CLI::App& program)
    : command_(program.add_subcommand(
          "replay", "Replay the MRP frames of a capture into one bridge's port, in simulated time")) {
  command_->add_option("CAPTURE", file_, "A pcap or pcapng capture of Ethernet frames")->type_name("")->required();
  command_
      ->add_option_function<std::string>(
          "--app", [this](const std::string& name) { application_ = applicationNamed(name); },
          "Replay only this application's frames (both by default)")
      ->type_name("msrp|mvrp")
      ->check(knownApplication());
  command_
      ->add_option_function<std::string>(
          "--from", [this](const std::string& text) { from_ = Velo::EthAddr::fromString(text); },
          "Replay only the frames this station sent")
      ->type_name("MAC")
      ->check(macAddress());
  command_
      ->add_option_function<std::string>(
          "--to", [this](const std::string& text) { to_ = Velo::EthAddr::fromString(text); },
          "Replay only the frames this station heard: those it did not send")
      ->type_name("MAC")
      ->check(macAddress());
  command_->add_option("--out", outFile_, "Write what the bridge sent to a pcap file")->type_name("OUT.pcap");
  command_->add_flag("--json", json_, "Print the timeline as JSON lines");
  command_->add_option("--html", htmlFile_,
                       "Also write a picture of the replay to FILE: a timeline per application, the tables at the "
                       "end; one HTML file that needs nothing else")
      ->type_name("FILE");
  command_->add_flag("--no-leaveall", noLeaveAll_,
                     "Hide LeaveAll lines in the text timeline (the --json timeline keeps them)");
  command_->footer(
      "Each frame arrives at the capture's time from the first frame on; the bridge runs the\n"
      "applications the capture carries. Its own LeaveAll timer is set past the end of the\n"
      "capture: the capture's peers could not answer its LeaveAll.\n"
      "A capture of a link holds what both its ends sent; --from MAC replays one end's frames\n"
      "(what its neighbour heard), --to MAC the other's (what the station MAC heard).");
  command_->final_callback([this] {
    if (from_ && to_) throw CLI::ValidationError("--from and --to cannot be given together");
  });
}

bool ReplayCommand::chosen() const { return command_->parsed(); }

bool ReplayCommand::replays(const Velo::EthAddr& source) const {
  if (from_) return source == *from_;
  if (to_) return source != *to_;
  return true;
}

std::string ReplayCommand::framesWanted() const {
  std::string text = application_ ? applicationName(*application_) : "MSRP or MVRP";
  text.append(" frame");
  if (from_) text.append(" from ").append(from_->toString());
  if (to_) text.append(" not from ").append(to_->toString());
  return text;
}

int ReplayCommand::run(std::ostream& out, std::ostream& err) const {
  CaptureReader reader(file_);
  Decoder decoder;
  std::vector<MrpFrame> frames;
  unsigned count = 0;
  while (auto captured = reader.next()) {
    const DecodedFrame decoded = decoder.describeFrame(++count, captured->bytes);
    if (decoded.skipped || (application_ && decoded.application != *application_)) continue;
    if (!replays(*decoded.source)) continue;
    frames.push_back({captured->seconds, decoded.application, std::move(captured->bytes)});
  }
  if (!reader.ok()) return fail(err, reader.error());
  if (frames.empty()) return fail(err, file_ + ": no " + framesWanted());

  Scenario scenario;
  for (const MrpFrame& frame : frames) {
    if (!std::count(scenario.applications.begin(), scenario.applications.end(), frame.application)) {
      scenario.applications.push_back(frame.application);
    }
  }
  const Quarn::Seconds origin = frames.front().seconds;
  scenario.bridges.push_back({kBridge, {kPort}});
  for (const MrpFrame& frame : frames) {
    scenario.events.push_back({frame.seconds - origin, Scenario::Inject{kBridge, kPort, frame.bytes}});
  }
  scenario.until = frames.back().seconds - origin + kSettleSeconds;
  scenario.config.leaveAllTime = scenario.until + kSettleSeconds;

  std::shared_ptr<CaptureWriter> capture;
  if (outFile_) {
    capture = std::make_shared<CaptureWriter>(*outFile_);
    if (!capture->ok()) return fail(err, capture->error());
  }
  std::unique_ptr<Timeline> timeline;
  if (json_) {
    timeline = std::make_unique<JsonTimeline>(out);
  } else {
    timeline = std::make_unique<TextTimeline>(out, std::vector<std::string>{kBridge}, std::vector<std::string>{kPort},
                                              TextTimelineOptions{.hideLeaveAll = noLeaveAll_});
  }
  ReportRecorder recorder(*timeline, htmlFile_, scenario,
                          std::string("mrp replay ").append(std::filesystem::path(file_).filename().string()),
                          scenario.until);
  {
    Simulation simulation(scenario, recorder.timeline());
    if (capture) simulation.captureIs({kBridge, kPort}, capture, origin);
    simulation.run(scenario.until);
  }
  std::string error;
  if (!recorder.finish(error)) return fail(err, error);
  if (capture) {
    capture->flush();
    if (!capture->ok()) return fail(err, capture->error());
  }
  return 0;
}

}  // namespace MrpCli
