#include "report/TextTimeline.h"

#include <gtest/gtest.h>

#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "common/WallTime.h"
#include "report/StreamTableJson.h"
#include "report/StreamTableText.h"

namespace {

using MrpAgent::AttributeValue;
using MrpAgent::Bridge;
using MrpCli::TextTimeline;
using MrpCli::TextTimelineOptions;
using MrpCli::Timeline;
using MrpCli::TimelinePlace;

const std::string kHeading = "      time  bridge  port  app   event";

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

TimelinePlace placeOf(double t, const std::string& port) { return TimelinePlace{t, "sw1", port, std::nullopt}; }

AttributeValue vlan(std::uint16_t id) { return AttributeValue(Mrp::MvrpVlanAttribute(id)); }

const AttributeValue kDomain(Mrp::MsrpDomainAttribute(6, 3, 2));

class TextTimelineTest : public ::testing::Test {
 protected:
  void indicated(double t, const std::string& port, const AttributeValue& value, bool join) {
    timeline.indicated(placeOf(t, port), value, join);
  }
  std::ostringstream out;
  TextTimeline timeline{out, {"sw1"}, {"p1", "p2"}};
};

TEST_F(TextTimelineTest, AJoinOfWhatThePortHoldsAlreadyIsShownOnce) {
  indicated(0.1, "p1", kDomain, true);
  indicated(0.1, "p1", kDomain, true);  // the engine indicates every Domain join
  indicated(0.2, "p2", kDomain, true);  // another port
  indicated(11.4, "p1", kDomain, true);
  EXPECT_EQ(linesOf(out.str()), (std::vector<std::string>{
                                    kHeading,
                                    "     0.100  sw1     p1    msrp  join domain class 6 (priority 3, VLAN 2)",
                                    "     0.200  sw1     p2    msrp  join domain class 6 (priority 3, VLAN 2)",
                                }));
}

TEST_F(TextTimelineTest, AChangedValueAndAJoinAfterALeaveAreShown) {
  indicated(1, "p1", kDomain, true);
  indicated(2, "p1", AttributeValue(Mrp::MsrpDomainAttribute(6, 4, 2)), true);
  indicated(3, "p1", kDomain, false);
  indicated(4, "p1", kDomain, true);
  const auto lines = linesOf(out.str());
  ASSERT_EQ(lines.size(), 5u);
  EXPECT_EQ(lines[2], "     2.000  sw1     p1    msrp  join domain class 6 (priority 4, VLAN 2)");
  EXPECT_EQ(lines[3], "     3.000  sw1     p1    msrp  leave domain class 6 (priority 3, VLAN 2)");
  EXPECT_EQ(lines[4], "     4.000  sw1     p1    msrp  join domain class 6 (priority 3, VLAN 2)");
}

// What happens to the VLANs of one call, each told on its own in the order given.
enum class Verb { declare, withdraw, join, leave, closed, blocked };

struct VlanCall {
  double t;
  std::string port;  // "" for the bridge's own declaration on every port
  Verb verb;
  std::vector<std::uint16_t> vlans;
};

void tell(Timeline& timeline, const VlanCall& call) {
  const TimelinePlace place = placeOf(call.t, call.port);
  for (std::uint16_t id : call.vlans) {
    switch (call.verb) {
      case Verb::declare:
      case Verb::withdraw:
        timeline.requested(place, vlan(id), call.verb == Verb::withdraw);
        break;
      case Verb::join:
      case Verb::leave:
        timeline.indicated(place, vlan(id), call.verb == Verb::join);
        break;
      case Verb::closed:
        timeline.forgot(place, vlan(id), Bridge::ForgetCause::portClosed);
        break;
      case Verb::blocked:
        timeline.forgot(place, vlan(id), Bridge::ForgetCause::blocked);
        break;
    }
  }
}

// `ids`, then first..last.
std::vector<std::uint16_t> withRun(std::vector<std::uint16_t> ids, std::uint16_t first, std::uint16_t last) {
  for (std::uint16_t id = first; id <= last; ++id) ids.push_back(id);
  return ids;
}

struct Grouping {
  std::string name;
  std::vector<VlanCall> calls;
  std::vector<std::string> lines;  // after the heading
};

class TextTimelineGroupingTest : public ::testing::TestWithParam<Grouping> {};

TEST_P(TextTimelineGroupingTest, VlansOfOneTimePortAndVerbShareALineInRanges) {
  std::ostringstream out;
  TextTimeline timeline(out, {"sw1"}, {"p1", "p2"});
  for (const VlanCall& call : GetParam().calls) tell(timeline, call);
  timeline.flush();
  std::vector<std::string> expected = {kHeading};
  expected.insert(expected.end(), GetParam().lines.begin(), GetParam().lines.end());
  EXPECT_EQ(linesOf(out.str()), expected);
}

INSTANTIATE_TEST_SUITE_P(
    Vlans, TextTimelineGroupingTest,
    ::testing::Values(
        Grouping{"OneValue", {{1, "p1", Verb::join, {10}}}, {"     1.000  sw1     p1    mvrp  join VLAN 10"}},
        Grouping{"ARun",
                 {{1, "p1", Verb::join, withRun({}, 100, 110)}},
                 {"     1.000  sw1     p1    mvrp  join VLANs 100-110"}},
        Grouping{"TwoInARow", {{1, "p1", Verb::join, {10, 11}}}, {"     1.000  sw1     p1    mvrp  join VLANs 10-11"}},
        Grouping{"Gaps",
                 {{1, "p1", Verb::join, withRun({200, 2}, 100, 110)}},
                 {"     1.000  sw1     p1    mvrp  join VLANs 2, 100-110, 200"}},
        Grouping{"UnsortedInput",
                 {{1, "p1", Verb::join, {200, 101, 2, 100, 102, 4}}},
                 {"     1.000  sw1     p1    mvrp  join VLANs 2, 4, 100-102, 200"}},
        Grouping{"SeparatePorts",
                 {{1, "p1", Verb::join, {10, 11}}, {1, "p2", Verb::join, {12}}},
                 {"     1.000  sw1     p1    mvrp  join VLANs 10-11", "     1.000  sw1     p2    mvrp  join VLAN 12"}},
        Grouping{"SeparateTimes",
                 {{1, "p1", Verb::join, {10}}, {1.1, "p1", Verb::join, {11}}},
                 {"     1.000  sw1     p1    mvrp  join VLAN 10", "     1.100  sw1     p1    mvrp  join VLAN 11"}},
        Grouping{"SeparateVerbs",
                 {{1, "p1", Verb::join, {10, 11}}, {1, "p1", Verb::leave, {12}}, {1, "p1", Verb::declare, {13}}},
                 {"     1.000  sw1     p1    mvrp  join VLANs 10-11", "     1.000  sw1     p1    mvrp  leave VLAN 12",
                  "     1.000  sw1     p1    mvrp  declare VLAN 13"}},
        Grouping{"OnlyConsecutiveRows",
                 {{1, "p1", Verb::join, {10}}, {1, "p2", Verb::join, {11}}, {1, "p1", Verb::join, {12}}},
                 {"     1.000  sw1     p1    mvrp  join VLAN 10", "     1.000  sw1     p2    mvrp  join VLAN 11",
                  "     1.000  sw1     p1    mvrp  join VLAN 12"}},
        Grouping{"DeclareAndWithdrawOnEveryPort",
                 {{0, "", Verb::declare, {3, 1, 2}}, {5, "", Verb::withdraw, {1, 2, 3}}},
                 {"     0.000  sw1     *     mvrp  declare VLANs 1-3",
                  "     5.000  sw1     *     mvrp  withdraw VLANs 1-3"}},
        Grouping{"ForgottenWithTheirCause",
                 {{3, "p1", Verb::closed, withRun({2}, 100, 110)}},
                 {"     3.000  sw1     p1    mvrp  leave VLANs 2, 100-110 (port closed)"}},
        Grouping{"ForgottenForAnotherCauseOrLeft",
                 {{3, "p1", Verb::closed, {1}}, {3, "p1", Verb::blocked, {2, 3}}, {3, "p1", Verb::leave, {4}}},
                 {"     3.000  sw1     p1    mvrp  leave VLAN 1 (port closed)",
                  "     3.000  sw1     p1    mvrp  leave VLANs 2-3 (blocked)",
                  "     3.000  sw1     p1    mvrp  leave VLAN 4"}},
        Grouping{
            "WhatIsRegisteredAlreadyIsLeftOut",
            {{1, "p1", Verb::join, {10, 11, 10}}, {2, "p1", Verb::join, {10, 11, 12}}, {3, "p1", Verb::join, {10}}},
            {"     1.000  sw1     p1    mvrp  join VLANs 10-11", "     2.000  sw1     p1    mvrp  join VLAN 12"}},
        Grouping{"AJoinAfterALeaveIsShownAgain",
                 {{1, "p1", Verb::join, {10, 11}}, {2, "p1", Verb::leave, {10}}, {3, "p1", Verb::join, {10, 11}}},
                 {"     1.000  sw1     p1    mvrp  join VLANs 10-11", "     2.000  sw1     p1    mvrp  leave VLAN 10",
                  "     3.000  sw1     p1    mvrp  join VLAN 10"}}),
    [](const ::testing::TestParamInfo<Grouping>& info) { return info.param.name; });

TEST_F(TextTimelineTest, AnotherValueBetweenVlansEndsTheirLine) {
  const TimelinePlace place = placeOf(1, "p1");
  timeline.indicated(place, vlan(10), true);
  timeline.indicated(place, kDomain, true);
  timeline.indicated(place, vlan(11), true);
  timeline.flush();
  EXPECT_EQ(linesOf(out.str()), (std::vector<std::string>{
                                    kHeading,
                                    "     1.000  sw1     p1    mvrp  join VLAN 10",
                                    "     1.000  sw1     p1    msrp  join domain class 6 (priority 3, VLAN 2)",
                                    "     1.000  sw1     p1    mvrp  join VLAN 11",
                                }));
}

TEST_F(TextTimelineTest, VlansAreHeldUntilFlushAndWrittenOnce) {
  timeline.indicated(placeOf(1, "p1"), vlan(10), true);
  EXPECT_EQ(out.str(), "");
  timeline.flush();
  timeline.flush();
  EXPECT_EQ(linesOf(out.str()), (std::vector<std::string>{kHeading, "     1.000  sw1     p1    mvrp  join VLAN 10"}));
}

TEST_F(TextTimelineTest, TheRegistrationTablesComeAfterTheVlansHeldBack) {
  timeline.indicated(placeOf(5, "p1"), vlan(10), true);
  timeline.registrations(placeOf(5, ""), {});
  const auto lines = linesOf(out.str());
  ASSERT_GE(lines.size(), 4u);
  EXPECT_EQ(lines[1], "     5.000  sw1     p1    mvrp  join VLAN 10");
  EXPECT_EQ(lines[3], "Registrations at 5.000 s");
}

// A moment in November 2026; its text depends on the local time zone.
constexpr double kWallTime = 1795551568.123;

TEST(TextTimelineWallClockTest, TheTimeColumnShowsTheWallClockAlignedWithItsHeading) {
  std::ostringstream out;
  TextTimeline timeline(out, {"sw1"}, {"p1"}, TextTimelineOptions{.wallClock = true});
  const TimelinePlace place{12.5, "sw1", "p1", kWallTime};
  timeline.indicated(place, vlan(10), true);
  timeline.indicated(place, vlan(11), true);
  timeline.linkChanged(13, "sw1:p1", "sw2:p1", false);  // a place without the wall clock
  const std::string wall = MrpCli::wallTimeText(kWallTime);
  // Right-aligned in a column as wide as the wall clock.
  const auto column = [&](const std::string& text) { return std::string(wall.size() - text.size(), ' ') + text; };
  EXPECT_EQ(linesOf(out.str()), (std::vector<std::string>{
                                    column("time") + "  bridge  port  app   event",
                                    wall + "  sw1     p1    mvrp  join VLANs 10-11",
                                    column("13.000") + "                      link sw1:p1 - sw2:p1 down",
                                }));
}

constexpr std::uint64_t kStream = 0x001b210000010001;

Mrp::MsrpTalkerAdvertiseAttribute talker(std::uint32_t latency) {
  return Mrp::MsrpTalkerAdvertiseAttribute(kStream,
                                           Mrp::DataFrameParameters(Velo::EthAddr(0x91, 0xe0, 0xf0, 0, 0xfe, 1), 2),
                                           Mrp::Tspec(100, 1), Mrp::PriorityAndRank(3, 1), latency);
}

Mrp::MsrpListenerAttribute listener(Mrp::MsrpListenerEvent declaration) {
  return Mrp::MsrpListenerAttribute(kStream, declaration);
}

// One event of a stream and the line it makes.
struct StreamRow {
  std::string name;
  std::function<void(Timeline&)> tell;
  std::string line;
};

class TextTimelineStreamTest : public ::testing::TestWithParam<StreamRow> {};

TEST_P(TextTimelineStreamTest, IsOneLineInTheColumns) {
  std::ostringstream out;
  TextTimeline timeline(out, {"sw1"}, {"p1", "p2"});
  GetParam().tell(timeline);
  EXPECT_EQ(linesOf(out.str()), (std::vector<std::string>{kHeading, GetParam().line}));
}

INSTANTIATE_TEST_SUITE_P(
    Events, TextTimelineStreamTest,
    ::testing::Values(
        StreamRow{"Reserved",
                  [](Timeline& t) {
                    t.reservationChanged(placeOf(2.1, "p2"),
                                         {kStream, true, MrpAgent::kSrClassA, 9'088'000, 18'176'000, 750'000'000});
                  },
                  "     2.100  sw1     p2    msrp  reserved stream 00:1b:21:00:00:01:00:01 class A 9.088 Mb/s "
                  "(port class A 18.176 Mb/s of 750 Mb/s)"},
        // Class B's limit counts class A's streams with its own.
        StreamRow{"ReleasedOfClassB",
                  [](Timeline& t) {
                    t.reservationChanged(placeOf(9, "p2"),
                                         {kStream, false, MrpAgent::kSrClassB, 3'392'000, 12'480'000, 75'000'000});
                  },
                  "     9.000  sw1     p2    msrp  released stream 00:1b:21:00:00:01:00:01 class B 3.392 Mb/s "
                  "(port class A+B 12.48 Mb/s of 75 Mb/s)"},
        StreamRow{"TalkerFailed",
                  [](Timeline& t) {
                    t.talkerFailed(
                        placeOf(3.1, "p2"),
                        Mrp::MsrpTalkerFailedAttribute(talker(13'336), Mrp::FailureInformation(0x8000020000000002, 1)));
                  },
                  "     3.100  sw1     p2    msrp  Talker Failed 00:1b:21:00:00:01:00:01: insufficient bandwidth "
                  "(code 1), bridge 80:00:02:00:00:00:00:02"},
        StreamRow{"TalkerFailedWithAnotherBridgesCode",
                  [](Timeline& t) {
                    t.talkerFailed(placeOf(3.1, "p2"),
                                   Mrp::MsrpTalkerFailedAttribute(talker(13'336),
                                                                  Mrp::FailureInformation(0x8000020000000002, 99)));
                  },
                  "     3.100  sw1     p2    msrp  Talker Failed 00:1b:21:00:00:01:00:01: failure code 99, "
                  "bridge 80:00:02:00:00:00:00:02"},
        StreamRow{
            "ListenerDeclared",
            [](Timeline& t) { t.listenerDeclared(placeOf(5.1, "p2"), listener(Mrp::MsrpListenerEvent::readyFailed)); },
            "     5.100  sw1     p2    msrp  listener 00:1b:21:00:00:01:00:01 readyFailed"}),
    [](const ::testing::TestParamInfo<StreamRow>& info) { return info.param.name; });

TEST_F(TextTimelineTest, AListenersNewDeclarationIsWhatThePortHoldsFromThenOn) {
  indicated(1, "p2", AttributeValue(listener(Mrp::MsrpListenerEvent::askingFailed)), true);
  timeline.listenerDeclared(placeOf(5, "p2"), listener(Mrp::MsrpListenerEvent::ready));
  indicated(6, "p2", AttributeValue(listener(Mrp::MsrpListenerEvent::ready)), true);  // a New's second message
  indicated(7, "p2", AttributeValue(listener(Mrp::MsrpListenerEvent::askingFailed)), true);
  EXPECT_EQ(linesOf(out.str()),
            (std::vector<std::string>{
                kHeading,
                "     1.000  sw1     p2    msrp  join listener 00:1b:21:00:00:01:00:01 askingFailed",
                "     5.000  sw1     p2    msrp  listener 00:1b:21:00:00:01:00:01 ready",
                "     7.000  sw1     p2    msrp  join listener 00:1b:21:00:00:01:00:01 askingFailed",
            }));
}

TEST_F(TextTimelineTest, ABridgesStreamsFollowItsRegistrations) {
  MrpAgent::StreamTable table;
  table.streams.push_back({kStream, "p1", AttributeValue(talker(1000)), std::nullopt, {}});
  timeline.registrations(placeOf(9, ""), {});
  timeline.streams(placeOf(9, ""), table);
  EXPECT_EQ(out.str(), "\nRegistrations at 9.000 s\n\nsw1\n  (none)\n\n" +
                           MrpCli::streamTableText("sw1", MrpCli::streamTableJson(table)));
}

TEST(TextTimelineLeaveAllTest, HidingLeaveAllLeavesEveryOtherRowAsItIs) {
  using Role = Stp::MstiPortStatus::Role;
  const std::vector<std::function<void(Timeline&)>> calls = {
      [](Timeline& t) { t.requested(placeOf(1, "p1"), vlan(10), false); },
      [](Timeline& t) { t.transmitted(placeOf(1.1, "p2"), Mrp::MrpApplication::mvrp, {}, {1}); },
      [](Timeline& t) { t.transmitted(placeOf(1.1, "p2"), Mrp::MrpApplication::msrp, {}, {}); },
      [](Timeline& t) { t.indicated(placeOf(1.2, "p2"), vlan(10), true); },
      [](Timeline& t) {
        t.transmitted(placeOf(11, "p1"), Mrp::MrpApplication::msrp, {}, {1, 2, 3});
      },
      [](Timeline& t) { t.injected(placeOf(12, "p1"), std::vector<std::uint8_t>(60)); },
      [](Timeline& t) { t.roleChanged(placeOf(13, "p1"), Role::designated, Role::alternate); },
      [](Timeline& t) { t.forgot(placeOf(13, "p1"), vlan(10), Bridge::ForgetCause::blocked); },
      [](Timeline& t) { t.portChanged(placeOf(14, "p2"), "down"); },
      [](Timeline& t) { t.linkChanged(15, "sw1:p1", "sw2:p1", true); },
  };
  std::ostringstream shownOut;
  std::ostringstream hiddenOut;
  TextTimeline shown(shownOut, {"sw1"}, {"p1", "p2"});
  TextTimeline hidden(hiddenOut, {"sw1"}, {"p1", "p2"}, TextTimelineOptions{.hideLeaveAll = true});
  for (const auto& call : calls) {
    call(shown);
    call(hidden);
  }
  shown.flush();
  hidden.flush();

  std::vector<std::string> expected;
  std::size_t leaveAlls = 0;
  for (const std::string& line : linesOf(shownOut.str())) {
    if (line.find("LeaveAll sent") == std::string::npos) {
      expected.push_back(line);
    } else {
      ++leaveAlls;
    }
  }
  EXPECT_EQ(leaveAlls, 2u);
  EXPECT_EQ(expected.size(), 8u);
  EXPECT_EQ(linesOf(hiddenOut.str()), expected);
}

}  // namespace

namespace {

TEST_F(TextTimelineTest, TheLineSinkHearsEachLineInItsPartsHeldVlansWhenWritten) {
  std::vector<std::string> heard;
  timeline.lineSinkIs([&heard](const TimelinePlace& place, const std::string& app, const std::string& event) {
    heard.push_back(std::to_string(place.t).substr(0, 3) + "|" + place.port + "|" + app + "|" + event);
  });
  indicated(1, "p1", vlan(10), true);
  indicated(1, "p1", vlan(11), true);
  EXPECT_TRUE(heard.empty());
  indicated(2, "p1", kDomain, true);
  EXPECT_EQ(heard, (std::vector<std::string>{"1.0|p1|mvrp|join VLANs 10-11",
                                             "2.0|p1|msrp|join domain class 6 (priority 3, VLAN 2)"}));
}

TEST_F(TextTimelineTest, RegisteredIsWhatAJoinWouldNotShowAgain) {
  EXPECT_FALSE(timeline.registered(placeOf(1, "p1"), kDomain));
  indicated(1, "p1", kDomain, true);
  EXPECT_TRUE(timeline.registered(placeOf(2, "p1"), kDomain));
  EXPECT_FALSE(timeline.registered(placeOf(2, "p2"), kDomain));
  indicated(3, "p1", kDomain, false);
  EXPECT_FALSE(timeline.registered(placeOf(4, "p1"), kDomain));
}

}  // namespace
