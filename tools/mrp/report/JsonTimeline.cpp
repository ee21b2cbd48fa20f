#include "report/JsonTimeline.h"

#include <cmath>
#include <ostream>

#include "common/Applications.h"
#include "common/Hex.h"
#include "common/WallTime.h"
#include "format/JsonLine.h"
#include "report/RegistrationText.h"
#include "report/StreamTableJson.h"
#include "report/ValueText.h"

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

// A stream as the lines of its values name it: its id and its key.
void streamAdd(Json& line, std::uint64_t streamId) {
  line["streamId"] = streamIdText(streamId);
  line["key"] = attributeKeyJson(streamId);
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

void JsonTimeline::reservationChanged(const TimelinePlace& place, const MrpAgent::ReservationChange& change) {
  Json line = placed(place);
  line["app"] = applicationName(Mrp::MrpApplication::msrp);
  line["reservation"] = change.reserved ? "reserved" : "released";
  streamAdd(line, change.streamId);
  line["class"] = std::string(1, change.srClass.name);
  line["bandwidth"] = change.bandwidth;
  line["total"] = change.total;
  line["limit"] = change.limit;
  out_ << jsonLine(line) << '\n';
}

void JsonTimeline::talkerFailed(const TimelinePlace& place, const Mrp::MsrpTalkerFailedAttribute& declared) {
  const Mrp::MsrpTalkerAdvertiseAttribute& talker = declared.talkerAdvertiseAttribute();
  Json line = placed(place);
  line["app"] = applicationName(Mrp::MrpApplication::msrp);
  line["talkerFailed"] = failureJson(declared.failureInformation());
  streamAdd(line, talker.streamId());
  line["accumulatedLatency"] = talker.accumulatedLatency();
  out_ << jsonLine(line) << '\n';
}

void JsonTimeline::listenerDeclared(const TimelinePlace& place, const Mrp::MsrpListenerAttribute& listener) {
  Json line = placed(place);
  line["app"] = applicationName(Mrp::MrpApplication::msrp);
  line["listener"] = "declared";
  streamAdd(line, listener.streamId());
  line["declaration"] = Mrp::enumText(listener.listenerEvent());
  out_ << jsonLine(line) << '\n';
}

void JsonTimeline::streams(const TimelinePlace& place, const MrpAgent::StreamTable& table) {
  Json line = placed(place);
  Json members = streamTableJson(table);
  for (auto& [name, member] : members.items()) line[name] = std::move(member);
  out_ << jsonLine(line) << '\n';
}

}  // namespace MrpCli
