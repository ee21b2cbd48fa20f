#include "report/JsonTimeline.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <cstdint>
#include <functional>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "common/WallTime.h"

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
constexpr std::uint64_t kStream = 0x001b210000010001;
const MrpAgent::ReservationChange kReserved{kStream, true, MrpAgent::kSrClassA, 9'088'000, 18'176'000, 750'000'000};
const Mrp::MsrpTalkerFailedAttribute kFailed(
    Mrp::MsrpTalkerAdvertiseAttribute(kStream, Mrp::DataFrameParameters(Velo::EthAddr(0x91, 0xe0, 0xf0, 0, 0xfe, 1), 2),
                                      Mrp::Tspec(100, 1), Mrp::PriorityAndRank(3, 1), 13'336),
    Mrp::FailureInformation(0x8000020000000002, 1));
const Mrp::MsrpListenerAttribute kReady(kStream, Mrp::MsrpListenerEvent::ready);

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
        PlacedLine{"Registrations", [](JsonTimeline& t, const TimelinePlace& p) { t.registrations(p, {}); }},
        PlacedLine{"Reservation", [](JsonTimeline& t, const TimelinePlace& p) { t.reservationChanged(p, kReserved); }},
        PlacedLine{"TalkerFailed", [](JsonTimeline& t, const TimelinePlace& p) { t.talkerFailed(p, kFailed); }},
        PlacedLine{"ListenerDeclared", [](JsonTimeline& t, const TimelinePlace& p) { t.listenerDeclared(p, kReady); }},
        PlacedLine{"Streams", [](JsonTimeline& t, const TimelinePlace& p) { t.streams(p, {}); }}),
    [](const ::testing::TestParamInfo<PlacedLine>& info) { return std::string(info.param.name); });

// One event of a stream and the line it makes at sw2:p2, 2.1 s.
struct StreamLine {
  const char* name;
  std::function<void(JsonTimeline&, const TimelinePlace&)> write;
  const char* line;
};

class JsonTimelineStreamTest : public ::testing::TestWithParam<StreamLine> {};

TEST_P(JsonTimelineStreamTest, NamesTheStreamByItsIdAndItsKey) {
  std::ostringstream out;
  JsonTimeline timeline(out);
  GetParam().write(timeline, TimelinePlace{2.1, "sw2", "p2", std::nullopt});
  EXPECT_EQ(jsonLines(out.str()), std::vector<Json>{Json::parse(GetParam().line)});
}

INSTANTIATE_TEST_SUITE_P(
    Events, JsonTimelineStreamTest,
    ::testing::Values(
        StreamLine{"Reserved", [](JsonTimeline& t, const TimelinePlace& p) { t.reservationChanged(p, kReserved); },
                   R"({"t": 2.1, "bridge": "sw2", "port": "p2", "app": "msrp", "reservation": "reserved",
                       "streamId": "00:1b:21:00:00:01:00:01", "key": "7636108254969857", "class": "A",
                       "bandwidth": 9088000, "total": 18176000, "limit": 750000000})"},
        StreamLine{"Released",
                   [](JsonTimeline& t, const TimelinePlace& p) {
                     t.reservationChanged(p, {kStream, false, MrpAgent::kSrClassB, 3'392'000, 0, 750'000'000});
                   },
                   R"({"t": 2.1, "bridge": "sw2", "port": "p2", "app": "msrp", "reservation": "released",
                       "streamId": "00:1b:21:00:00:01:00:01", "key": "7636108254969857", "class": "B",
                       "bandwidth": 3392000, "total": 0, "limit": 750000000})"},
        StreamLine{"TalkerFailed", [](JsonTimeline& t, const TimelinePlace& p) { t.talkerFailed(p, kFailed); },
                   R"({"t": 2.1, "bridge": "sw2", "port": "p2", "app": "msrp",
                       "talkerFailed": {"code": 1, "text": "insufficient bandwidth",
                                        "bridgeId": "80:00:02:00:00:00:00:02"},
                       "streamId": "00:1b:21:00:00:01:00:01", "key": "7636108254969857",
                       "accumulatedLatency": 13336})"},
        StreamLine{"ListenerDeclared", [](JsonTimeline& t, const TimelinePlace& p) { t.listenerDeclared(p, kReady); },
                   R"({"t": 2.1, "bridge": "sw2", "port": "p2", "app": "msrp", "listener": "declared",
                       "streamId": "00:1b:21:00:00:01:00:01", "key": "7636108254969857", "declaration": "ready"})"},
        StreamLine{"Streams", [](JsonTimeline& t, const TimelinePlace& p) { t.streams(p, {}); },
                   R"({"t": 2.1, "bridge": "sw2", "port": "p2", "streams": [], "classes": []})"}),
    [](const ::testing::TestParamInfo<StreamLine>& info) { return std::string(info.param.name); });

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
