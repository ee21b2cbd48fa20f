// The report data of a small network, kept as a golden file: h1 - sw1 - sw2
// - h2, h1 declares VLANs 10 and 20-22 and a stream h2 listens to, withdraws
// VLAN 10, the link sw1 - sw2 is cut and restored, sw2's port to h2 blocks.
// With MRP_REGENERATE_GOLDEN=1 the file is written again instead.

#include <gtest/gtest.h>

#include <filesystem>

#include "MrpMsrp/MsrpListenerAttribute.h"
#include "MrpMvrp/MvrpVlanAttribute.h"
#include "format/ScenarioReader.h"
#include "html/ReportJson.h"
#include "html/ReportTimeline.h"
#include "sim/DefaultScenario.h"
#include "sim/Simulation.h"
#include "support/Golden.h"

namespace MrpTest {
namespace {

const std::filesystem::path kGolden = std::filesystem::path(MRP_SOURCE_DIR) / "tests" / "tools" / "html" / "golden";

MrpCli::ReportData reportOf(const MrpCli::Scenario& scenario) {
  MrpCli::ReportTimeline timeline(scenario, "small", scenario.until);
  {
    MrpCli::Simulation simulation(scenario, timeline);
    simulation.run(scenario.until);
  }
  timeline.flush();
  return timeline.data();
}

MrpCli::ReportData smallReport() { return reportOf(MrpCli::scenarioFromJson(fileText(kGolden / "scenario.json"))); }

TEST(ReportTimelineTest, SmallNetworkMatchesGoldenReportData) {
  expectGolden(kGolden / "report-data.json", MrpCli::reportJson(smallReport(), 1000).dump(1) + "\n",
               "the report data of tests/tools/html/golden/scenario.json");
}

const MrpCli::ReportData::Lane& laneOf(const MrpCli::ReportData& data, const std::string& bridge,
                                       const std::string& port, const std::string& app, const std::string& kind,
                                       std::uint64_t key) {
  return data.ports.at({bridge, port}).tracks.at(app).lanes.at({kind, key});
}

TEST(ReportTimelineTest, WithdrawnVlanIsInThenLeavingForTheLeaveTimeThenGone) {
  const MrpCli::ReportData data = smallReport();
  const MrpCli::ReportData::Lane& vlan10 = laneOf(data, "sw1", "p1", "mvrp", "vlan", 10);
  ASSERT_EQ(vlan10.segments.size(), 2u);
  EXPECT_EQ(vlan10.segments[0].state, "IN");
  EXPECT_EQ(vlan10.segments[1].state, "LV");
  ASSERT_TRUE(vlan10.segments[1].to);
  EXPECT_NEAR(*vlan10.segments[1].to - vlan10.segments[1].from, 0.6, 1e-9);
  EXPECT_EQ(vlan10.segments[0].to, vlan10.segments[1].from);
}

// The default network's stream at 69.5 s, when sw2 - sw3 is back: sw3's p1
// registers the Talker Failed sw2 declared while the link was cut, and the
// Talker Advertise; the Talker Failed goes at 70.1 s, the Talker stays until
// it is withdrawn. Listeners that asked in vain turn ready at that moment.
struct StretchCase {
  std::string name;
  std::string bridge;
  std::string port;
  std::string kind;
  // From 69.5 s on: the states and where each stretch ends (-1 for "open").
  std::vector<std::pair<std::string, double>> stretches;
  friend void PrintTo(const StretchCase& c, std::ostream* out) { *out << c.name; }
};

class StreamStretchTest : public ::testing::TestWithParam<StretchCase> {};

TEST_P(StreamStretchTest, EachStreamAttributeHasItsOwnStretches) {
  static const MrpCli::ReportData data = reportOf(MrpCli::scenarioFromJson(MrpCli::defaultScenarioJson()));
  const StretchCase& c = GetParam();
  const MrpCli::ReportData::Lane& lane = laneOf(data, c.bridge, c.port, "msrp", c.kind, 0x001b210000010001);
  std::vector<std::pair<std::string, double>> stretches;
  for (const MrpCli::ReportData::Segment& segment : lane.segments) {
    if (segment.from >= 69.5) stretches.emplace_back(segment.state, segment.to.value_or(-1));
  }
  ASSERT_EQ(stretches.size(), c.stretches.size()) << lane.label;
  for (std::size_t i = 0; i < stretches.size(); ++i) {
    EXPECT_EQ(stretches[i].first, c.stretches[i].first) << lane.label << " stretch " << i;
    EXPECT_NEAR(stretches[i].second, c.stretches[i].second, 1e-9) << lane.label << " stretch " << i;
  }
}

INSTANTIATE_TEST_SUITE_P(
    DefaultNetwork, StreamStretchTest,
    ::testing::Values(StretchCase{"TalkerFailedGoesAlone", "sw3", "p1", "talkerFailed", {{"TF", 69.5}, {"LV", 70.1}}},
                      StretchCase{"TalkerStaysUntilWithdrawn", "sw3", "p1", "talker", {{"IN", 81.5}, {"LV", 82.1}}},
                      StretchCase{"ListenerTurnsReady", "sw2", "p2", "listener", {{"IN", 80.8}, {"LV", 81.4}}},
                      StretchCase{"StationsListenerTurnsReady", "h1", "e0", "listener", {{"IN", 80.8}, {"LV", 81.4}}}),
    [](const auto& info) { return info.param.name; });

TEST(ReportTimelineTest, ListenerThatChangesItsDeclarationLaterGoesOnInANewStretch) {
  const MrpCli::Scenario scenario = MrpCli::scenarioFromJson(fileText(kGolden / "scenario.json"));
  MrpCli::ReportTimeline timeline(scenario, "small", scenario.until);
  const Mrp::MsrpListenerAttribute asking(1, Mrp::MsrpListenerEvent::askingFailed);
  const Mrp::MsrpListenerAttribute ready(1, Mrp::MsrpListenerEvent::ready);
  timeline.indicated({1, "sw1", "p2", {}}, MrpAgent::AttributeValue(asking), true);
  timeline.listenerDeclared({3, "sw1", "p2", {}}, ready);
  timeline.listenerDeclared({4, "sw1", "p2", {}}, ready);
  timeline.listenerDeclared({5, "sw1", "p2", {}}, asking);
  timeline.flush();
  const auto& segments = laneOf(timeline.data(), "sw1", "p2", "msrp", "listener", 1).segments;
  const std::vector<MrpCli::ReportData::Segment> expected = {{1, 3, "TF"}, {3, 5, "IN"}, {5, std::nullopt, "TF"}};
  EXPECT_EQ(segments, expected);
}

TEST(ReportTimelineTest, EveryMarkWithALineStandsForALineOfItsMoment) {
  const MrpCli::ReportData data = smallReport();
  std::size_t checked = 0;
  for (const auto& [where, port] : data.ports) {
    for (const auto& [app, track] : port.tracks) {
      for (const auto& [key, lane] : track.lanes) {
        for (const MrpCli::ReportData::Mark& mark : lane.marks) {
          ASSERT_TRUE(mark.line) << lane.label << " " << mark.kind << " at " << mark.t;
          const MrpCli::ReportData::Line& line = data.lines.at(*mark.line);
          EXPECT_EQ(line.t, mark.t) << line.text;
          EXPECT_EQ(line.bridge, where.first) << line.text;
          EXPECT_EQ(line.app, app) << line.text;
          ++checked;
        }
      }
    }
  }
  EXPECT_GT(checked, 20u);
}

TEST(ReportTimelineTest, LeaveAllSentIsReceivedAtTheOtherEndWhileTheLinkIsUp) {
  const MrpCli::ReportData data = smallReport();
  for (const auto& [sender, receiver] : {std::pair{"sw1", "sw2"}, std::pair{"sw2", "sw1"}}) {
    const std::string senderPort = std::string(sender) == "sw1" ? "p2" : "p1";
    const std::string receiverPort = senderPort == "p2" ? "p1" : "p2";
    std::vector<double> sent;
    for (const auto& mark : data.ports.at({sender, senderPort}).tracks.at("mvrp").marks) {
      if (mark.kind == "leaveAllSent" && !(mark.t >= 12 && mark.t < 16)) sent.push_back(mark.t);
    }
    std::vector<double> received;
    for (const auto& mark : data.ports.at({receiver, receiverPort}).tracks.at("mvrp").marks) {
      if (mark.kind == "leaveAllReceived") received.push_back(mark.t);
    }
    EXPECT_FALSE(sent.empty());
    EXPECT_EQ(received, sent) << sender << " to " << receiver;
  }
}

}  // namespace
}  // namespace MrpTest
