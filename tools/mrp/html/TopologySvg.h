#pragma once

#include <string>

#include "html/ReportData.h"

namespace MrpCli {

// The network of a report as an SVG drawing, laid out by Graphviz: bridges
// as boxes, end stations as ellipses, a link per edge with its ports' names
// at its ends. A port that blocks at the end of the run (alternate or
// backup) has its role beside its name and a bar at its end; a link that
// was cut says when, and is dashed red while it is cut at the end.
// Nodes are "node-<name>" and links "link-<a>-<b>" (ids), and the drawing
// refers to nothing outside itself, so that a page can carry it inline.
std::string topologySvg(const ReportData& data);

}  // namespace MrpCli
