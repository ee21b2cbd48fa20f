#include "report/RelayTimeline.h"

#include "control/AttributeMessage.h"

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
bool isString(const Json& message, const char* name) { return message.contains(name) && message[name].is_string(); }
bool isUnsigned(const Json& message, const char* name) {
  return message.contains(name) && message[name].is_number_unsigned();
}

Json reservationMessage(const MrpAgent::ReservationChange& change) {
  return {
      {"streamId", change.streamId},   {"reserved", change.reserved}, {"class", std::string(1, change.srClass.name)},
      {"bandwidth", change.bandwidth}, {"total", change.total},       {"limit", change.limit}};
}

std::optional<MrpAgent::ReservationChange> reservationFromMessage(const Json& message) {
  if (!message.is_object() || !isBool(message, "reserved") || !isString(message, "class")) return std::nullopt;
  for (const char* name : {"streamId", "bandwidth", "total", "limit"}) {
    if (!isUnsigned(message, name)) return std::nullopt;
  }
  const std::string name = message["class"].get<std::string>();
  const std::optional<MrpAgent::SrClass> srClass =
      name.size() == 1 ? MrpAgent::srClassNamed(name.front()) : std::nullopt;
  if (!srClass) return std::nullopt;
  return MrpAgent::ReservationChange{message["streamId"].get<std::uint64_t>(),
                                     message["reserved"].get<bool>(),
                                     *srClass,
                                     message["bandwidth"].get<std::uint64_t>(),
                                     message["total"].get<std::uint64_t>(),
                                     message["limit"].get<std::uint64_t>()};
}

// Tells `timeline` the event of a message that carries an attribute value.
bool valueEventTold(const Json& message, const std::string& kind, const TimelinePlace& place, Timeline& timeline) {
  const auto value = message.contains("attribute") ? attributeFromMessage(message["attribute"]) : std::nullopt;
  if (!value) return false;
  const auto* failed = std::get_if<Mrp::MsrpTalkerFailedAttribute>(&value->record());
  const auto* listener = std::get_if<Mrp::MsrpListenerAttribute>(&value->record());
  if (kind == "requested" && isBool(message, "withdraw")) {
    timeline.requested(place, *value, message["withdraw"].get<bool>());
  } else if (kind == "indicated" && isBool(message, "join")) {
    timeline.indicated(place, *value, message["join"].get<bool>());
  } else if (kind == "forgot" && isBool(message, "blocked")) {
    timeline.forgot(place, *value,
                    message["blocked"].get<bool>() ? MrpAgent::Bridge::ForgetCause::blocked
                                                   : MrpAgent::Bridge::ForgetCause::portClosed);
  } else if (kind == "talkerFailed" && failed) {
    timeline.talkerFailed(place, *failed);
  } else if (kind == "listenerDeclared" && listener) {
    timeline.listenerDeclared(place, *listener);
  } else {
    return false;
  }
  return true;
}

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

void RelayTimeline::reservationChanged(const TimelinePlace& place, const MrpAgent::ReservationChange& change) {
  Json message = eventMessage("reservationChanged", place);
  message["reservation"] = reservationMessage(change);
  send_(message);
}

void RelayTimeline::talkerFailed(const TimelinePlace& place, const Mrp::MsrpTalkerFailedAttribute& declared) {
  send_(valueEventMessage("talkerFailed", place, MrpAgent::AttributeValue(declared)));
}

void RelayTimeline::listenerDeclared(const TimelinePlace& place, const Mrp::MsrpListenerAttribute& listener) {
  send_(valueEventMessage("listenerDeclared", place, MrpAgent::AttributeValue(listener)));
}

bool relayTimelineMessage(const Json& message, const std::string& bridge, Timeline& timeline) {
  if (!isString(message, "timeline") || !isNumber(message, "t") || !isString(message, "port")) return false;
  TimelinePlace place{message["t"].get<double>(), bridge, message["port"].get<std::string>(), std::nullopt};
  if (isNumber(message, "wallTime")) place.wallTime = message["wallTime"].get<double>();
  const std::string kind = message["timeline"].get<std::string>();
  if (kind == "portChanged") {
    if (!isString(message, "state")) return false;
    timeline.portChanged(place, message["state"].get<std::string>());
    return true;
  }
  if (kind == "reservationChanged") {
    const auto change = message.contains("reservation") ? reservationFromMessage(message["reservation"]) : std::nullopt;
    if (!change) return false;
    timeline.reservationChanged(place, *change);
    return true;
  }
  return valueEventTold(message, kind, place, timeline);
}

}  // namespace MrpCli
