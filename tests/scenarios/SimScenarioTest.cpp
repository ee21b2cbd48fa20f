// Scenario files run whole through `mrp sim`, read from the JSON timeline.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <string>
#include <vector>

#include "support/SimJson.h"

namespace MrpTest {
namespace {

using Json = nlohmann::json;

constexpr double kLeaveTime = 0.6;
// The registrar's transmit timer: a leave goes out at the next cycle.
constexpr double kTransmitCycle = 0.1;
// Times are printed to the microsecond.
constexpr double kSlack = 1e-6;

// The talker is declared at 0 s, before h1 has registered sw1's Domain: for
// that first transmit cycle h1 refuses it (a boundary port), and the Talker
// Failed leaves a leave time later. From the first LeaveAll on, nothing leaves.
TEST(SimScenarioTest, ThreeHundredSecondsOfRandomisedLeaveAllGiveNoLeaveIndication) {
  const std::vector<Json> lines = simJson({scenarioFile("leaveall-300s")});
  EXPECT_GT(countWhere(lines, [](const Json& l) { return l.contains("leaveAll"); }), 100u);
  EXPECT_GE(countWhere(lines, [](const Json& l) { return l.value("indication", "") == "join"; }), 10u);
  const auto firstLeaveAll =
      std::find_if(lines.begin(), lines.end(), [](const Json& l) { return l.contains("leaveAll"); });
  ASSERT_NE(firstLeaveAll, lines.end());
  for (auto line = firstLeaveAll; line != lines.end(); ++line)
    EXPECT_NE(line->value("indication", ""), "leave") << *line;
}

TEST(SimScenarioTest, APortThatStopsForwardingWithdrawsWhatItRegisteredAndAnInjectedFrameIsHeard) {
  const std::vector<Json> lines = simJson({scenarioFile("role-and-inject")});
  const auto injected = indicationAt(lines, "join", "sw1", "p2", 1, 20);
  ASSERT_TRUE(injected);
  EXPECT_EQ(*injected, 1.0);
  EXPECT_TRUE(indicationAt(lines, "join", "h1", "e0", 1, 20));
  EXPECT_EQ(countWhere(lines,
                       [](const Json& l) {
                         return l.contains("role") && l["bridge"] == "sw1" && l["role"] == 3 && l["previousRole"] == 2;
                       }),
            1u);
  // sw1 forgets p1's VLAN 10 without a leave indication, and withdraws it from h2.
  EXPECT_FALSE(indicationAt(lines, "leave", "sw1", "p1", 1, 10));
  const auto left = indicationAt(lines, "leave", "h2", "e0", 1, 10, 3.0);
  ASSERT_TRUE(left);
  EXPECT_LE(*left, 3.0 + kLeaveTime + kTransmitCycle + kSlack);
}

// tests/conformance/stream-line/scenario.json: eight class A streams over a
// 100 Mb/s link between sw2 and sw3, a ninth refused by sw2 until the first
// is withdrawn.
TEST(SimScenarioTest, EachMsrpBridgeWithStreamsEndsWithItsStreamTableAfterItsRegistrations) {
  const std::vector<Json> lines = simJson({scenarioFile("stream-line")});
  std::vector<std::string> tables;
  const Json* sw2 = nullptr;
  for (const Json& line : lines) {
    if (line.contains("registrations")) tables.push_back("registrations " + line["bridge"].get<std::string>());
    if (!line.contains("streams")) continue;
    tables.push_back("streams " + line["bridge"].get<std::string>());
    if (line["bridge"] == "sw2") sw2 = &line;
  }
  EXPECT_THAT(tables, ::testing::ElementsAre("registrations h1", "streams h1", "registrations sw1", "streams sw1",
                                             "registrations sw2", "streams sw2", "registrations sw3", "streams sw3",
                                             "registrations h2", "streams h2"));
  ASSERT_NE(sw2, nullptr);
  EXPECT_EQ((*sw2)["streams"].size(), 8u) << "streams 2-9";
  ASSERT_EQ((*sw2)["classes"].size(), 1u);
  const Json& shaped = (*sw2)["classes"][0];
  EXPECT_EQ(shaped["port"], "p2");
  EXPECT_EQ(shaped["portSpeed"], 100'000'000);
  EXPECT_EQ(shaped["reserved"], 8 * 9'088'000);
  EXPECT_EQ(shaped["limit"], 75'000'000);
  EXPECT_EQ(shaped["tc"],
            "tc qdisc replace dev p2 parent 100:1 cbs idleslope 72704 sendslope -27296 hicredit 1122 "
            "locredit -39 offload 0");
}

}  // namespace
}  // namespace MrpTest
