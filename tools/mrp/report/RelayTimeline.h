#pragma once

#include <nlohmann/json.hpp>

#include <functional>

#include "report/Timeline.h"

namespace MrpCli {

// The timeline of an agent's worker process, passed on to the supervisor
// that writes the log: each event becomes one message
//   {"timeline": "indicated", "t": 1.25, "wallTime": 1795120768.125, "port": "eth1",
//    "attribute": {...}, "join": true}
//   {"timeline": "reservationChanged", "t": 2.5, "port": "eth1",
//    "reservation": {"streamId": 7636108254969857, "reserved": true, "class": "A", "bandwidth": 9088000,
//                    "total": 9088000, "limit": 750000000}}
// and relayTimelineMessage() tells it to the supervisor's own timeline.
// A worker's timeline has what an agent's has: requests, indications,
// forgotten registrations, port changes, reservations, Talker Failed
// declarations and Listener declarations; the rest (frames, links, roles,
// the tables of a run's end) is a simulator's.
class RelayTimeline : public Timeline {
 public:
  using Send = std::function<void(const nlohmann::ordered_json& message)>;

  explicit RelayTimeline(Send send) : send_(std::move(send)) {}

  void requested(const TimelinePlace& place, const MrpAgent::AttributeValue& value, bool withdraw) override;
  void indicated(const TimelinePlace& place, const MrpAgent::AttributeValue& value, bool join) override;
  void forgot(const TimelinePlace& place, const MrpAgent::AttributeValue& value,
              MrpAgent::Bridge::ForgetCause cause) override;
  void portChanged(const TimelinePlace& place, const std::string& state) override;
  void reservationChanged(const TimelinePlace& place, const MrpAgent::ReservationChange& change) override;
  void talkerFailed(const TimelinePlace& place, const Mrp::MsrpTalkerFailedAttribute& declared) override;
  void listenerDeclared(const TimelinePlace& place, const Mrp::MsrpListenerAttribute& listener) override;
  void transmitted(const TimelinePlace&, Mrp::MrpApplication, const std::vector<std::uint8_t>&,
                   const std::vector<std::uint8_t>&) override {}
  void injected(const TimelinePlace&, const std::vector<std::uint8_t>&) override {}
  void linkChanged(Quarn::Seconds, const std::string&, const std::string&, bool) override {}
  void roleChanged(const TimelinePlace&, Stp::MstiPortStatus::Role, Stp::MstiPortStatus::Role) override {}
  void registrations(const TimelinePlace&, const std::vector<MrpAgent::Registration>&) override {}
  void streams(const TimelinePlace&, const MrpAgent::StreamTable&) override {}

 private:
  Send send_;
};

// Tells `timeline` the event a RelayTimeline message carries, as happening
// to `bridge`; returns false for a message that carries none.
bool relayTimelineMessage(const nlohmann::ordered_json& message, const std::string& bridge, Timeline& timeline);

}  // namespace MrpCli
