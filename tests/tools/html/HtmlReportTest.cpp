// The report page stands alone: opened from disk with no network, it has
// everything it shows inline, and refers to no address.

#include "html/HtmlReport.h"

#include <gtest/gtest.h>

#include <cctype>
#include <string>

#include "format/ScenarioReader.h"
#include "html/ReportJson.h"
#include "html/ReportTimeline.h"
#include "html/TopologySvg.h"
#include "sim/DefaultScenario.h"
#include "sim/Simulation.h"
#include "support/Golden.h"
#include "support/Occurrences.h"

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

bool wordCharacter(char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; }

// Where `word` stands in `lowered` as a word of its own and is followed,
// after any blanks, by `next` (or by anything that ends a word, when `next`
// is 0).
std::size_t wordsBefore(const std::string& lowered, const std::string& word, char next) {
  std::size_t count = 0;
  for (std::size_t at = lowered.find(word); at != std::string::npos; at = lowered.find(word, at + 1)) {
    if (wordCharacter(word.front()) && at > 0 && wordCharacter(lowered[at - 1])) continue;
    std::size_t after = at + word.size();
    if (next == 0) {
      count += after == lowered.size() || !wordCharacter(lowered[after]);
      continue;
    }
    while (after < lowered.size() && std::isspace(static_cast<unsigned char>(lowered[after]))) ++after;
    count += after < lowered.size() && lowered[after] == next;
  }
  return count;
}

// What in a page could make a browser fetch something: src and href
// attributes (xlink:href among them), style imports and url(), link elements.
std::size_t fetches(const std::string& page) {
  std::string lowered = page;
  for (char& c : lowered) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return wordsBefore(lowered, "src", '=') + wordsBefore(lowered, "href", '=') + occurrences(lowered, "@import") +
         wordsBefore(lowered, "url", '(') + wordsBefore(lowered, "<link", 0);
}

struct FetchCase {
  std::string html;
  std::size_t fetches;
};

class FetchesTest : public ::testing::TestWithParam<FetchCase> {};

TEST_P(FetchesTest, FindsWhatABrowserWouldFetch) { EXPECT_EQ(fetches(GetParam().html), GetParam().fetches); }

INSTANTIATE_TEST_SUITE_P(
    Samples, FetchesTest,
    ::testing::Values(FetchCase{"<img SRC = \"x.png\">", 1}, FetchCase{"<a href='x'>", 1},
                      FetchCase{"<use xlink:href=\"#a\"/>", 1}, FetchCase{"<style>@IMPORT 'x.css';</style>", 1},
                      FetchCase{"background: url (x.png)", 1}, FetchCase{"<LINK rel=stylesheet>", 1},
                      FetchCase{"<link>", 1}, FetchCase{"srcset hrefs url urls(x) <linkage> data-src", 0},
                      FetchCase{"<p>a source, an href of its own</p>", 0}));

struct PageCase {
  std::string name;
  std::string scenarioJson;
};

class HtmlReportPageTest : public ::testing::TestWithParam<PageCase> {
 protected:
  const std::string page = pageOf(GetParam().scenarioJson);
};

TEST_P(HtmlReportPageTest, RefersToNoAddressAndLoadsNothing) {
  EXPECT_EQ(page.find("http://"), std::string::npos);
  EXPECT_EQ(page.find("https://"), std::string::npos);
  EXPECT_EQ(fetches(page), 0u);
}

TEST_P(HtmlReportPageTest, CarriesItsScriptStyleDrawingAndDataInline) {
  EXPECT_EQ(page.rfind("<!DOCTYPE html>", 0), 0u);
  EXPECT_EQ(occurrences(page, "<style>"), 1u);
  EXPECT_EQ(occurrences(page, "<div id=\"topology\"><svg "), 1u);
  EXPECT_EQ(occurrences(page, "<script type=\"application/json\" id=\"report-data\">"), 1u);
  EXPECT_EQ(occurrences(page, "</script>"), 2u) << "a title with </script> cannot end the data early";
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
