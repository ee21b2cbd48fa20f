#include "JsonTimeline.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <cstdint>
#include <functional>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "WallTime.h"

namespace {

using Json = nlohmann::ordered_json;
using MrpAgent::AttributeValue;
using MrpCli::JsonTimeline;
using MrpCli::TimelinePlace;

std::vector<Json> jsonLines(const std::string& text) {
  std::vector<Json> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(Json::parse(line));
  return lines;
}

const AttributeValue kVlan(Mrp::MvrpVlanAttribute(10));
// 2026-11-24, 19:19:28.123 UTC.
constexpr double kWallTime = 1795547968.123;

// One kind of line that names a place, written at `place`.
struct PlacedLine {
  const char* name;
  std::function<void(JsonTimeline&, const TimelinePlace&)> write;
};

class JsonTimelineWallTimeTest : public ::testing::TestWithParam<PlacedLine> {
 protected:
  static std::vector<Json> written(std::optional<double> wallTime) {
    std::ostringstream out;
    JsonTimeline timeline(out);
    GetParam().write(timeline, TimelinePlace{1.5, "agent", "eth1", wallTime});
    return jsonLines(out.str());
  }
};

TEST_P(JsonTimelineWallTimeTest, ASimulatedPlaceHasNoTime) {
  const std::vector<Json> lines = written(std::nullopt);
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_FALSE(lines[0].contains("time")) << lines[0];
}

TEST_P(JsonTimelineWallTimeTest, AWallTimeIsWrittenInLocalTimeRightAfterTheSeconds) {
  const std::vector<Json> lines = written(kWallTime);
  ASSERT_EQ(lines.size(), 1u);
  auto member = lines[0].begin();
  EXPECT_EQ(member.key(), "t");
  EXPECT_EQ(*member, 1.5);
  ++member;
  EXPECT_EQ(member.key(), "time");
  EXPECT_EQ(*member, MrpCli::wallTimeText(kWallTime));
  EXPECT_THAT(member->get<std::string>(),
              ::testing::MatchesRegex("2026-11-2[45]T[0-9]{2}:[0-9]{2}:28\\.123[+-][0-9]{2}:[0-9]{2}"));
}

INSTANTIATE_TEST_SUITE_P(
    EveryPlacedLine, JsonTimelineWallTimeTest,
    ::testing::Values(
        PlacedLine{"Request", [](JsonTimeline& t, const TimelinePlace& p) { t.requested(p, kVlan, false); }},
        PlacedLine{"Indication", [](JsonTimeline& t, const TimelinePlace& p) { t.indicated(p, kVlan, true); }},
        PlacedLine{"Forgotten",
                   [](JsonTimeline& t, const TimelinePlace& p) {
                     t.forgot(p, kVlan, MrpAgent::Bridge::ForgetCause::portClosed);
                   }},
        PlacedLine{"Transmitted",
                   [](JsonTimeline& t, const TimelinePlace& p) {
                     t.transmitted(p, Mrp::MrpApplication::mvrp, {1}, {});
                   }},
        PlacedLine{"Injected", [](JsonTimeline& t, const TimelinePlace& p) { t.injected(p, {1}); }},
        PlacedLine{"RoleChanged",
                   [](JsonTimeline& t, const TimelinePlace& p) {
                     t.roleChanged(p, Stp::MstiPortStatus::Role::designated, Stp::MstiPortStatus::Role::alternate);
                   }},
        PlacedLine{"PortChanged", [](JsonTimeline& t, const TimelinePlace& p) { t.portChanged(p, "up"); }},
        PlacedLine{"Registrations", [](JsonTimeline& t, const TimelinePlace& p) { t.registrations(p, {}); }}),
    [](const ::testing::TestParamInfo<PlacedLine>& info) { return std::string(info.param.name); });

// Stream ids above 2^53 one apart: a talker with a locally administered
// address, streams 1 and 2. A double has no odd integers up there.
constexpr std::uint64_t kFirstStream = 0x0200000000010001;
constexpr std::uint64_t kSecondStream = kFirstStream + 1;
static_assert(kFirstStream > std::uint64_t{1} << 53);

TEST(JsonTimelineTest, StreamKeysAbove2To53StayApartThroughAParserThatReadsNumbersAsDoubles) {
  std::ostringstream out;
  JsonTimeline timeline(out);
  for (std::uint64_t streamId : {kFirstStream, kSecondStream}) {
    timeline.indicated(TimelinePlace{2.1, "sw3", "p2", std::nullopt},
                       AttributeValue(Mrp::MsrpListenerAttribute(streamId, Mrp::MsrpListenerEvent::ready)), true);
  }
  const std::vector<Json> lines = jsonLines(out.str());
  ASSERT_EQ(lines.size(), 2u);
  std::vector<std::string> keys;
  for (const Json& line : lines) {
    ASSERT_TRUE(line["key"].is_string()) << line;
    keys.push_back(line["key"].get<std::string>());
  }
  EXPECT_EQ(std::stoull(keys[0]), kFirstStream);
  EXPECT_EQ(std::stoull(keys[1]), kSecondStream);
  EXPECT_NE(keys[0], keys[1]);
  EXPECT_EQ(lines[0]["streamId"], "02:00:00:00:00:01:00:01");
  EXPECT_EQ(lines[1]["streamId"], "02:00:00:00:00:01:00:02");
  // Had the same digits been written as numbers, a reader taking them as
  // doubles would see one stream.
  const auto asDouble = [](const std::string& digits) { return Json::parse(digits).get<double>(); };
  EXPECT_EQ(asDouble(keys[0]), asDouble(keys[1]));
}

}  // namespace
