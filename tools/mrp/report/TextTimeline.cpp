#include "report/TextTimeline.h"

#include <algorithm>
#include <cstdio>
#include <ostream>
#include <variant>

#include "BridgeId.h"
#include "TalkerAdmission.h"
#include "common/Applications.h"
#include "common/WallTime.h"
#include "report/BitRateText.h"
#include "report/RegistrationText.h"
#include "report/StreamTableJson.h"
#include "report/StreamTableText.h"
#include "report/ValueText.h"
#include "report/VlanSetText.h"

namespace MrpCli {

namespace {

constexpr std::size_t kSecondsWidth = 10;
constexpr std::size_t kAppWidth = 4;
const std::string kGap = "  ";
// The port column of a bridge's own declaration, made on every port.
const std::string kEveryPort = "*";

std::size_t widest(const std::vector<std::string>& names, std::size_t atLeast) {
  std::size_t width = atLeast;
  for (const std::string& name : names) width = std::max(width, name.size());
  return width;
}

std::string padded(const std::string& text, std::size_t width) {
  return text.size() >= width ? text : text + std::string(width - text.size(), ' ');
}

std::string rightAligned(const std::string& text, std::size_t width) {
  return text.size() >= width ? text : std::string(width - text.size(), ' ') + text;
}

std::string secondsText(Quarn::Seconds t) {
  char text[32];
  std::snprintf(text, sizeof text, "%.3f", t);
  return text;
}

// Rows of one line: the same moment, bridge and port.
bool sameMoment(const TimelinePlace& a, const TimelinePlace& b) {
  return a.t == b.t && a.wallTime == b.wallTime && a.bridge == b.bridge && a.port == b.port;
}

// "class A", or "class A+B" for class B, whose limit counts class A's streams too.
std::string cumulativeClassText(const MrpAgent::SrClass& srClass) {
  std::string text = "class ";
  for (std::size_t i = 0; i <= MrpAgent::srClassIndex(srClass) && i < std::size(MrpAgent::kSrClasses); ++i) {
    if (i > 0) text.push_back('+');
    text.push_back(MrpAgent::kSrClasses[i].name);
  }
  return text;
}

}  // namespace

TextTimeline::TextTimeline(std::ostream& out, const std::vector<std::string>& bridges,
                           const std::vector<std::string>& ports, TextTimelineOptions options)
    : out_(out),
      options_(options),
      // Every wall-clock text is as long as the epoch's.
      timeWidth_(options.wallClock ? wallTimeText(0).size() : kSecondsWidth),
      bridgeWidth_(widest(bridges, std::string("bridge").size())),
      portWidth_(widest(ports, 4)) {}

void TextTimeline::headingOnce() {
  if (headed_) return;
  headed_ = true;
  out_ << rightAligned("time", timeWidth_) << kGap << padded("bridge", bridgeWidth_) << kGap
       << padded("port", portWidth_) << kGap << padded("app", kAppWidth) << kGap << "event\n";
}

std::string TextTimeline::timeText(const TimelinePlace& place) const {
  return rightAligned(place.wallTime ? wallTimeText(*place.wallTime) : secondsText(place.t), timeWidth_);
}

void TextTimeline::line(const TimelinePlace& place, const std::string& app, const std::string& event) {
  headingOnce();
  out_ << timeText(place) << kGap << padded(place.bridge, bridgeWidth_) << kGap << padded(place.port, portWidth_)
       << kGap << padded(app, kAppWidth) << kGap << event << '\n';
  if (lineSink_) lineSink_(place, app, event);
}

void TextTimeline::row(const TimelinePlace& place, const std::string& app, const std::string& event) {
  flush();
  line(place, app, event);
}

void TextTimeline::flush() {
  if (!held_) return;
  const std::vector<std::uint16_t> vlans(held_->vlans.begin(), held_->vlans.end());
  line(held_->place, held_->app,
       held_->verb + (vlans.size() == 1 ? " VLAN " : " VLANs ") + vlanSetText(vlans) + held_->cause);
  held_.reset();
}

void TextTimeline::valueRow(const TimelinePlace& place, const MrpAgent::AttributeValue& value, const std::string& verb,
                            const std::string& cause) {
  const std::string app = applicationName(value.application());
  const auto* vlan = std::get_if<Mrp::MvrpVlanAttribute>(&value.record());
  if (!vlan) {
    row(place, app, verb + " " + valueText(value) + cause);
    return;
  }
  if (!held_ || !sameMoment(held_->place, place) || held_->app != app || held_->verb != verb || held_->cause != cause) {
    flush();
    held_ = HeldVlans{place, app, verb, cause, {}};
  }
  held_->vlans.insert(vlan->vlanId());
}

void TextTimeline::requested(const TimelinePlace& place, const MrpAgent::AttributeValue& value, bool withdraw) {
  TimelinePlace shown = place;
  if (shown.port.empty()) shown.port = kEveryPort;
  valueRow(shown, value, withdraw ? "withdraw" : "declare", "");
}

bool TextTimeline::registered(const TimelinePlace& place, const MrpAgent::AttributeValue& value) const {
  const auto it = registered_.find(
      Registered{place.bridge, place.port, value.application(), value.attributeType(), value.attributeKey()});
  return it != registered_.end() && it->second == value;
}

void TextTimeline::indicated(const TimelinePlace& place, const MrpAgent::AttributeValue& value, bool join) {
  const Registered key{place.bridge, place.port, value.application(), value.attributeType(), value.attributeKey()};
  if (join) {
    auto [it, inserted] = registered_.try_emplace(key, value);
    if (!inserted && it->second == value) return;
    it->second = value;
  } else {
    registered_.erase(key);
  }
  valueRow(place, value, join ? "join" : "leave", "");
}

void TextTimeline::forgot(const TimelinePlace& place, const MrpAgent::AttributeValue& value,
                          MrpAgent::Bridge::ForgetCause cause) {
  registered_.erase({place.bridge, place.port, value.application(), value.attributeType(), value.attributeKey()});
  valueRow(place, value, "leave", std::string(" (") + forgetCauseName(cause) + ")");
}

void TextTimeline::transmitted(const TimelinePlace& place, Mrp::MrpApplication application,
                               const std::vector<std::uint8_t>&, const std::vector<std::uint8_t>& leaveAllTypes) {
  if (leaveAllTypes.empty() || options_.hideLeaveAll) return;
  std::string types;
  for (std::uint8_t type : leaveAllTypes) types += (types.empty() ? "" : ", ") + attributeTypeText(application, type);
  row(place, applicationName(application), "LeaveAll sent (" + types + ")");
}

void TextTimeline::injected(const TimelinePlace& place, const std::vector<std::uint8_t>& frame) {
  row(place, "", "frame arrives (" + std::to_string(frame.size()) + " octets)");
}

void TextTimeline::linkChanged(Quarn::Seconds t, const std::string& a, const std::string& b, bool up) {
  row(TimelinePlace{t, "", "", std::nullopt}, "", "link " + a + " - " + b + (up ? " up" : " down"));
}

void TextTimeline::roleChanged(const TimelinePlace& place, Stp::MstiPortStatus::Role from,
                               Stp::MstiPortStatus::Role to) {
  row(place, "", "role " + roleText(from) + " -> " + roleText(to));
}

void TextTimeline::tablesOnce(const TimelinePlace& place) {
  flush();
  if (tablesStarted_) return;
  tablesStarted_ = true;
  out_ << "\nRegistrations at " << secondsText(place.t) << " s\n";
}

void TextTimeline::registrations(const TimelinePlace& place, const std::vector<MrpAgent::Registration>& held) {
  tablesOnce(place);
  out_ << '\n' << place.bridge << '\n' << registrationTable(held, "  ");
}

void TextTimeline::streams(const TimelinePlace& place, const MrpAgent::StreamTable& table) {
  tablesOnce(place);
  out_ << '\n' << streamTableText(place.bridge, streamTableJson(table));
}

void TextTimeline::portChanged(const TimelinePlace& place, const std::string& state) {
  row(place, "", "port " + state);
}

void TextTimeline::reservationChanged(const TimelinePlace& place, const MrpAgent::ReservationChange& change) {
  std::string event = change.reserved ? "reserved stream " : "released stream ";
  event.append(streamIdText(change.streamId))
      .append(" class ")
      .append(1, change.srClass.name)
      .append(" ")
      .append(bitRateText(change.bandwidth))
      .append(" (port ")
      .append(cumulativeClassText(change.srClass))
      .append(" ")
      .append(bitRateText(change.total))
      .append(" of ")
      .append(bitRateText(change.limit))
      .append(")");
  row(place, "msrp", event);
}

void TextTimeline::talkerFailed(const TimelinePlace& place, const Mrp::MsrpTalkerFailedAttribute& declared) {
  const Mrp::FailureInformation& failure = declared.failureInformation();
  std::string event = "Talker Failed ";
  event.append(streamIdText(declared.talkerAdvertiseAttribute().streamId()))
      .append(": ")
      .append(failureText(MrpAgent::failureCodeText(failure.failureCode()), failure.failureCode(),
                          MrpAgent::bridgeIdText(failure.bridgeId())));
  row(place, "msrp", event);
}

void TextTimeline::listenerDeclared(const TimelinePlace& place, const Mrp::MsrpListenerAttribute& listener) {
  const MrpAgent::AttributeValue value(listener);
  // What the port has registered now, so that a join of it is not shown again.
  registered_.insert_or_assign(
      Registered{place.bridge, place.port, value.application(), value.attributeType(), value.attributeKey()}, value);
  row(place, "msrp", valueText(value));
}

}  // namespace MrpCli
