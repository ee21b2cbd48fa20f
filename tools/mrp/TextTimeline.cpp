#include "TextTimeline.h"

#include <algorithm>
#include <cstdio>
#include <ostream>
#include <sstream>

#include "Applications.h"
#include "RegistrationText.h"
#include "ValueText.h"

namespace MrpCli {

namespace {

constexpr std::size_t kTimeWidth = 10;
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

std::string timeText(Quarn::Seconds t) {
  char text[32];
  std::snprintf(text, sizeof text, "%*.3f", static_cast<int>(kTimeWidth), t);
  return text;
}

}  // namespace

TextTimeline::TextTimeline(std::ostream& out, const std::vector<std::string>& bridges,
                           const std::vector<std::string>& ports)
    : out_(out), bridgeWidth_(widest(bridges, std::string("bridge").size())), portWidth_(widest(ports, 4)) {}

void TextTimeline::headingOnce() {
  if (headed_) return;
  headed_ = true;
  const std::string time = "time";
  out_ << std::string(kTimeWidth - time.size(), ' ') << time << kGap << padded("bridge", bridgeWidth_) << kGap
       << padded("port", portWidth_) << kGap << padded("app", kAppWidth) << kGap << "event\n";
}

void TextTimeline::row(Quarn::Seconds t, const std::string& bridge, const std::string& port, const std::string& app,
                       const std::string& event) {
  headingOnce();
  out_ << timeText(t) << kGap << padded(bridge, bridgeWidth_) << kGap << padded(port, portWidth_) << kGap
       << padded(app, kAppWidth) << kGap << event << '\n';
}

void TextTimeline::requested(const TimelinePlace& place, const MrpAgent::AttributeValue& value, bool withdraw) {
  row(place.t, place.bridge, place.port.empty() ? kEveryPort : place.port, applicationName(value.application()),
      (withdraw ? "withdraw " : "declare ") + valueText(value));
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
  row(place.t, place.bridge, place.port, applicationName(value.application()),
      (join ? "join " : "leave ") + valueText(value));
}

void TextTimeline::transmitted(const TimelinePlace& place, Mrp::MrpApplication application,
                               const std::vector<std::uint8_t>&, const std::vector<std::uint8_t>& leaveAllTypes) {
  if (leaveAllTypes.empty()) return;
  std::string types;
  for (std::uint8_t type : leaveAllTypes) types += (types.empty() ? "" : ", ") + attributeTypeText(application, type);
  row(place.t, place.bridge, place.port, applicationName(application), "LeaveAll sent (" + types + ")");
}

void TextTimeline::injected(const TimelinePlace& place, const std::vector<std::uint8_t>& frame) {
  row(place.t, place.bridge, place.port, "", "frame arrives (" + std::to_string(frame.size()) + " octets)");
}

void TextTimeline::linkChanged(Quarn::Seconds t, const std::string& a, const std::string& b, bool up) {
  row(t, "", "", "", "link " + a + " - " + b + (up ? " up" : " down"));
}

void TextTimeline::roleChanged(const TimelinePlace& place, Stp::MstiPortStatus::Role from,
                               Stp::MstiPortStatus::Role to) {
  row(place.t, place.bridge, place.port, "", "role " + roleText(from) + " -> " + roleText(to));
}

void TextTimeline::registrations(const TimelinePlace& place, const std::vector<MrpAgent::Registration>& held) {
  if (!tablesStarted_) {
    tablesStarted_ = true;
    char at[32];
    std::snprintf(at, sizeof at, "%.3f", place.t);
    out_ << "\nRegistrations at " << at << " s\n";
  }
  out_ << '\n' << place.bridge << '\n' << registrationTable(held, "  ");
}

void TextTimeline::portChanged(const TimelinePlace& place, const std::string& state) {
  row(place.t, place.bridge, place.port, "", "port " + state);
}

}  // namespace MrpCli
