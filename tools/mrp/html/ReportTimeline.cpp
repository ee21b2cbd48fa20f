#include "html/ReportTimeline.h"

#include <algorithm>
#include <variant>

#include "Overloaded.h"
#include "common/Applications.h"
#include "report/RegistrationText.h"
#include "report/StreamTableJson.h"
#include "report/StreamTableText.h"
#include "report/ValueText.h"

namespace MrpCli {

namespace {

// The port of a bridge's own declaration, made on every port.
const std::string kEveryPort = "*";

struct LaneName {
  std::string kind;
  std::uint64_t key;
  std::string label;
};

LaneName laneName(const MrpAgent::AttributeValue& value) {
  return std::visit(
      MrpAgent::Overloaded{
          [](const Mrp::MvrpVlanAttribute& v) {
            return LaneName{"vlan", v.vlanId(), "VLAN " + std::to_string(v.vlanId())};
          },
          [](const Mrp::MsrpTalkerAdvertiseAttribute& v) {
            return LaneName{"talker", v.streamId(), "talker " + streamIdText(v.streamId())};
          },
          [](const Mrp::MsrpTalkerFailedAttribute& v) {
            const std::uint64_t id = v.talkerAdvertiseAttribute().streamId();
            return LaneName{"talkerFailed", id, "talker failed " + streamIdText(id)};
          },
          [](const Mrp::MsrpListenerAttribute& v) {
            return LaneName{"listener", v.streamId(), "listener " + streamIdText(v.streamId())};
          },
          [&value](const Mrp::MsrpDomainAttribute& v) {
            return LaneName{"domain", v.srClassId(), valueText(value)};
          }},
      value.record());
}

std::string listenerState(const Mrp::MsrpListenerAttribute& listener) {
  return listener.listenerEvent() == Mrp::MsrpListenerEvent::askingFailed ? "TF" : "IN";
}

// A Talker Failed or a Listener that asks in vain: registered, but the stream cannot flow.
std::string registeredState(const MrpAgent::AttributeValue& value) {
  if (std::holds_alternative<Mrp::MsrpTalkerFailedAttribute>(value.record())) return "TF";
  const auto* listener = std::get_if<Mrp::MsrpListenerAttribute>(&value.record());
  return listener ? listenerState(*listener) : "IN";
}

bool isVlan(const MrpAgent::AttributeValue& value) {
  return std::holds_alternative<Mrp::MvrpVlanAttribute>(value.record());
}

std::optional<std::size_t> openStretch(const ReportData::Lane& lane) {
  if (lane.segments.empty() || lane.segments.back().to) return std::nullopt;
  return lane.segments.size() - 1;
}

}  // namespace

ReportTimeline::ReportTimeline(const Scenario& scenario, std::string title, double until)
    : leaveTime_(scenario.config.leaveTime), text_(discarded_, {}, {}) {
  data_.title = std::move(title);
  data_.until = until;
  for (const Scenario::Bridge& bridge : scenario.bridges) {
    data_.nodes.push_back({bridge.name, bridge.ports, bridge.ports.size() == 1});
    for (const std::string& name : bridge.ports) port(bridge.name, name);
  }
  for (const Scenario::Link& link : scenario.links) data_.links.push_back({link.a.text(), link.b.text(), {}});
  text_.lineSinkIs([this](const TimelinePlace& place, const std::string& app, const std::string& event) {
    lineWritten(place, app, event);
  });
}

// Marks are made before the text timeline hears of their event, so that its line finds them.
void ReportTimeline::lineWritten(const TimelinePlace& place, const std::string& app, const std::string& event) {
  const std::size_t index = data_.lines.size();
  data_.lines.push_back({place.t, place.bridge, place.port, app, event});
  // A held-back line is written before the line of the event at hand.
  std::vector<MarkRef>& owners = heldBack_.empty() ? current_ : heldBack_;
  for (const auto& [marks, at] : owners) (*marks)[at].line = index;
  owners.clear();
}

void ReportTimeline::eventDone(bool lineHeldBack) {
  if (lineHeldBack) heldBack_.insert(heldBack_.end(), current_.begin(), current_.end());
  current_.clear();
}

void ReportTimeline::mark(std::vector<ReportData::Mark>& marks, double t, const std::string& kind) {
  marks.push_back({t, kind, std::nullopt, 1});
  current_.emplace_back(&marks, marks.size() - 1);
}

ReportData::Port& ReportTimeline::port(const std::string& bridge, const std::string& port) {
  return data_.ports[{bridge, port}];
}

ReportData::Track& ReportTimeline::track(const TimelinePlace& place, Mrp::MrpApplication application) {
  return port(place.bridge, place.port.empty() ? kEveryPort : place.port).tracks[applicationName(application)];
}

ReportData::Lane& ReportTimeline::lane(const TimelinePlace& place, const MrpAgent::AttributeValue& value) {
  LaneName name = laneName(value);
  ReportData::Lane& found = track(place, value.application()).lanes[{name.kind, name.key}];
  if (found.label.empty()) found = ReportData::Lane{name.kind, name.key, std::move(name.label), {}, {}};
  return found;
}

ReportData::Lane& ReportTimeline::streamLane(const TimelinePlace& place, const std::string& kind,
                                             std::uint64_t streamId) {
  ReportData::Lane& found = track(place, Mrp::MrpApplication::msrp).lanes[{kind, streamId}];
  if (found.label.empty()) found = ReportData::Lane{kind, streamId, kind + " " + streamIdText(streamId), {}, {}};
  return found;
}

void ReportTimeline::endStretch(ReportData::Lane& lane, double t) {
  if (const auto open = openStretch(lane)) lane.segments[*open].to = t;
}

void ReportTimeline::requested(const TimelinePlace& place, const MrpAgent::AttributeValue& value, bool withdraw) {
  mark(lane(place, value).marks, place.t, withdraw ? "withdraw" : "declare");
  text_.requested(place, value, withdraw);
  eventDone(isVlan(value));
}

void ReportTimeline::indicated(const TimelinePlace& place, const MrpAgent::AttributeValue& value, bool join) {
  // A join of what is registered already only refreshes it: no line, no mark.
  const bool refresh = join && text_.registered(place, value);
  if (refresh) {
    text_.indicated(place, value, join);
    return;
  }
  ReportData::Lane& found = lane(place, value);
  const auto open = openStretch(found);
  if (join) {
    endStretch(found, place.t);
    found.segments.push_back({place.t, std::nullopt, registeredState(value)});
  } else if (open) {
    ReportData::Segment& registered = found.segments[*open];
    const double leaving = std::max(registered.from, place.t - leaveTime_);
    registered.to = leaving;
    found.segments.push_back({leaving, place.t, "LV"});
  }
  mark(found.marks, place.t, join ? "join" : "leave");
  text_.indicated(place, value, join);
  eventDone(isVlan(value));
}

void ReportTimeline::forgot(const TimelinePlace& place, const MrpAgent::AttributeValue& value,
                            MrpAgent::Bridge::ForgetCause cause) {
  ReportData::Lane& found = lane(place, value);
  endStretch(found, place.t);
  mark(found.marks, place.t, "forget");
  text_.forgot(place, value, cause);
  eventDone(isVlan(value));
}

void ReportTimeline::transmitted(const TimelinePlace& place, Mrp::MrpApplication application,
                                 const std::vector<std::uint8_t>& frame,
                                 const std::vector<std::uint8_t>& leaveAllTypes) {
  if (!leaveAllTypes.empty()) {
    mark(track(place, application).marks, place.t, "leaveAllSent");
    const std::string peer = peerOf(place.bridge + ":" + place.port);
    if (!peer.empty()) {
      const std::size_t colon = peer.find(':');
      leaveAllReceived(peer.substr(0, colon), peer.substr(colon + 1), application, place.t);
    }
  }
  text_.transmitted(place, application, frame, leaveAllTypes);
  eventDone(false);
}

void ReportTimeline::injected(const TimelinePlace& place, const std::vector<std::uint8_t>& frame) {
  const DecodedFrame decoded = decoder_.describeFrame(++injected_, frame);
  if (!decoded.skipped && !decoded.leaveAllTypes.empty()) {
    leaveAllReceived(place.bridge, place.port, decoded.application, place.t);
  }
  text_.injected(place, frame);
  eventDone(false);
}

void ReportTimeline::leaveAllReceived(const std::string& bridge, const std::string& portName,
                                      Mrp::MrpApplication application, double t) {
  mark(port(bridge, portName).tracks[applicationName(application)].marks, t, "leaveAllReceived");
}

std::string ReportTimeline::peerOf(const std::string& end) const {
  for (const ReportData::Link& link : data_.links) {
    const bool cut = !link.cuts.empty() && !link.cuts.back().to;
    if (cut) continue;
    if (link.a == end) return link.b;
    if (link.b == end) return link.a;
  }
  return "";
}

void ReportTimeline::linkChanged(Quarn::Seconds t, const std::string& a, const std::string& b, bool up) {
  for (ReportData::Link& link : data_.links) {
    if (!((link.a == a && link.b == b) || (link.a == b && link.b == a))) continue;
    if (!up) {
      link.cuts.push_back({t, std::nullopt, "cut"});
    } else if (!link.cuts.empty() && !link.cuts.back().to) {
      link.cuts.back().to = t;
    }
  }
  for (const std::string& end : {a, b}) {
    const std::size_t colon = end.find(':');
    mark(port(end.substr(0, colon), end.substr(colon + 1)).marks, t, up ? "linkUp" : "linkDown");
  }
  text_.linkChanged(t, a, b, up);
  eventDone(false);
}

void ReportTimeline::roleChanged(const TimelinePlace& place, Stp::MstiPortStatus::Role from,
                                 Stp::MstiPortStatus::Role to) {
  ReportData::Port& changed = port(place.bridge, place.port);
  changed.role = roleText(to);
  mark(changed.marks, place.t, "role");
  text_.roleChanged(place, from, to);
  eventDone(false);
}

void ReportTimeline::portChanged(const TimelinePlace& place, const std::string& state) {
  mark(port(place.bridge, place.port).marks, place.t, "port");
  text_.portChanged(place, state);
  eventDone(false);
}

void ReportTimeline::reservationChanged(const TimelinePlace& place, const MrpAgent::ReservationChange& change) {
  mark(streamLane(place, "listener", change.streamId).marks, place.t, change.reserved ? "reserved" : "released");
  text_.reservationChanged(place, change);
  eventDone(false);
}

void ReportTimeline::talkerFailed(const TimelinePlace& place, const Mrp::MsrpTalkerFailedAttribute& declared) {
  mark(streamLane(place, "talker", declared.talkerAdvertiseAttribute().streamId()).marks, place.t, "talkerFailed");
  text_.talkerFailed(place, declared);
  eventDone(false);
}

// The registered Listener's declaration changed: its stretch goes on in the new state.
void ReportTimeline::listenerDeclared(const TimelinePlace& place, const Mrp::MsrpListenerAttribute& listener) {
  ReportData::Lane& found = streamLane(place, "listener", listener.streamId());
  const std::string state = listenerState(listener);
  if (const auto open = openStretch(found); open && found.segments[*open].state != state) {
    if (found.segments[*open].from == place.t) {
      found.segments[*open].state = state;
    } else {
      endStretch(found, place.t);
      found.segments.push_back({place.t, std::nullopt, state});
    }
  }
  mark(found.marks, place.t, "listener");
  text_.listenerDeclared(place, listener);
  eventDone(false);
}

void ReportTimeline::registrations(const TimelinePlace& place, const std::vector<MrpAgent::Registration>& held) {
  data_.tables.push_back({place.bridge, registrationTable(held, "  "), ""});
  text_.registrations(place, held);
  eventDone(false);
}

void ReportTimeline::streams(const TimelinePlace& place, const MrpAgent::StreamTable& table) {
  const std::string text = streamTableText(place.bridge, streamTableJson(table));
  auto tables = std::find_if(data_.tables.begin(), data_.tables.end(),
                             [&place](const ReportData::Tables& t) { return t.bridge == place.bridge; });
  if (tables == data_.tables.end()) {
    data_.tables.push_back({place.bridge, "", text});
  } else {
    tables->streams = text;
  }
  text_.streams(place, table);
  eventDone(false);
}

void ReportTimeline::flush() {
  text_.flush();
  heldBack_.clear();
}

}  // namespace MrpCli
