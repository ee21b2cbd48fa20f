#include "JsonTimeline.h"

#include <cmath>
#include <ostream>
#include <sstream>

#include "Applications.h"
#include "Hex.h"
#include "JsonLine.h"

namespace MrpCli {

namespace {

using Json = nlohmann::ordered_json;

constexpr double kMicrosPerSecond = 1e6;

double rounded(Quarn::Seconds t) { return std::round(t * kMicrosPerSecond) / kMicrosPerSecond; }

Json placed(const TimelinePlace& place) {
  Json line = {{"t", rounded(place.t)}, {"bridge", place.bridge}};
  if (!place.port.empty()) line["port"] = place.port;
  return line;
}

std::string hexOf(const std::vector<std::uint8_t>& octets) { return hexEncode(octets.data(), octets.size()); }

// The type, key and FirstValue of a value, and a Listener's declaration.
void describe(Json& line, const MrpAgent::AttributeValue& value) {
  line["type"] = unsigned{value.attributeType()};
  line["key"] = value.attributeKey();
  line["value"] = hexOf(value.firstValue());
  if (const auto declaration = value.declaration()) {
    std::ostringstream text;
    text << *declaration;
    line["declaration"] = text.str();
  }
}

template <class State>
std::string stateText(State state) {
  std::ostringstream text;
  text << state;
  return text.str();
}

}  // namespace

void JsonTimeline::requested(const TimelinePlace& place, const MrpAgent::AttributeValue& value, bool withdraw) {
  Json line = placed(place);
  line["app"] = applicationName(value.application());
  line["request"] = withdraw ? "withdraw" : "declare";
  describe(line, value);
  out_ << jsonLine(line) << '\n';
}

void JsonTimeline::indicated(const TimelinePlace& place, const MrpAgent::AttributeValue& value, bool join) {
  Json line = placed(place);
  line["app"] = applicationName(value.application());
  line["indication"] = join ? "join" : "leave";
  describe(line, value);
  out_ << jsonLine(line) << '\n';
}

void JsonTimeline::transmitted(const TimelinePlace& place, Mrp::MrpApplication application,
                               const std::vector<std::uint8_t>& frame, const std::vector<std::uint8_t>& leaveAllTypes) {
  Json line = placed(place);
  line["app"] = applicationName(application);
  line["tx"] = hexOf(frame);
  if (!leaveAllTypes.empty()) line["leaveAll"] = leaveAllTypes;
  out_ << jsonLine(line) << '\n';
}

void JsonTimeline::injected(const TimelinePlace& place, const std::vector<std::uint8_t>& frame) {
  Json line = placed(place);
  line["inject"] = hexOf(frame);
  out_ << jsonLine(line) << '\n';
}

void JsonTimeline::linkChanged(Quarn::Seconds t, const std::string& a, const std::string& b, bool up) {
  out_ << jsonLine({{"t", rounded(t)}, {"link", Json::array({a, b})}, {"up", up}}) << '\n';
}

void JsonTimeline::roleChanged(const TimelinePlace& place, Stp::MstiPortStatus::Role from,
                               Stp::MstiPortStatus::Role to) {
  Json line = placed(place);
  line["role"] = static_cast<unsigned>(to);
  line["previousRole"] = static_cast<unsigned>(from);
  out_ << jsonLine(line) << '\n';
}

void JsonTimeline::registrations(const TimelinePlace& place, const std::vector<MrpAgent::Registration>& held) {
  Json entries = Json::array();
  for (const MrpAgent::Registration& registration : held) {
    Json entry = {{"port", registration.port}, {"app", applicationName(registration.application)}};
    describe(entry, registration.value);
    entry["registrar"] = stateText(registration.registrar);
    entry["applicant"] = stateText(registration.applicant);
    entries.push_back(std::move(entry));
  }
  Json line = placed(place);
  line["registrations"] = std::move(entries);
  out_ << jsonLine(line) << '\n';
}

}  // namespace MrpCli
