// The HTML report of the soak run, as `mrp sim tools/soak/soak.json --html`
// makes it: eight bridges in a ring, two servers that declare all 4094
// VLANs, a stream, randomised LeaveAll, an hour of simulated time.
//
//  - BM_SoakHour: the hour with its text timeline printed (to nowhere), and
//    with the report recorded beside it: the ratio is what recording costs.
//  - BM_WriteReport: the page made from the recorded data (report data,
//    Graphviz drawing, page) and written to a file; the baseline writes the
//    same number of bytes to the same file.
//  - BM_LoadReport: headless chromium loads the page, its script draws the
//    timeline, and chromium takes a screenshot of the first screen, or
//    writes out the whole DOM (--dump-dom); wall time of the whole chromium.
//    Baselines: the same page with its script cut out (the bytes parsed,
//    nothing drawn) and an empty page (chromium starting and stopping).

#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <ostream>
#include <stdexcept>
#include <string>

#include "common/TextFile.h"
#include "format/ScenarioReader.h"
#include "html/HtmlReportFile.h"
#include "html/ReportTimeline.h"
#include "report/TeeTimeline.h"
#include "report/TextTimeline.h"
#include "sim/Simulation.h"
#include "support/Chromium.h"
#include "support/TempDir.h"

namespace {

constexpr double kHour = 3600;

// The whole of a file the benchmark made or reads; it throws when the file cannot be read.
std::string fileText(const std::string& path) {
  std::string error;
  std::optional<std::string> text = MrpCli::textFileRead(path, error);
  if (!text) throw std::runtime_error(error);
  return *text;
}

MrpCli::Scenario soakScenario() {
  return MrpCli::scenarioFromJson(fileText(std::string(MRP_SOURCE_DIR) + "/tools/soak/soak.json"));
}

// Runs the soak hour with its text timeline going nowhere; with `report`,
// the report's timeline hears the run too.
void runSoakHour(const MrpCli::Scenario& scenario, MrpCli::ReportTimeline* report) {
  std::ostream nowhere(nullptr);
  MrpCli::TextTimeline printed(nowhere, {}, {}, {});
  std::vector<MrpCli::Timeline*> timelines{&printed};
  if (report) timelines.push_back(report);
  MrpCli::TeeTimeline both(timelines);
  {
    MrpCli::Simulation simulation(scenario, both);
    simulation.run(kHour);
  }
  both.flush();
}

// The report data of the hour, recorded once for the benchmarks that write and load it.
const MrpCli::ReportData& soakReport() {
  static const MrpCli::Scenario scenario = soakScenario();
  static MrpCli::ReportTimeline report(scenario, "mrp sim soak.json", kHour);
  static const bool recorded = (runSoakHour(scenario, &report), true);
  benchmark::DoNotOptimize(recorded);
  return report.data();
}

void BM_SoakHour(benchmark::State& state) {
  const bool reported = state.range(0) != 0;
  const MrpCli::Scenario scenario = soakScenario();
  for (auto _ : state) {
    std::optional<MrpCli::ReportTimeline> report;
    if (reported) report.emplace(scenario, "mrp sim soak.json", kHour);
    runSoakHour(scenario, report ? &*report : nullptr);
    benchmark::DoNotOptimize(report);
  }
  state.SetLabel(reported ? "printed and reported" : "printed");
}
BENCHMARK(BM_SoakHour)->Arg(0)->Arg(1)->Iterations(1)->Unit(benchmark::kSecond);

void BM_WriteReport(benchmark::State& state) {
  const MrpCli::ReportData& data = soakReport();
  const MrpTest::TempDir dir;
  const std::string path = dir.file("report.html");
  for (auto _ : state) {
    std::string error;
    if (!MrpCli::htmlReportWrite(path, data, error)) throw std::runtime_error(error);
  }
  state.counters["page_MB"] = static_cast<double>(std::filesystem::file_size(path)) / 1e6;
}
BENCHMARK(BM_WriteReport)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_WriteSameBytes(benchmark::State& state) {
  const MrpTest::TempDir dir;
  const std::string path = dir.file("report.html");
  std::string error;
  if (!MrpCli::htmlReportWrite(path, soakReport(), error)) throw std::runtime_error(error);
  const std::string page = fileText(path);
  for (auto _ : state) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(page.data(), static_cast<std::streamsize>(page.size()));
  }
  state.counters["page_MB"] = static_cast<double>(page.size()) / 1e6;
}
BENCHMARK(BM_WriteSameBytes)->Unit(benchmark::kMillisecond)->UseRealTime();

enum class Page { report, withoutScript, empty };

// The page to load, written into `dir`.
std::string pageFile(const MrpTest::TempDir& dir, Page page) {
  const std::string path = dir.file("page.html");
  if (page == Page::empty) {
    std::ofstream(path) << "<!DOCTYPE html>\n<html><body></body></html>\n";
    return path;
  }
  std::string error;
  if (!MrpCli::htmlReportWrite(path, soakReport(), error)) throw std::runtime_error(error);
  if (page == Page::withoutScript) {
    std::string text = fileText(path);
    const std::size_t script = text.rfind("<script>");
    text.erase(script, text.find("</script>", script) + std::string("</script>").size() - script);
    std::ofstream(path, std::ios::binary | std::ios::trunc) << text;
  }
  return path;
}

// How a page is loaded: drawn into a screenshot of its first screen (what a
// person opening it waits for), or loaded and its whole DOM written out.
enum class Load { screenshot, dom };

void BM_LoadReport(benchmark::State& state) {
  if (!MrpTest::chromiumAvailable()) {
    state.SkipWithError("chromium is not installed");
    return;
  }
  const auto page = static_cast<Page>(state.range(0));
  const auto load = static_cast<Load>(state.range(1));
  const MrpTest::TempDir dir;
  const std::string path = pageFile(dir, page);
  for (auto _ : state) {
    if (load == Load::screenshot) {
      MrpTest::chromiumScreenshot(path, dir.file("page.png"), 1400, 1600);
    } else {
      state.counters["dom_MB"] = static_cast<double>(MrpTest::chromiumDom(path).size()) / 1e6;
    }
  }
  state.SetLabel(std::string(page == Page::report          ? "the report"
                             : page == Page::withoutScript ? "its script cut out"
                                                           : "empty")
                     .append(load == Load::screenshot ? ", screenshot" : ", DOM"));
}
BENCHMARK(BM_LoadReport)
    ->ArgsProduct({{static_cast<int>(Page::empty), static_cast<int>(Page::withoutScript),
                    static_cast<int>(Page::report)},
                   {static_cast<int>(Load::screenshot), static_cast<int>(Load::dom)}})
    ->Iterations(3)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace
