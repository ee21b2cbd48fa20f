// Golden timelines: every directory of tests/conformance holds a scenario
// and what `mrp sim` prints for it, as text and as JSON, byte for byte. A
// change to the engine, the bridge or the reports that moves a single frame
// or a column shows here as a diff. With MRP_REGENERATE_GOLDEN=1 the files
// are written again instead; the diff is then to be reviewed before commit.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <string>
#include <vector>

#include "sim/DefaultScenario.h"
#include "support/Golden.h"
#include "support/MrpRun.h"
#include "support/SimJson.h"

namespace MrpTest {
namespace {

const std::filesystem::path kConformance = std::filesystem::path(MRP_SOURCE_DIR) / "tests" / "conformance";

// Every directory with a scenario.json, in name order.
std::vector<std::string> conformanceScenarios() {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(kConformance)) {
    if (std::filesystem::exists(entry.path() / "scenario.json")) names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

// "ring-failover" as a test name: "RingFailover".
std::string testNameOf(const std::string& directory) {
  std::string name;
  bool upper = true;
  for (char c : directory) {
    if (!std::isalnum(static_cast<unsigned char>(c))) {
      upper = true;
      continue;
    }
    name += upper ? static_cast<char>(std::toupper(static_cast<unsigned char>(c))) : c;
    upper = false;
  }
  return name;
}

class ConformanceTest : public ::testing::TestWithParam<std::string> {
 protected:
  std::filesystem::path directory() const { return kConformance / GetParam(); }

  // `mrp sim` on the directory's scenario with `options`.
  std::string simOutput(const std::vector<std::string>& options) const {
    std::vector<std::string> args = {"sim", (directory() / "scenario.json").string()};
    args.insert(args.end(), options.begin(), options.end());
    const MrpRun run = mrp(args);
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err, "");
    return run.out;
  }

  void expectGolden(const std::string& file, const std::string& actual) const {
    MrpTest::expectGolden(directory() / file, actual, "mrp sim");
  }
};

TEST_P(ConformanceTest, SimPrintsTheGoldenTimelines) {
  expectGolden("timeline.txt", simOutput({}));
  expectGolden("timeline.jsonl", simOutput({"--json"}));
  if (regeneratingGolden()) GTEST_SKIP() << "rewrote the timelines of " << directory().string();
}

INSTANTIATE_TEST_SUITE_P(Golden, ConformanceTest, ::testing::ValuesIn(conformanceScenarios()),
                         [](const ::testing::TestParamInfo<std::string>& info) { return testNameOf(info.param); });

// The golden default scenario is the one `mrp sim` runs without a file.
TEST(ConformanceDefaultTest, TheDefaultDirectoryHoldsTheEmbeddedScenario) {
  EXPECT_EQ(nlohmann::json::parse(fileText(kConformance / "default" / "scenario.json")),
            nlohmann::json::parse(MrpCli::defaultScenarioJson()));
}

struct DiffCase {
  std::string name;
  std::string expected;
  std::string actual;
  std::string diff;
};

class LineDiffTest : public ::testing::TestWithParam<DiffCase> {};

TEST_P(LineDiffTest, ShowsTheChangedStretchWithItsLineNumbers) {
  EXPECT_EQ(lineDiff(GetParam().expected, GetParam().actual), GetParam().diff);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, LineDiffTest,
    ::testing::Values(DiffCase{"Equal", "a\nb\n", "a\nb\n", ""},
                      DiffCase{"OneLineChanged", "a\nb\nc\n", "a\nB\nc\n", "  1: a\n- 2: b\n+ 2: B\n  3: c\n"},
                      DiffCase{"LineAdded", "a\nc\n", "a\nb\nc\n", "  1: a\n+ 2: b\n  3: c\n"},
                      DiffCase{"LineRemoved", "a\nb\nc\n", "a\nc\n", "  1: a\n- 2: b\n  2: c\n"},
                      DiffCase{"ContextIsThreeLines", "1\n2\n3\n4\nx\n5\n6\n7\n8\n", "1\n2\n3\n4\ny\n5\n6\n7\n8\n",
                               "  2: 2\n  3: 3\n  4: 4\n- 5: x\n+ 5: y\n  6: 5\n  7: 6\n  8: 7\n"},
                      DiffCase{"MissingLastNewline", "a\n", "a", "- 1: a\n+ 1: a  (no newline at end)\n"},
                      DiffCase{"RepeatedLinesAreNotCountedTwice", "a\na\n", "a\n", "  1: a\n- 2: a\n"}),
    [](const ::testing::TestParamInfo<DiffCase>& info) { return info.param.name; });

}  // namespace
}  // namespace MrpTest
