#pragma once

#include <string>

#include "html/ReportData.h"

namespace MrpCli {

// How many pixels across the run LeaveAll marks are sampled to: wider than
// a screen, so that the page loses none it could draw.
inline constexpr std::size_t kReportPixels = 2000;

// Writes `data` as the HTML page (the network drawn by Graphviz, the report
// data, the page's script and style) to `path`; false with `error` saying
// why, for a person, when the drawing or the file fails.
bool htmlReportWrite(const std::string& path, const ReportData& data, std::string& error);

}  // namespace MrpCli
