#include "html/LaneGrouping.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace MrpTest {

using MrpCli::ReportData;

namespace {

// A VLAN registered from `from` to `to`, its join mark standing for `line`.
ReportData::Lane vlan(std::uint16_t id, double from, double to, std::size_t line) {
  return ReportData::Lane{"vlan", id, "VLAN " + std::to_string(id), {{from, to, "IN"}}, {{from, "join", line, 1}}};
}

struct GroupingCase {
  std::string name;
  std::vector<ReportData::Lane> lanes;
  std::vector<std::string> labels;
};

class LaneGroupingTest : public ::testing::TestWithParam<GroupingCase> {};

TEST_P(LaneGroupingTest, GroupsVlansThatBehaveAlike) {
  MrpCli::ReportData::Track track;
  for (const ReportData::Lane& lane : GetParam().lanes) track.lanes[{lane.kind, lane.key}] = lane;
  std::vector<std::string> labels;
  for (const ReportData::Lane& lane : MrpCli::groupedLanes(track)) labels.push_back(lane.label);
  EXPECT_EQ(labels, GetParam().labels);
}

const ReportData::Lane kTalker{"talker", 1, "talker 00:00:00:00:00:00:00:01", {{1, 5, "IN"}}, {}};

INSTANTIATE_TEST_SUITE_P(
    Cases, LaneGroupingTest,
    ::testing::Values(
        GroupingCase{"OneVlan", {vlan(10, 1, 5, 0)}, {"VLAN 10"}},
        GroupingCase{"RunOfAlike", {vlan(10, 1, 5, 0), vlan(11, 1, 5, 0), vlan(12, 1, 5, 0)}, {"VLANs 10-12"}},
        GroupingCase{"AlikeApart", {vlan(2, 1, 5, 0), vlan(10, 1, 5, 0), vlan(11, 1, 5, 0)}, {"VLANs 2, 10-11"}},
        GroupingCase{"DifferentStretch", {vlan(10, 1, 5, 0), vlan(11, 1, 6, 0), vlan(12, 1, 5, 0)},
                     {"VLANs 10, 12", "VLAN 11"}},
        GroupingCase{"DifferentLine", {vlan(10, 1, 5, 0), vlan(11, 1, 5, 1)}, {"VLAN 10", "VLAN 11"}},
        GroupingCase{"StreamsStayApart",
                     {kTalker, ReportData::Lane{"talker", 2, "talker 00:00:00:00:00:00:00:02", {{1, 5, "IN"}}, {}}},
                     {"talker 00:00:00:00:00:00:00:01", "talker 00:00:00:00:00:00:00:02"}},
        GroupingCase{"AllVlans",
                     [] {
                       std::vector<ReportData::Lane> lanes;
                       for (std::uint16_t id = 1; id <= 4094; ++id) lanes.push_back(vlan(id, 1, 5, 0));
                       return lanes;
                     }(),
                     {"VLANs 1-4094"}}),
    [](const auto& info) { return info.param.name; });

}  // namespace
}  // namespace MrpTest
