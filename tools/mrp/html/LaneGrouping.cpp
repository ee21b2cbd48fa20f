#include "html/LaneGrouping.h"

#include <map>
#include <tuple>

#include "report/VlanSetText.h"

namespace MrpCli {

namespace {

// What a lane did, without which VLAN it is.
using Behaviour = std::pair<std::vector<ReportData::Segment>, std::vector<ReportData::Mark>>;

}  // namespace

std::vector<ReportData::Lane> groupedLanes(const ReportData::Track& track) {
  std::vector<ReportData::Lane> lanes;
  std::vector<std::vector<std::uint16_t>> vlansOf;  // by lane, for a VLAN lane
  std::map<Behaviour, std::size_t> laneOf;
  for (const auto& [key, lane] : track.lanes) {
    if (lane.kind != "vlan") {
      lanes.push_back(lane);
      vlansOf.emplace_back();
      continue;
    }
    const auto [found, added] = laneOf.try_emplace(Behaviour{lane.segments, lane.marks}, lanes.size());
    if (added) {
      lanes.push_back(lane);
      vlansOf.emplace_back();
    }
    vlansOf[found->second].push_back(static_cast<std::uint16_t>(lane.key));
  }
  for (std::size_t i = 0; i < lanes.size(); ++i) {
    if (vlansOf[i].size() > 1) lanes[i].label = "VLANs " + vlanSetText(vlansOf[i]);
  }
  return lanes;
}

}  // namespace MrpCli
