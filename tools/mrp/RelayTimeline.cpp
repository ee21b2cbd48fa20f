#include "RelayTimeline.h"

#include "AttributeMessage.h"

namespace MrpCli {

namespace {

using Json = nlohmann::ordered_json;

Json eventMessage(const char* kind, const TimelinePlace& place) {
  Json message = {{"timeline", kind}, {"t", place.t}, {"port", place.port}};
  if (place.wallTime) message["wallTime"] = *place.wallTime;
  return message;
}

Json valueEventMessage(const char* kind, const TimelinePlace& place, const MrpAgent::AttributeValue& value) {
  Json message = eventMessage(kind, place);
  message["attribute"] = attributeMessage(value);
  return message;
}

bool isNumber(const Json& message, const char* name) { return message.contains(name) && message[name].is_number(); }
bool isBool(const Json& message, const char* name) { return message.contains(name) && message[name].is_boolean(); }

}  // namespace

void RelayTimeline::requested(const TimelinePlace& place, const MrpAgent::AttributeValue& value, bool withdraw) {
  Json message = valueEventMessage("requested", place, value);
  message["withdraw"] = withdraw;
  send_(message);
}

void RelayTimeline::indicated(const TimelinePlace& place, const MrpAgent::AttributeValue& value, bool join) {
  Json message = valueEventMessage("indicated", place, value);
  message["join"] = join;
  send_(message);
}

void RelayTimeline::forgot(const TimelinePlace& place, const MrpAgent::AttributeValue& value,
                           MrpAgent::Bridge::ForgetCause cause) {
  Json message = valueEventMessage("forgot", place, value);
  message["blocked"] = cause == MrpAgent::Bridge::ForgetCause::blocked;
  send_(message);
}

void RelayTimeline::portChanged(const TimelinePlace& place, const std::string& state) {
  Json message = eventMessage("portChanged", place);
  message["state"] = state;
  send_(message);
}

bool relayTimelineMessage(const Json& message, const std::string& bridge, Timeline& timeline) {
  if (!message.contains("timeline") || !message["timeline"].is_string() || !isNumber(message, "t") ||
      !message.contains("port") || !message["port"].is_string()) {
    return false;
  }
  TimelinePlace place{message["t"].get<double>(), bridge, message["port"].get<std::string>(), std::nullopt};
  if (isNumber(message, "wallTime")) place.wallTime = message["wallTime"].get<double>();
  const std::string kind = message["timeline"].get<std::string>();
  if (kind == "portChanged") {
    if (!message.contains("state") || !message["state"].is_string()) return false;
    timeline.portChanged(place, message["state"].get<std::string>());
    return true;
  }
  const auto value = message.contains("attribute") ? attributeFromMessage(message["attribute"]) : std::nullopt;
  if (!value) return false;
  if (kind == "requested" && isBool(message, "withdraw")) {
    timeline.requested(place, *value, message["withdraw"].get<bool>());
  } else if (kind == "indicated" && isBool(message, "join")) {
    timeline.indicated(place, *value, message["join"].get<bool>());
  } else if (kind == "forgot" && isBool(message, "blocked")) {
    timeline.forgot(place, *value,
                    message["blocked"].get<bool>() ? MrpAgent::Bridge::ForgetCause::blocked
                                                   : MrpAgent::Bridge::ForgetCause::portClosed);
  } else {
    return false;
  }
  return true;
}

}  // namespace MrpCli
