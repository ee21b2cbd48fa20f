#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "AttributeValue.h"
#include "Bridge.h"
#include "ReservationChange.h"
#include "StreamTable.h"
#include "quarn/Types.h"
#include "stp/MstiPortStatus.h"

namespace MrpCli {

// Where and when something happened to a network of bridges: seconds from
// the start, a bridge and one of its ports ("" for the whole bridge).
struct TimelinePlace {
  Quarn::Seconds t = 0;
  std::string bridge;
  std::string port;
  // Seconds since the Unix epoch, for a log of real time (the agent's);
  // none on a simulated clock.
  std::optional<double> wallTime;
};

// Hears what happens to bridges, simulated or on real ports, in time order, and tells it
// to a person (TextTimeline) or a program (JsonTimeline).
class Timeline {
 public:
  virtual ~Timeline() = default;

  // An end station or a bridge declares or withdraws a value.
  virtual void requested(const TimelinePlace& place, const MrpAgent::AttributeValue& value, bool withdraw) = 0;
  // An engine's join or leave indication.
  virtual void indicated(const TimelinePlace& place, const MrpAgent::AttributeValue& value, bool join) = 0;
  // A registration that went without a leave indication: its port closed
  // or stopped forwarding.
  virtual void forgot(const TimelinePlace& place, const MrpAgent::AttributeValue& value,
                      MrpAgent::Bridge::ForgetCause cause) = 0;
  // A frame a port put on its wire, and the attribute types it carries a
  // LeaveAll for.
  virtual void transmitted(const TimelinePlace& place, Mrp::MrpApplication application,
                           const std::vector<std::uint8_t>& frame, const std::vector<std::uint8_t>& leaveAllTypes) = 0;
  // A frame arrives at a port from outside the network.
  virtual void injected(const TimelinePlace& place, const std::vector<std::uint8_t>& frame) = 0;
  virtual void linkChanged(Quarn::Seconds t, const std::string& a, const std::string& b, bool up) = 0;
  virtual void roleChanged(const TimelinePlace& place, Stp::MstiPortStatus::Role from,
                           Stp::MstiPortStatus::Role to) = 0;
  // A bridge's port came up, went down or disappeared ("up", "down",
  // "absent"): what the agent sees of its Linux ports.
  virtual void portChanged(const TimelinePlace& place, const std::string& state) = 0;
  // A stream reserved or released on a bridge's port.
  virtual void reservationChanged(const TimelinePlace& place, const MrpAgent::ReservationChange& change) = 0;
  // A bridge refuses a stream on a port: it declares this Talker Failed there.
  virtual void talkerFailed(const TimelinePlace& place, const Mrp::MsrpTalkerFailedAttribute& declared) = 0;
  // A Listener registered on a bridge's port changed its declaration
  // (AskingFailed, Ready, ReadyFailed) without leaving.
  virtual void listenerDeclared(const TimelinePlace& place, const Mrp::MsrpListenerAttribute& listener) = 0;
  // What a bridge holds at the end of the run.
  virtual void registrations(const TimelinePlace& place, const std::vector<MrpAgent::Registration>& held) = 0;
  // An MSRP bridge's streams and reservations at the end of the run, after
  // its registrations; not told of a bridge that has no stream.
  virtual void streams(const TimelinePlace& place, const MrpAgent::StreamTable& table) = 0;
  // Writes out what is held back: lines grouped with the ones of the same
  // time and port that may still come. Called when nothing more of that
  // time can come (the end of a dispatch, the end of a run).
  virtual void flush() {}
};

}  // namespace MrpCli
