#include "report/StreamTableJson.h"

#include <string>
#include <variant>

#include "BridgeId.h"
#include "MrpMsrp/MsrpListenerEvent.h"
#include "TalkerAdmission.h"
#include "report/RegistrationText.h"
#include "report/ValueText.h"

namespace MrpCli {

namespace {

using Json = nlohmann::ordered_json;

std::string letter(const MrpAgent::SrClass& srClass) { return std::string(1, srClass.name); }

// "advertise" or "failed", the accumulated latency, and the failure of a
// Talker Failed, added to `json`.
void talkerJsonAdd(Json& json, const char* name, const MrpAgent::AttributeValue& talker) {
  const auto* failed = std::get_if<Mrp::MsrpTalkerFailedAttribute>(&talker.record());
  const Mrp::MsrpTalkerAdvertiseAttribute& advertise =
      failed ? failed->talkerAdvertiseAttribute() : std::get<Mrp::MsrpTalkerAdvertiseAttribute>(talker.record());
  json[name] = failed ? "failed" : "advertise";
  json["accumulatedLatency"] = advertise.accumulatedLatency();
  if (failed) {
    json["failure"] = failureJson(failed->failureInformation());
  }
}

Json portRowJson(const MrpAgent::StreamTable::PortRow& row) {
  Json json = {{"port", row.port}};
  if (row.listener) json["listener"] = Mrp::enumText(*row.listener);
  if (row.declared) talkerJsonAdd(json, "declared", *row.declared);
  json["reserved"] = row.reserved;
  if (row.srClass) {
    json["class"] = letter(*row.srClass);
    json["bandwidth"] = row.bandwidth;
  }
  return json;
}

Json streamJson(const MrpAgent::StreamTable::Stream& stream) {
  Json json = {{"streamId", streamIdText(stream.streamId)}, {"key", attributeKeyJson(stream.streamId)}};
  if (stream.talker) {
    json["talkerPort"] = stream.talkerPort;
    talkerJsonAdd(json, "talker", *stream.talker);
  }
  if (stream.listenerDeclared) json["listenerDeclared"] = Mrp::enumText(*stream.listenerDeclared);
  json["ports"] = Json::array();
  for (const MrpAgent::StreamTable::PortRow& row : stream.ports) json["ports"].push_back(portRowJson(row));
  return json;
}

Json classJson(const MrpAgent::StreamTable::ClassRow& row) {
  return {{"port", row.port},
          {"class", letter(row.srClass)},
          {"portSpeed", row.portSpeed},
          {"reserved", row.reserved},
          {"total", row.total},
          {"limit", row.limit},
          {"idleSlope", row.shaper.idleSlope},
          {"sendSlope", row.shaper.sendSlope},
          {"hiCredit", row.shaper.hiCredit},
          {"loCredit", row.shaper.loCredit},
          {"tc", row.tc}};
}

}  // namespace

nlohmann::ordered_json failureJson(const Mrp::FailureInformation& failure) {
  return {{"code", failure.failureCode()},
          {"text", MrpAgent::failureCodeText(failure.failureCode())},
          {"bridgeId", MrpAgent::bridgeIdText(failure.bridgeId())}};
}

nlohmann::ordered_json streamTableJson(const MrpAgent::StreamTable& table) {
  Json json = {{"streams", Json::array()}, {"classes", Json::array()}};
  for (const MrpAgent::StreamTable::Stream& stream : table.streams) json["streams"].push_back(streamJson(stream));
  for (const MrpAgent::StreamTable::ClassRow& row : table.classes) json["classes"].push_back(classJson(row));
  return json;
}

}  // namespace MrpCli
