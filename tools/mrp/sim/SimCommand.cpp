#include "sim/SimCommand.h"

#include <CLI/CLI.hpp>

#include <filesystem>
#include <memory>
#include <ostream>

#include "common/TextFile.h"
#include "format/ScenarioReader.h"
#include "html/ReportRecorder.h"
#include "quarn/System.h"
#include "report/JsonTimeline.h"
#include "report/TextTimeline.h"
#include "sim/DefaultScenario.h"
#include "sim/MemorySampler.h"
#include "sim/Simulation.h"

namespace MrpCli {

namespace {

constexpr int kBadInput = 2;
constexpr int kFailed = 1;

int fail(std::ostream& err, const std::string& message, int status = kBadInput) {
  err << "mrp sim: " << message << '\n';
  return status;
}

// The file of a link's frames: "sw1-p2_sw2-p1.pcap".
std::string captureName(const Scenario::Link& link) {
  return link.a.bridge + "-" + link.a.port + "_" + link.b.bridge + "-" + link.b.port + ".pcap";
}

std::vector<std::string> bridgeNames(const Scenario& scenario) {
  std::vector<std::string> names;
  for (const Scenario::Bridge& bridge : scenario.bridges) names.push_back(bridge.name);
  return names;
}

std::vector<std::string> portNames(const Scenario& scenario) {
  std::vector<std::string> names;
  for (const Scenario::Bridge& bridge : scenario.bridges) names.insert(names.end(), bridge.ports.begin(), bridge.ports.end());
  return names;
}

}  // namespace

SimCommand::SimCommand(CLI::App& program)
    : command_(program.add_subcommand(
          "sim", "Run a network of bridges in simulated time and print what happened, as a timeline")) {
  command_->add_option("SCENARIO", file_, "A scenario file (JSON); without one, the embedded default network runs")
      ->type_name("");
  command_->add_flag("--json", json_, "Print the timeline as JSON lines");
  command_->add_flag("--no-leaveall", noLeaveAll_,
                     "Hide LeaveAll lines in the text timeline (the --json timeline keeps them)");
  command_->add_option("--until", until_, "Run to this many seconds of simulated time (instead of the scenario's)")
      ->type_name("SECONDS")
      ->check(CLI::Validator(
          [](std::string& value) -> std::string {
            double seconds = -1;
            if (!CLI::detail::lexical_cast(value, seconds) || !(seconds >= 0)) {
              return "'" + value + "' is not a number of seconds (0 or more)";
            }
            if (seconds > Scenario::kLongestRun) {
              return "'" + value + "' is longer than a week of simulated time (" +
                     std::to_string(static_cast<long>(Scenario::kLongestRun)) + " s at most)";
            }
            return "";
          },
          ""));
  command_->add_option("--html", htmlFile_,
                       "Also write a picture of the run to FILE: the network, a timeline per port and application, "
                       "the tables at the end; one HTML file that needs nothing else")
      ->type_name("FILE");
  command_->add_option("--pcap", pcapDir_, "Write each link's frames, both ways, to DIR/<a>-<port>_<b>-<port>.pcap")
      ->type_name("DIR");
  command_->add_option("--rss-every", rssEvery_,
                       "Every SECONDS of simulated time, write the process's resident set to stderr as a JSON line "
                       "{\"t\": 60.0, \"rss\": BYTES}")
      ->type_name("SECONDS")
      ->check(CLI::Validator(
          [](std::string& value) -> std::string {
            double seconds = 0;
            if (CLI::detail::lexical_cast(value, seconds) && seconds > 0) return "";
            return "'" + value + "' is not a number of seconds (more than 0)";
          },
          ""));
  command_->footer(
      "The default network is h1 - sw1 - sw2 - sw3 - h2: h1 declares VLAN 10 and a stream that h2\n"
      "listens to; the VLAN is withdrawn, the link sw2 - sw3 is cut and restored, the stream ends.\n"
      "The README describes the scenario format.");
}

bool SimCommand::chosen() const { return command_->parsed(); }

int SimCommand::run(std::ostream& out, std::ostream& err) const {
  std::string text = defaultScenarioJson();
  if (file_) {
    std::string error;
    const std::optional<std::string> content = textFileRead(*file_, error);
    if (!content) return fail(err, error);
    text = *content;
  }
  Scenario scenario;
  try {
    scenario = scenarioFromJson(text);
  } catch (const ScenarioError& error) {
    return fail(err, (file_ ? *file_ : std::string("default scenario")) + ": " + error.what());
  }

  std::vector<std::pair<const Scenario::Link*, std::shared_ptr<CaptureWriter>>> captures;
  if (pcapDir_) {
    std::error_code ignored;
    std::filesystem::create_directories(*pcapDir_, ignored);
    for (const Scenario::Link& link : scenario.links) {
      auto capture = std::make_shared<CaptureWriter>((std::filesystem::path(*pcapDir_) / captureName(link)).string());
      if (!capture->ok()) return fail(err, capture->error());
      captures.emplace_back(&link, std::move(capture));
    }
  }

  std::unique_ptr<Timeline> timeline;
  if (json_) {
    timeline = std::make_unique<JsonTimeline>(out);
  } else {
    timeline = std::make_unique<TextTimeline>(out, bridgeNames(scenario), portNames(scenario),
                                              TextTimelineOptions{.hideLeaveAll = noLeaveAll_});
  }
  const Quarn::Seconds until = until_.value_or(scenario.until);
  ReportRecorder recorder(
      *timeline, htmlFile_, scenario,
      std::string("mrp sim ").append(file_ ? std::filesystem::path(*file_).filename().string() : "default network"),
      until);
  {
    Simulation simulation(scenario, recorder.timeline());
    for (const auto& [link, capture] : captures) {
      simulation.captureIs(link->a, capture);
      simulation.captureIs(link->b, capture);
    }
    // Goes before the simulation, whose clock it runs on.
    std::optional<MemorySampler> sampler;
    if (rssEvery_) sampler.emplace(&Quarn::System::clock(), *rssEvery_, err);
    simulation.run(until);
  }
  std::string error;
  if (!recorder.finish(error)) return fail(err, error, kFailed);
  for (const auto& [link, capture] : captures) {
    capture->flush();
    if (!capture->ok()) return fail(err, capture->error(), kFailed);
  }
  return 0;
}

}  // namespace MrpCli
