#include "sim/DefaultScenario.h"

namespace MrpCli {

const char* defaultScenarioJson() {
  return R"({
  "applications": ["mvrp", "msrp"],
  "config": {"leaveTime": 0.6, "leaveAllTime": 10.0, "randomizeLeaveAll": true, "seed": 1},
  "bridges": {
    "h1": {"ports": ["e0"]},
    "sw1": {"ports": ["p1", "p2"]},
    "sw2": {"ports": ["p1", "p2"]},
    "sw3": {"ports": ["p1", "p2"]},
    "h2": {"ports": ["e0"]}
  },
  "links": [["h1:e0", "sw1:p1"], ["sw1:p2", "sw2:p1"], ["sw2:p2", "sw3:p1"], ["sw3:p2", "h2:e0"]],
  "until": 90.0,
  "events": [
    {"at": 1.0, "declare": {"bridge": "h1", "port": "e0", "app": "mvrp", "vlan": 10}},
    {"at": 1.0, "declare": {"bridge": "h1", "port": "e0", "app": "msrp", "talkerAdvertise": {"streamId": "00:1b:21:00:00:01:00:01", "destination": "91:e0:f0:00:fe:01", "vlan": 2, "maxFrameSize": 100, "maxIntervalFrames": 1, "priority": 3, "rank": 1, "latency": 1000}}},
    {"at": 2.0, "declare": {"bridge": "h2", "port": "e0", "app": "msrp", "listener": {"streamId": "00:1b:21:00:00:01:00:01", "declaration": "ready"}}},
    {"at": 30.0, "withdraw": {"bridge": "h1", "port": "e0", "app": "mvrp", "vlan": 10}},
    {"at": 40.0, "link": ["sw2:p2", "sw3:p1"], "up": false},
    {"at": 60.0, "link": ["sw2:p2", "sw3:p1"], "up": true},
    {"at": 80.0, "withdraw": {"bridge": "h1", "port": "e0", "app": "msrp", "talkerAdvertise": {"streamId": "00:1b:21:00:00:01:00:01", "destination": "91:e0:f0:00:fe:01", "vlan": 2, "maxFrameSize": 100, "maxIntervalFrames": 1, "priority": 3, "rank": 1, "latency": 1000}}},
    {"at": 80.0, "withdraw": {"bridge": "h2", "port": "e0", "app": "msrp", "listener": {"streamId": "00:1b:21:00:00:01:00:01", "declaration": "ready"}}}
  ]
}
)";
}

}  // namespace MrpCli
