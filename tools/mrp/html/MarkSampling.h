#pragma once

#include <cstddef>
#include <vector>

#include "html/ReportData.h"

namespace MrpCli {

// Marks as many as a drawing `pixels` wide over `until` seconds can show:
// LeaveAlls, which come every few seconds on every port for as long as a run
// lasts, keep the first of each kind per pixel, counting those it stands
// for; every other mark is kept. Marks stay in time order.
std::vector<ReportData::Mark> sampledMarks(const std::vector<ReportData::Mark>& marks, double until,
                                           std::size_t pixels);

}  // namespace MrpCli
