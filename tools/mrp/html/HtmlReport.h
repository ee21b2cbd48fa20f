#pragma once

#include <nlohmann/json.hpp>

#include <string>

namespace MrpCli {

// The report as one HTML page that needs nothing but itself: the network's
// drawing (an inline SVG), the report data (reportJson) in a JSON script
// element, and the page's own script and style (report.js, report.css,
// compiled in), which draw the timeline and the tables from the data.
std::string htmlReport(const nlohmann::ordered_json& reportData, const std::string& topologySvg);

}  // namespace MrpCli
