// Golden timelines: every directory of tests/conformance holds a scenario
// and what `mrp sim` prints for it, as text and as JSON, byte for byte. A
// change to the engine, the bridge or the reports that moves a single frame
// or a column shows here as a diff. With MRP_REGENERATE_GOLDEN=1 the files
// are written again instead; the diff is then to be reviewed before commit.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "sim/DefaultScenario.h"
#include "support/MrpRun.h"
#include "support/SimJson.h"

namespace MrpTest {
namespace {

const std::filesystem::path kConformance = std::filesystem::path(MRP_SOURCE_DIR) / "tests" / "conformance";
// Lines of each side shown around and in a difference.
constexpr std::size_t kContext = 3;
constexpr std::size_t kMaxShown = 40;

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  if (!text.empty() && text.back() != '\n') lines.back() += "  (no newline at end)";
  return lines;
}

void showLines(std::ostringstream& out, char mark, const std::vector<std::string>& lines, std::size_t from,
               std::size_t to) {
  const std::size_t shown = std::min(to, from + kMaxShown);
  for (std::size_t i = from; i < shown; ++i) out << mark << " " << (i + 1) << ": " << lines[i] << "\n";
  if (shown < to) out << mark << " ... " << (to - shown) << " more\n";
}

// The one stretch where `expected` and `actual` differ, between their
// common first and last lines, as "-" (golden) and "+" (now) lines with
// their line numbers and a little context; "" when they are equal.
std::string lineDiff(const std::string& expected, const std::string& actual) {
  if (expected == actual) return "";
  const std::vector<std::string> was = linesOf(expected);
  const std::vector<std::string> is = linesOf(actual);
  std::size_t head = 0;
  while (head < was.size() && head < is.size() && was[head] == is[head]) ++head;
  std::size_t tail = 0;
  while (tail < was.size() - head && tail < is.size() - head &&
         was[was.size() - 1 - tail] == is[is.size() - 1 - tail]) {
    ++tail;
  }
  std::ostringstream out;
  const std::size_t before = head - std::min(head, kContext);
  showLines(out, ' ', is, before, head);
  showLines(out, '-', was, head, was.size() - tail);
  showLines(out, '+', is, head, is.size() - tail);
  showLines(out, ' ', is, is.size() - tail, std::min(is.size(), is.size() - tail + kContext));
  return out.str();
}

std::string fileText(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

bool regenerating() {
  const char* value = std::getenv("MRP_REGENERATE_GOLDEN");
  return value && std::string(value) == "1";
}

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

std::string regenerateCommand() {
  const ::testing::TestInfo* test = ::testing::UnitTest::GetInstance()->current_test_info();
  std::error_code ignored;
  const std::string program = std::filesystem::read_symlink("/proc/self/exe", ignored).string();
  return "MRP_REGENERATE_GOLDEN=1 " + program + " --gtest_filter='" + test->test_suite_name() + "." + test->name() +
         "'";
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
    const std::filesystem::path path = directory() / file;
    if (regenerating()) {
      std::ofstream(path, std::ios::binary | std::ios::trunc) << actual;
      return;
    }
    ASSERT_TRUE(std::filesystem::exists(path)) << path.string() << " is missing; to write it:\n  "
                                               << regenerateCommand();
    const std::string diff = lineDiff(fileText(path), actual);
    if (diff.empty()) return;
    ADD_FAILURE() << "mrp sim no longer prints " << path.string() << " (- golden, + now):\n"
                  << diff << "If the change is meant, regenerate and review the diff before committing:\n  "
                  << regenerateCommand();
  }
};

TEST_P(ConformanceTest, SimPrintsTheGoldenTimelines) {
  expectGolden("timeline.txt", simOutput({}));
  expectGolden("timeline.jsonl", simOutput({"--json"}));
  if (regenerating()) GTEST_SKIP() << "rewrote the timelines of " << directory().string();
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
