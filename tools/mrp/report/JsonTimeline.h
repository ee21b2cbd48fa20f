#pragma once

#include <iosfwd>

#include "report/Timeline.h"

namespace MrpCli {

// The timeline as JSON lines, one object per line:
//   {"t": 1.3, "bridge": "sw2", "port": "p1", "app": "mvrp", "indication": "join", "type": 1, "key": "10",
//    "value": "000a", "vlan": 10}
//   {"t": 2.1, "bridge": "sw3", "port": "p2", "app": "msrp", "indication": "join", "type": 3,
//    "key": "7636108254969857", "value": "001b210000010001", "streamId": "00:1b:21:00:00:01:00:01",
//    "declaration": "ready"}
//   {"t": 3.0, "bridge": "sw1", "port": "p1", "app": "mvrp", "forgotten": "blocked", "type": 1, "key": "10", ...}
//   {"t": 1.3, "bridge": "sw2", "port": "p2", "app": "mvrp", "tx": "<frame hex>"}
//   {"t": 40, "link": ["sw2:p2", "sw3:p1"], "up": false}
//   {"t": 2.2, "bridge": "sw2", "port": "p2", "app": "msrp", "reservation": "reserved",
//    "streamId": "00:1b:21:00:00:01:00:01", "key": "7636108254969857", "class": "A", "bandwidth": 9088000,
//    "total": 9088000, "limit": 750000000}
//   {"t": 2.2, "bridge": "sw2", "port": "p2", "app": "msrp",
//    "talkerFailed": {"code": 1, "text": "insufficient bandwidth", "bridgeId": "80:00:02:00:00:00:00:01"},
//    "streamId": "00:1b:21:00:00:01:00:01", "key": "7636108254969857", "accumulatedLatency": 13336}
//   {"t": 5.1, "bridge": "sw2", "port": "p2", "app": "msrp", "listener": "declared",
//    "streamId": "00:1b:21:00:00:01:00:01", "key": "7636108254969857", "declaration": "ready"}
//   {"t": 90, "bridge": "sw2", "registrations": [{"port": ..., "registrar": "IN", "applicant": "QA"}]}
//   {"t": 90, "bridge": "sw2", "streams": [...], "classes": [...]}   (streamTableJson)
// "bandwidth" is the stream's, in bit/s; "total" what the port reserves for
// the class and the classes before it, against their "limit".
// A place with a wall time (the agent's) adds it beside "t":
//   {"t": 12.5, "time": "2026-11-24T20:19:28.123+01:00", "bridge": "agent", "port": "eth1", "portState": "up"}
// Times are rounded to the microsecond, so that the same run prints the
// same bytes. Keys are strings of digits (attributeKeyJson).
class JsonTimeline : public Timeline {
 public:
  explicit JsonTimeline(std::ostream& out) : out_(out) {}

  void requested(const TimelinePlace& place, const MrpAgent::AttributeValue& value, bool withdraw) override;
  void indicated(const TimelinePlace& place, const MrpAgent::AttributeValue& value, bool join) override;
  void forgot(const TimelinePlace& place, const MrpAgent::AttributeValue& value,
              MrpAgent::Bridge::ForgetCause cause) override;
  void transmitted(const TimelinePlace& place, Mrp::MrpApplication application, const std::vector<std::uint8_t>& frame,
                   const std::vector<std::uint8_t>& leaveAllTypes) override;
  void injected(const TimelinePlace& place, const std::vector<std::uint8_t>& frame) override;
  void linkChanged(Quarn::Seconds t, const std::string& a, const std::string& b, bool up) override;
  void roleChanged(const TimelinePlace& place, Stp::MstiPortStatus::Role from, Stp::MstiPortStatus::Role to) override;
  void registrations(const TimelinePlace& place, const std::vector<MrpAgent::Registration>& held) override;
  void portChanged(const TimelinePlace& place, const std::string& state) override;
  void reservationChanged(const TimelinePlace& place, const MrpAgent::ReservationChange& change) override;
  void talkerFailed(const TimelinePlace& place, const Mrp::MsrpTalkerFailedAttribute& declared) override;
  void listenerDeclared(const TimelinePlace& place, const Mrp::MsrpListenerAttribute& listener) override;
  void streams(const TimelinePlace& place, const MrpAgent::StreamTable& table) override;

 private:
  std::ostream& out_;
};

}  // namespace MrpCli
