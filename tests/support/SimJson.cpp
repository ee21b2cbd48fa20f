#include "support/SimJson.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "support/MrpRun.h"

namespace MrpTest {

using Json = nlohmann::json;

std::string scenarioFile(const std::string& name) {
  return std::string(MRP_SOURCE_DIR) + "/tests/conformance/" + name + "/scenario.json";
}

std::vector<Json> jsonLines(const std::string& text) {
  std::vector<Json> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(Json::parse(line));
  return lines;
}

std::vector<Json> simJson(std::vector<std::string> args) {
  args.insert(args.begin(), "sim");
  args.push_back("--json");
  const MrpRun run = mrp(args);
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.err, "");
  return jsonLines(run.out);
}

std::optional<double> indicationAt(const std::vector<Json>& lines, const std::string& kind, const std::string& bridge,
                                   const std::string& port, unsigned type, std::uint64_t key, double after) {
  for (const Json& line : lines) {
    if (line.value("indication", "") == kind && line["bridge"] == bridge && line["port"] == port &&
        line["type"] == type && line["key"] == std::to_string(key) && line["t"].get<double>() >= after) {
      return line["t"].get<double>();
    }
  }
  return std::nullopt;
}

std::size_t countWhere(const std::vector<Json>& lines, const std::function<bool(const Json&)>& match) {
  return static_cast<std::size_t>(std::count_if(lines.begin(), lines.end(), match));
}

}  // namespace MrpTest
