#pragma once

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "report/Timeline.h"

namespace MrpCli {

struct TextTimelineOptions {
  // The time column shows the wall clock of each row's place (the agent's
  // log); otherwise seconds, as a simulation counts them.
  bool wallClock = false;
  // No "LeaveAll sent" rows: a long run is mostly those.
  bool hideLeaveAll = false;
};

// The timeline for a person: one line per event in aligned columns (time in
// seconds with milliseconds, or the wall clock, bridge, port, application,
// what happened in words), then each bridge's registrations as a table.
//
//       time  bridge  port  app   event
//      1.000  h1      e0    mvrp  declare VLANs 10-12, 20
//      1.100  sw1     p1    mvrp  join VLANs 10-12, 20
//      2.100  sw2     p2    msrp  listener 00:1b:21:00:00:01:00:01 ready
//     12.400  sw1     p2    mvrp  LeaveAll sent (VLAN)
//     40.000                      link sw2:p2 - sw3:p1 down
//
// A reservation reads "reserved stream <id> class A 9.088 Mb/s (port class
// A 18.176 Mb/s of 750 Mb/s)": the stream's bandwidth, then what the port
// reserves for the class and the classes before it, against their limit.
// A refusal: "Talker Failed <id>: insufficient bandwidth (code 1), bridge
// 80:00:02:00:00:00:00:02".
//
// VLANs that one port declares, withdraws, joins, leaves or forgets at one
// time share a line: such a row is held back until a row that does not
// belong with it comes, or flush().
//
// Transmitted frames show only when they carry a LeaveAll. A join of what a
// port has registered already, with the same value, is not shown again:
// the engine indicates every received Domain join and each of a New's two
// messages; the JSON timeline shows every indication.
//
// The run ends with each MSRP bridge's streams and reservations
// (streamTableText) after its registrations.
class TextTimeline : public Timeline {
 public:
  // The columns fit the longest of the bridge and port names.
  TextTimeline(std::ostream& out, const std::vector<std::string>& bridges, const std::vector<std::string>& ports,
               TextTimelineOptions options = {});

  // Each event line as it is written, in its parts: where and when, the
  // application ("" for a link or a port), what happened in words. The HTML
  // report shows these words beside its marks.
  using LineSink = std::function<void(const TimelinePlace& place, const std::string& app, const std::string& event)>;
  void lineSinkIs(LineSink sink) { lineSink_ = std::move(sink); }
  // Whether the port has registered this value already: a join of it gets no line.
  bool registered(const TimelinePlace& place, const MrpAgent::AttributeValue& value) const;

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
  void flush() override;

 private:
  // VLANs waiting for the rest of their line: "<verb> VLANs <set><cause>".
  struct HeldVlans {
    TimelinePlace place;
    std::string app;
    std::string verb;
    std::string cause;
    std::set<std::uint16_t> vlans;
  };

  // "join", "leave (port closed)" ... of one value: VLANs are held, other values written.
  void valueRow(const TimelinePlace& place, const MrpAgent::AttributeValue& value, const std::string& verb,
                const std::string& cause);
  void row(const TimelinePlace& place, const std::string& app, const std::string& event);
  void line(const TimelinePlace& place, const std::string& app, const std::string& event);
  void headingOnce();
  // "Registrations at 90.000 s", once, before the first table of the run's end.
  void tablesOnce(const TimelinePlace& place);
  std::string timeText(const TimelinePlace& place) const;

  // What each bridge's port has registered, by application, type and key.
  using Registered = std::tuple<std::string, std::string, Mrp::MrpApplication, std::uint8_t, std::uint64_t>;
  std::map<Registered, MrpAgent::AttributeValue> registered_;
  std::optional<HeldVlans> held_;

  std::ostream& out_;
  LineSink lineSink_;
  TextTimelineOptions options_;
  std::size_t timeWidth_;
  std::size_t bridgeWidth_;
  std::size_t portWidth_;
  bool headed_ = false;
  bool tablesStarted_ = false;
};

}  // namespace MrpCli
