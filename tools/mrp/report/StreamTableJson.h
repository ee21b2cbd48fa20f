#pragma once

#include <nlohmann/json.hpp>

#include "MrpMsrp/FailureInformation.h"
#include "StreamTable.h"

namespace MrpCli {

// A bridge's stream table as JSON, which `mrp sim --json`, the agent's
// workers and `mrp ctl streams --json` write:
//   {"streams": [{"streamId": "00:1b:21:00:00:01:00:01", "key": "7636108254969857",
//                 "talkerPort": "p1", "talker": "advertise", "accumulatedLatency": 1000,
//                 "listenerDeclared": "ready",
//                 "ports": [{"port": "p2", "listener": "ready", "declared": "advertise",
//                            "accumulatedLatency": 13336, "reserved": true, "class": "A",
//                            "bandwidth": 9088000}]}],
//    "classes": [{"port": "p2", "class": "A", "portSpeed": 1000000000, "reserved": 9088000,
//                 "total": 9088000, "limit": 750000000, "idleSlope": 9088000, "sendSlope": -990912000,
//                 "hiCredit": 15, "loCredit": -141, "tc": "tc qdisc replace dev p2 ..."}]}
// A Talker Failed, heard or declared, adds "failure": {"code": 1, "text": "insufficient bandwidth",
// "bridgeId": "80:00:..."}. "listenerDeclared" is the Listener declaration the bridge sends
// towards the Talker; members the bridge has nothing for are left out.
nlohmann::ordered_json streamTableJson(const MrpAgent::StreamTable& table);

// Why and by whom a stream was refused, as the tables and the timeline
// write it: {"code": 1, "text": "insufficient bandwidth", "bridgeId": "80:00:02:00:00:00:00:01"}.
nlohmann::ordered_json failureJson(const Mrp::FailureInformation& failure);

}  // namespace MrpCli
