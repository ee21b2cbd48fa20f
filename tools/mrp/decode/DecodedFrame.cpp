#include "decode/DecodedFrame.h"

#include "common/Applications.h"
#include "common/Hex.h"
#include "report/RegistrationText.h"

namespace MrpCli {

namespace {

using Json = nlohmann::ordered_json;

Json attributesJson(const std::vector<DecodedAttribute>& attributes) {
  Json list = Json::array();
  for (const DecodedAttribute& attribute : attributes) {
    // A Listener's stored octets end in its declaration, which has a field
    // of its own: "value" is the FirstValue, as in the other outputs.
    const std::vector<std::uint8_t> value = attribute.value ? attribute.value->firstValue() : attribute.octets;
    Json json = {{"type", unsigned{attribute.type}},
                 {"key", attributeKeyJson(attribute.key)},
                 {"event", unsigned{attribute.event}},
                 {"value", hexEncode(value.data(), value.size())}};
    if (attribute.value) valueFieldsJsonAdd(json, *attribute.value);
    list.push_back(std::move(json));
  }
  return list;
}

Json countersJson(const DecodedCounters& counters) {
  Json json = Json::object();
  for (const DecodedCounterField& field : kDecodedCounterFields) json[field.name] = counters.*field.count;
  return json;
}

Json leaveAllJson(const std::vector<std::uint8_t>& types) {
  Json list = Json::array();
  for (const std::uint8_t type : types) list.push_back(unsigned{type});
  return list;
}

}  // namespace

Json decodedFrameJson(const DecodedFrame& decoded) {
  if (decoded.skipped) return {{"frame", decoded.frame}, {"skipped", *decoded.skipped}};
  return {
      {"frame", decoded.frame},
      {"application", applicationName(decoded.application)},
      {"leaveAll", leaveAllJson(decoded.leaveAllTypes)},
      {"domain", attributesJson(decoded.domain)},
      {"attributes", attributesJson(decoded.attributes)},
      {"events", decoded.events},
      {"counters", countersJson(decoded.counters)},
  };
}

}  // namespace MrpCli
