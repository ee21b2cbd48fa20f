#pragma once

#include <nlohmann/json.hpp>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace MrpTest {

// Where the scenario files live: one directory per scenario, its file and
// its golden timelines (tests/conformance/<name>/scenario.json).
std::string scenarioFile(const std::string& name);

// One JSON value per line of `text`.
std::vector<nlohmann::json> jsonLines(const std::string& text);

// The JSON timeline of `mrp sim` on `args` (--json is added); a run that
// fails or writes to stderr fails the calling test.
std::vector<nlohmann::json> simJson(std::vector<std::string> args);

// The time of the first indication of `kind` ("join", "leave") for
// (bridge, port, type, key) at or after `after`; nullopt if there is none.
std::optional<double> indicationAt(const std::vector<nlohmann::json>& lines, const std::string& kind,
                                   const std::string& bridge, const std::string& port, unsigned type,
                                   std::uint64_t key, double after = 0);

std::size_t countWhere(const std::vector<nlohmann::json>& lines,
                       const std::function<bool(const nlohmann::json&)>& match);

}  // namespace MrpTest
