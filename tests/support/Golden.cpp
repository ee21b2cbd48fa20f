#include "support/Golden.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <vector>

namespace MrpTest {

namespace {

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

std::string regenerateCommand() {
  const ::testing::TestInfo* test = ::testing::UnitTest::GetInstance()->current_test_info();
  std::error_code ignored;
  const std::string program = std::filesystem::read_symlink("/proc/self/exe", ignored).string();
  return "MRP_REGENERATE_GOLDEN=1 " + program + " --gtest_filter='" + test->test_suite_name() + "." + test->name() +
         "'";
}

}  // namespace

bool regeneratingGolden() {
  const char* value = std::getenv("MRP_REGENERATE_GOLDEN");
  return value && std::string(value) == "1";
}

std::string fileText(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

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

void expectGolden(const std::filesystem::path& path, const std::string& actual, const std::string& what) {
  if (regeneratingGolden()) {
    std::ofstream(path, std::ios::binary | std::ios::trunc) << actual;
    return;
  }
  ASSERT_TRUE(std::filesystem::exists(path)) << path.string() << " is missing; to write it:\n  " << regenerateCommand();
  const std::string diff = lineDiff(fileText(path), actual);
  if (diff.empty()) return;
  ADD_FAILURE() << what << " no longer prints " << path.string() << " (- golden, + now):\n"
                << diff << "If the change is meant, regenerate and review the diff before committing:\n  "
                << regenerateCommand();
}

}  // namespace MrpTest
