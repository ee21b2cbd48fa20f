// The report page stands alone: opened from disk with no network, it has
// everything it shows inline, and refers to no address.

#include "html/HtmlReport.h"

#include <gtest/gtest.h>

#include <regex>
#include <string>

#include "format/ScenarioReader.h"
#include "html/ReportJson.h"
#include "html/ReportTimeline.h"
#include "html/TopologySvg.h"
#include "sim/DefaultScenario.h"
#include "sim/Simulation.h"
#include "support/Golden.h"

namespace MrpTest {
namespace {

std::string pageOf(const std::string& scenarioJson) {
  const MrpCli::Scenario scenario = MrpCli::scenarioFromJson(scenarioJson);
  MrpCli::ReportTimeline timeline(scenario, "a </script> title & more", scenario.until);
  {
    MrpCli::Simulation simulation(scenario, timeline);
    simulation.run(scenario.until);
  }
  timeline.flush();
  return MrpCli::htmlReport(MrpCli::reportJson(timeline.data(), 2000), MrpCli::topologySvg(timeline.data()));
}

struct PageCase {
  std::string name;
  std::string scenarioJson;
};

class HtmlReportPageTest : public ::testing::TestWithParam<PageCase> {
 protected:
  static std::size_t count(const std::string& text, const std::regex& pattern) {
    return static_cast<std::size_t>(
        std::distance(std::sregex_iterator(text.begin(), text.end(), pattern), std::sregex_iterator()));
  }
  const std::string page = pageOf(GetParam().scenarioJson);
};

TEST_P(HtmlReportPageTest, RefersToNoAddressAndLoadsNothing) {
  EXPECT_EQ(page.find("http://"), std::string::npos);
  EXPECT_EQ(page.find("https://"), std::string::npos);
  EXPECT_EQ(count(page, std::regex(R"(\b(src|href|xlink:href)\s*=)", std::regex::icase)), 0u);
  EXPECT_EQ(count(page, std::regex(R"(@import|url\s*\()", std::regex::icase)), 0u);
  EXPECT_EQ(count(page, std::regex("<link\\b", std::regex::icase)), 0u);
}

TEST_P(HtmlReportPageTest, CarriesItsScriptStyleDrawingAndDataInline) {
  EXPECT_EQ(page.rfind("<!DOCTYPE html>", 0), 0u);
  EXPECT_EQ(count(page, std::regex("<style>")), 1u);
  EXPECT_EQ(count(page, std::regex("<div id=\"topology\"><svg ")), 1u);
  EXPECT_EQ(count(page, std::regex("<script type=\"application/json\" id=\"report-data\">")), 1u);
  EXPECT_EQ(count(page, std::regex("</script>")), 2u) << "a title with </script> cannot end the data early";
  EXPECT_NE(page.find("<title>a &lt;/script&gt; title &amp; more</title>"), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(Scenarios, HtmlReportPageTest,
                         ::testing::Values(PageCase{"Default", MrpCli::defaultScenarioJson()},
                                           PageCase{"RingFailover",
                                                    fileText(std::filesystem::path(MRP_SOURCE_DIR) / "tests" /
                                                             "conformance" / "ring-failover" / "scenario.json")}),
                         [](const auto& info) { return info.param.name; });

}  // namespace
}  // namespace MrpTest
