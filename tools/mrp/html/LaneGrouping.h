#pragma once

#include <vector>

#include "html/ReportData.h"

namespace MrpCli {

// A port's lanes as the report draws them: VLANs that behave alike (the same
// stretches and the same marks, standing for the same lines) share one lane,
// "VLANs 10, 100-110", placed at its lowest VLAN; other lanes stay as they are.
// Thousands of VLANs declared together make a few lanes, not thousands.
std::vector<ReportData::Lane> groupedLanes(const ReportData::Track& track);

}  // namespace MrpCli
