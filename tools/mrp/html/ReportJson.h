#pragma once

#include <nlohmann/json.hpp>

#include <cstddef>

#include "html/ReportData.h"

namespace MrpCli {

// The report data the HTML page draws from, small enough for a long run:
// VLAN lanes grouped (groupedLanes), LeaveAll marks sampled to `pixels`
// across the run (sampledMarks), and only the lines some mark stands for.
//   {"title": "...", "until": 90.0,
//    "nodes": [{"name": "sw1", "ports": ["p1", "p2"], "station": false}],
//    "links": [{"a": "sw1:p2", "b": "sw2:p1", "cuts": [[40.0, 60.0]]}],
//    "ports": [{"bridge": "sw1", "port": "p1", "role": "designated", "marks": [[40.0, "linkDown", 7]],
//               "tracks": [{"app": "mvrp", "marks": [[11.0, "leaveAllSent", 3, 2]],
//                           "lanes": [{"kind": "vlan", "label": "VLANs 10-12", "segments": [[1.1, 30.1, "IN"],
//                                      [30.1, 30.7, "LV"]], "marks": [[1.1, "join", 2]]}]}]}],
//    "lines": [[1.1, "sw1", "p1", "mvrp", "join VLANs 10-12"]],
//    "tables": [{"bridge": "sw1", "registrations": "...", "streams": "..."}]}
// A mark is [t, kind, line] with the number of marks it stands for after
// the line when more than one; a line null when the text shows none. A
// stretch still open at the end has null for its end; a cut too.
nlohmann::ordered_json reportJson(const ReportData& data, std::size_t pixels);

}  // namespace MrpCli
