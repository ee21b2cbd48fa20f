#include "replay/ReplayCommand.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <memory>
#include <ostream>

#include "common/Applications.h"
#include "decode/Decoder.h"
#include "format/CaptureReader.h"
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
  command_->add_option("--out", outFile_, "Write what the bridge sent to a pcap file")->type_name("OUT.pcap");
  command_->add_flag("--json", json_, "Print the timeline as JSON lines");
  command_->add_flag("--no-leaveall", noLeaveAll_,
                     "Hide LeaveAll lines in the text timeline (the --json timeline keeps them)");
  command_->footer(
      "Each frame arrives at the capture's time from the first frame on; the bridge runs the\n"
      "applications the capture carries. Its own LeaveAll timer is set past the end of the\n"
      "capture: the capture's peers could not answer its LeaveAll.");
}

bool ReplayCommand::chosen() const { return command_->parsed(); }

int ReplayCommand::run(std::ostream& out, std::ostream& err) const {
  CaptureReader reader(file_);
  Decoder decoder;
  std::vector<MrpFrame> frames;
  unsigned count = 0;
  while (auto captured = reader.next()) {
    const auto application = applicationNamed(decoder.decodeFrame(++count, captured->bytes).value("application", ""));
    if (!application || (application_ && *application != *application_)) continue;
    frames.push_back({captured->seconds, *application, std::move(captured->bytes)});
  }
  if (!reader.ok()) return fail(err, reader.error());
  if (frames.empty()) {
    return fail(err, file_ + ": no " + (application_ ? applicationName(*application_) : std::string("MSRP or MVRP")) +
                         " frame");
  }

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
  {
    Simulation simulation(scenario, *timeline);
    if (capture) simulation.captureIs({kBridge, kPort}, capture, origin);
    simulation.run(scenario.until);
  }
  timeline->flush();
  if (capture) {
    capture->flush();
    if (!capture->ok()) return fail(err, capture->error());
  }
  return 0;
}

}  // namespace MrpCli
