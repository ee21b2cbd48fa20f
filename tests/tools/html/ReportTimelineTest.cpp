// The report data of a small network, kept as a golden file: h1 - sw1 - sw2
// - h2, h1 declares VLANs 10 and 20-22 and a stream h2 listens to, withdraws
// VLAN 10, the link sw1 - sw2 is cut and restored, sw2's port to h2 blocks.
// With MRP_REGENERATE_GOLDEN=1 the file is written again instead.

#include <gtest/gtest.h>

#include <filesystem>

#include "MrpMvrp/MvrpVlanAttribute.h"
#include "format/ScenarioReader.h"
#include "html/ReportJson.h"
#include "html/ReportTimeline.h"
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
