#include "JsonTimeline.h"

#include <cmath>
#include <ostream>

#include "Applications.h"
#include "Hex.h"
#include "JsonLine.h"
#include "RegistrationText.h"
#include "ValueText.h"
#include "WallTime.h"

namespace MrpCli {

namespace {

using Json = nlohmann::ordered_json;

constexpr double kMicrosPerSecond = 1e6;

double rounded(Quarn::Seconds t) { return std::round(t * kMicrosPerSecond) / kMicrosPerSecond; }

Json placed(const TimelinePlace& place) {
  Json line = {{"t", rounded(place.t)}};
  if (place.wallTime) line["time"] = wallTimeText(*place.wallTime);
  line["bridge"] = place.bridge;
  if (!place.port.empty()) line["port"] = place.port;
  return line;
}

std::string hexOf(const std::vector<std::uint8_t>& octets) { return hexEncode(octets.data(), octets.size()); }

}  // namespace

void JsonTimeline::requested(const TimelinePlace& place, const MrpAgent::AttributeValue& value, bool withdraw) {
  Json line = placed(place);
  line["app"] = applicationName(value.application());
  line["request"] = withdraw ? "withdraw" : "declare";
  valueJsonAdd(line, value);
  out_ << jsonLine(line) << '\n';
}

void JsonTimeline::indicated(const TimelinePlace& place, const MrpAgent::AttributeValue& value, bool join) {
  Json line = placed(place);
  line["app"] = applicationName(value.application());
  line["indication"] = join ? "join" : "leave";
  valueJsonAdd(line, value);
  out_ << jsonLine(line) << '\n';
}

void JsonTimeline::forgot(const TimelinePlace& place, const MrpAgent::AttributeValue& value,
                          MrpAgent::Bridge::ForgetCause cause) {
  Json line = placed(place);
  line["app"] = applicationName(value.application());
  // Not an indication: the engine forgot it without one.
  line["forgotten"] = forgetCauseName(cause);
  valueJsonAdd(line, value);
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
  Json line = placed(place);
  line["registrations"] = registrationsJson(held);
  out_ << jsonLine(line) << '\n';
}

void JsonTimeline::portChanged(const TimelinePlace& place, const std::string& state) {
  Json line = placed(place);
  line["portState"] = state;
  out_ << jsonLine(line) << '\n';
}

}  // namespace MrpCli
