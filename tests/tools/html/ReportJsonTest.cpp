#include "html/ReportJson.h"

#include <gtest/gtest.h>

namespace MrpTest {
namespace {

using MrpCli::ReportData;

// sw1:p1 holds VLANs 10 and 11 alike, VLAN 12 apart, and many LeaveAlls.
ReportData data() {
  ReportData report;
  report.title = "t";
  report.until = 10;
  report.nodes = {{"sw1", {"p1"}, false}};
  report.lines = {{1, "sw1", "p1", "mvrp", "join VLANs 10-11"}, {2, "sw1", "p1", "mvrp", "unused"},
                  {3, "sw1", "p1", "mvrp", "join VLAN 12"}, {4, "sw1", "p1", "mvrp", "LeaveAll sent (VLAN)"}};
  MrpCli::ReportData::Track& track = report.ports[{"sw1", "p1"}].tracks["mvrp"];
  for (std::uint64_t vlan : {10, 11}) {
    track.lanes[{"vlan", vlan}] = {"vlan", vlan, "VLAN " + std::to_string(vlan), {{1, std::nullopt, "IN"}},
                                   {{1, "join", 0, 1}}};
  }
  track.lanes[{"vlan", 12}] = {"vlan", 12, "VLAN 12", {{3, 9.5, "IN"}}, {{3, "join", 2, 1}}};
  for (int i = 0; i < 5; ++i) track.marks.push_back({4 + i * 0.001, "leaveAllSent", 3, 1});
  return report;
}

TEST(ReportJsonTest, WritesGroupedLanesSampledMarksAndOnlyTheLinesUsed) {
  const nlohmann::ordered_json json = MrpCli::reportJson(data(), 100);
  const auto& track = json["ports"][0]["tracks"][0];
  EXPECT_EQ(track["app"], "mvrp");
  ASSERT_EQ(track["lanes"].size(), 2u);
  EXPECT_EQ(track["lanes"][0]["label"], "VLANs 10-11");
  EXPECT_EQ(track["lanes"][0]["segments"].dump(), R"([[1.0,null,"IN"]])");
  EXPECT_EQ(track["lanes"][0]["marks"].dump(), R"([[1.0,"join",0]])");
  EXPECT_EQ(track["lanes"][1]["marks"].dump(), R"([[3.0,"join",1]])");
  EXPECT_EQ(track["marks"].dump(), R"([[4.0,"leaveAllSent",2,5]])");
  EXPECT_EQ(json["lines"].dump(),
            R"([[1.0,"sw1","p1","mvrp","join VLANs 10-11"],[3.0,"sw1","p1","mvrp","join VLAN 12"],)"
            R"j([4.0,"sw1","p1","mvrp","LeaveAll sent (VLAN)"]])j");
}

TEST(ReportJsonTest, PortsFollowTheNetworksOrderWithABridgesOwnDeclarationsLast) {
  ReportData report;
  report.until = 1;
  report.nodes = {{"sw2", {"p2", "p1"}, false}, {"sw1", {"p1"}, false}};
  for (const auto& [bridge, port] : std::vector<std::pair<std::string, std::string>>{
           {"sw1", "p1"}, {"sw2", "*"}, {"sw2", "p1"}, {"sw2", "p2"}}) {
    report.ports[{bridge, port}];
  }
  const nlohmann::ordered_json json = MrpCli::reportJson(report, 10);
  std::vector<std::string> order;
  for (const auto& port : json["ports"]) {
    order.push_back(port["bridge"].get<std::string>() + ":" + port["port"].get<std::string>());
  }
  EXPECT_EQ(order, (std::vector<std::string>{"sw2:p2", "sw2:p1", "sw2:*", "sw1:p1"}));
}

}  // namespace
}  // namespace MrpTest
