#pragma once

#include <nlohmann/json.hpp>

#include <cstdint>
#include <string>

namespace MrpCli {

// A bridge's stream table for a person, from its JSON form
// (streamTableJson): a row per stream and port, the stream's talker on its
// first; then a row per port and SR class with reservations: the total
// and the limit of the class and those before it, and the shaper's
// parameters, with the tc command under it. A Talker Failed is written out under its row. "to talker" is the
// Listener declaration the bridge sends towards the Talker.
//   sw2 streams
//     stream                   talker        latency   to talker  port  listener  reserved  class  bandwidth   declared
//     00:1b:21:00:00:01:00:01  p1 advertise  13336 ns  ready      p2    ready     yes       A      9.088 Mb/s  advertise
//   sw2 reservations
//     port  speed   class  reserved    total       limit     idleSlope    sendSlope       hiCredit  loCredit
//     p2    1 Gb/s  A      9.088 Mb/s  9.088 Mb/s  750 Mb/s  9088 kbit/s  -990912 kbit/s  15 B      -141 B
//       tc qdisc replace dev p2 parent 100:1 cbs idleslope 9088 sendslope -990912 hicredit 15 locredit -141 offload 0
std::string streamTableText(const std::string& bridge, const nlohmann::ordered_json& table);

// Why a bridge refused a stream, and which bridge:
// "insufficient bandwidth (code 1), bridge 80:00:02:00:00:00:00:01"; a
// code without words: "failure code 9, bridge ...".
std::string failureText(const std::string& text, unsigned code, const std::string& bridgeId);

}  // namespace MrpCli
