// The report as a browser shows it: headless chromium loads the page from
// disk, runs its script, and the DOM and a screenshot are checked. The page
// and the screenshot stay in the build tree (tests/artefacts/) to look at.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "support/Chromium.h"
#include "support/Golden.h"
#include "support/MrpRun.h"
#include "support/Occurrences.h"
#include "support/PngImage.h"
#include "support/RequiredTool.h"

namespace MrpTest {
namespace {

const std::filesystem::path kArtefacts = MRP_ARTEFACT_DIR;

struct BrowserCase {
  std::string name;
  std::string scenario;  // under tests/conformance; "" for the default network
};

// The report data the page carries.
nlohmann::json reportDataOf(const std::string& page) {
  const std::string start = "<script type=\"application/json\" id=\"report-data\">";
  const std::size_t from = page.find(start) + start.size();
  return nlohmann::json::parse(page.substr(from, page.find("</script>", from) - from));
}

// The DOM as drawn: without the scripts, whose source names the same elements.
std::string drawnDom(const std::string& html) {
  const std::string dom = chromiumDom(html);
  return dom.substr(0, dom.find("<script"));
}

// The part of the DOM that draws one port: its section up to the next one.
std::string portSection(const std::string& dom, const std::string& bridge, const std::string& port) {
  const std::size_t from = dom.find("<div class=\"port\" data-bridge=\"" + bridge + "\" data-port=\"" + port + "\">");
  if (from == std::string::npos) return "";
  return dom.substr(from, dom.find("<div class=\"port\"", from + 1) - from);
}

class ReportBrowserTest : public ::testing::TestWithParam<BrowserCase> {
 protected:
  void SetUp() override {
    requireTool(chromiumAvailable(), "chromium", "the browser tests");
    if (IsSkipped() || HasFatalFailure()) return;
    std::filesystem::create_directories(kArtefacts);
    html = (kArtefacts / ("report-" + GetParam().name + ".html")).string();
    std::vector<std::string> args = {"sim"};
    if (!GetParam().scenario.empty()) {
      args.push_back((std::filesystem::path(MRP_SOURCE_DIR) / "tests" / "conformance" / GetParam().scenario /
                      "scenario.json")
                         .string());
    }
    args.insert(args.end(), {"--html", html});
    const MrpRun run = mrp(args);
    ASSERT_EQ(run.status, 0) << run.err;
    data = reportDataOf(fileText(html));
  }

  std::string html;
  nlohmann::json data;
};

TEST_P(ReportBrowserTest, TheDomHasANodePerBridgeAnEdgePerLinkAndALanePerAttributeAndPort) {
  const std::string dom = drawnDom(html);
  EXPECT_EQ(occurrences(dom, "\" class=\"node\">"), data["nodes"].size());
  EXPECT_EQ(occurrences(dom, "\" class=\"edge\">"), data["links"].size());
  std::size_t lanes = 0;
  for (const auto& port : data["ports"]) {
    std::size_t portLanes = 0;
    for (const auto& track : port["tracks"]) portLanes += track["lanes"].size();
    const std::string section = portSection(dom, port["bridge"], port["port"]);
    EXPECT_EQ(occurrences(section, "<g class=\"lane\""), portLanes) << port["bridge"] << " " << port["port"];
    lanes += portLanes;
  }
  EXPECT_GT(lanes, 10u);
  EXPECT_EQ(occurrences(dom, "<pre class=\"registrations\">"), data["nodes"].size());
}

TEST_P(ReportBrowserTest, TheScreenshotIsAPictureNotABlankPage) {
  const std::string png = (kArtefacts / ("report-" + GetParam().name + ".png")).string();
  std::filesystem::remove(png);
  chromiumScreenshot(html, png, 1400, 1600);
  const PngImage image = PngImage::read(png);
  ASSERT_EQ(image.width, 1400u);
  ASSERT_EQ(image.height, 1600u);
  std::size_t inked = 0;
  std::size_t registered = 0;  // the green of a registration's stretch
  for (std::size_t i = 0; i + 3 < image.rgba.size(); i += 4) {
    const int r = image.rgba[i], g = image.rgba[i + 1], b = image.rgba[i + 2];
    if (r < 200 || g < 200 || b < 200) ++inked;
    if (std::abs(r - 0x4c) < 8 && std::abs(g - 0xaf) < 8 && std::abs(b - 0x50) < 8) ++registered;
  }
  const double pixels = static_cast<double>(image.width) * image.height;
  EXPECT_GT(inked / pixels, 0.03) << png;
  EXPECT_LT(inked / pixels, 0.6) << png;
  EXPECT_GT(registered, 5000u) << png;
}

INSTANTIATE_TEST_SUITE_P(Scenarios, ReportBrowserTest,
                         ::testing::Values(BrowserCase{"default", ""}, BrowserCase{"ring-failover", "ring-failover"}),
                         [](const auto& info) {
                           return info.param.name == "default" ? std::string("Default") : std::string("RingFailover");
                         });

// At 30 s sw3's alternate port p2 becomes its root port and p1 blocks: both
// show the role change with its timeline line, and p2 sends its LeaveAll.
class RingFailoverBrowserTest : public ReportBrowserTest {};

TEST_P(RingFailoverBrowserTest, ShowsTheFailoversMarksWithTheirLines) {
  const std::string dom = drawnDom(html);
  const std::string p1 = portSection(dom, "sw3", "p1");
  const std::string p2 = portSection(dom, "sw3", "p2");
  EXPECT_NE(p1.find("data-kind=\"role\" data-t=\"30\" data-tip=\"30.000  sw3  p1  role root -"), std::string::npos);
  EXPECT_NE(p2.find("data-kind=\"role\" data-t=\"30\" data-tip=\"30.000  sw3  p2  role alternate -"),
            std::string::npos);
  EXPECT_NE(p2.find("data-kind=\"leaveAllSent\" data-t=\"30\" data-tip=\"30.000  sw3  p2  mvrp  LeaveAll sent"),
            std::string::npos);
  EXPECT_NE(p1.find("alternate at the end"), std::string::npos);
  EXPECT_NE(p2.find("root at the end"), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(Ring, RingFailoverBrowserTest, ::testing::Values(BrowserCase{"ring-failover-marks", "ring-failover"}),
                         [](const auto&) { return std::string("RingFailover"); });

}  // namespace
}  // namespace MrpTest
