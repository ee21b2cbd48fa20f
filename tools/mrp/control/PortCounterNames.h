#pragma once

namespace MrpCli {

// A counter that every port of every application has, as a worker's
// counters message holds it ("dropped"."malformed"), as `mrp ctl counters`
// names it for a person, and as the Prometheus exposition names it (a
// family, and the value of its "reason" label where it has one).
struct PortCounterName {
  const char* key;
  const char* subkey;  // null for a counter directly under the port
  const char* text;
  const char* metric;
  const char* reason;  // null for a family without reasons
};

inline constexpr PortCounterName kPortCounterNames[] = {
    {"framesReceived", nullptr, "frames received", "mrp_frames_received_total", nullptr},
    {"framesSent", nullptr, "frames sent", "mrp_frames_transmitted_total", nullptr},
    {"dropped", "wrongDestination", "dropped: wrong destination", "mrp_frames_dropped_total", "wrong_destination"},
    {"dropped", "wrongEtherType", "dropped: wrong EtherType", "mrp_frames_dropped_total", "wrong_ethertype"},
    {"dropped", "badVersion", "dropped: bad protocol version", "mrp_frames_dropped_total", "bad_version"},
    {"dropped", "malformed", "dropped: malformed", "mrp_frames_dropped_total", "malformed"},
    {"dropped", "unknownType", "dropped: unknown attribute type", "mrp_frames_dropped_total", "unknown_attribute_type"},
    {"dropped", "unknownApplication", "dropped: unknown application", "mrp_frames_dropped_total",
     "unknown_application"},
    {"joinIndications", nullptr, "join indications", "mrp_join_indications_total", nullptr},
    {"leaveIndications", nullptr, "leave indications", "mrp_leave_indications_total", nullptr},
    {"leaveAllsReceived", nullptr, "LeaveAll received", "mrp_leaveall_received_total", nullptr},
    {"leaveAllsSent", nullptr, "LeaveAll sent", "mrp_leaveall_sent_total", nullptr},
};

}  // namespace MrpCli
