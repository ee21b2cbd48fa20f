#pragma once

#include <nlohmann/json.hpp>

#include <functional>

#include "Timeline.h"

namespace MrpCli {

// The timeline of an agent's worker process, passed on to the supervisor
// that writes the log: each event becomes one message
//   {"timeline": "indicated", "t": 1.25, "wallTime": 1795120768.125, "port": "eth1",
//    "attribute": {...}, "join": true}
// and relayTimelineMessage() tells it to the supervisor's own timeline.
// A worker's timeline has what an agent's has: requests, indications,
// forgotten registrations and port changes; the rest is a simulator's.
class RelayTimeline : public Timeline {
 public:
  using Send = std::function<void(const nlohmann::ordered_json& message)>;

  explicit RelayTimeline(Send send) : send_(std::move(send)) {}

  void requested(const TimelinePlace& place, const MrpAgent::AttributeValue& value, bool withdraw) override;
  void indicated(const TimelinePlace& place, const MrpAgent::AttributeValue& value, bool join) override;
  void forgot(const TimelinePlace& place, const MrpAgent::AttributeValue& value,
              MrpAgent::Bridge::ForgetCause cause) override;
  void portChanged(const TimelinePlace& place, const std::string& state) override;
  void transmitted(const TimelinePlace&, Mrp::MrpApplication, const std::vector<std::uint8_t>&,
                   const std::vector<std::uint8_t>&) override {}
  void injected(const TimelinePlace&, const std::vector<std::uint8_t>&) override {}
  void linkChanged(Quarn::Seconds, const std::string&, const std::string&, bool) override {}
  void roleChanged(const TimelinePlace&, Stp::MstiPortStatus::Role, Stp::MstiPortStatus::Role) override {}
  void registrations(const TimelinePlace&, const std::vector<MrpAgent::Registration>&) override {}

 private:
  Send send_;
};

// Tells `timeline` the event a RelayTimeline message carries, as happening
// to `bridge`; returns false for a message that carries none.
bool relayTimelineMessage(const nlohmann::ordered_json& message, const std::string& bridge, Timeline& timeline);

}  // namespace MrpCli
