#include "report/RegistrationText.h"

#include <sstream>
#include <variant>

#include "Overloaded.h"
#include "common/Applications.h"
#include "common/Hex.h"
#include "report/TextTable.h"
#include "report/ValueText.h"

namespace MrpCli {

namespace {

template <class State>
std::string stateText(State state) {
  std::ostringstream text;
  text << state;
  return text.str();
}

}  // namespace

std::string registrationTable(const std::vector<MrpAgent::Registration>& held, const std::string& indent) {
  if (held.empty()) return indent + "(none)\n";
  std::vector<std::vector<std::string>> rows{{"port", "app", "attribute", "registrar", "applicant"}};
  for (const MrpAgent::Registration& registration : held) {
    rows.push_back({registration.port, applicationName(registration.application), valueText(registration.value),
                    stateText(registration.registrar), stateText(registration.applicant)});
  }
  return textTable(rows, indent);
}

void valueJsonAdd(nlohmann::ordered_json& json, const MrpAgent::AttributeValue& value) {
  json["type"] = unsigned{value.attributeType()};
  json["key"] = attributeKeyJson(value.attributeKey());
  const std::vector<std::uint8_t> firstValue = value.firstValue();
  json["value"] = hexEncode(firstValue.data(), firstValue.size());
  valueFieldsJsonAdd(json, value);
}

nlohmann::ordered_json attributeKeyJson(std::uint64_t key) { return std::to_string(key); }

void valueFieldsJsonAdd(nlohmann::ordered_json& json, const MrpAgent::AttributeValue& value) {
  std::visit(MrpAgent::Overloaded{
                 [&](const Mrp::MvrpVlanAttribute& v) { json["vlan"] = v.vlanId(); },
                 [&](const Mrp::MsrpTalkerAdvertiseAttribute& v) { json["streamId"] = streamIdText(v.streamId()); },
                 [&](const Mrp::MsrpTalkerFailedAttribute& v) {
                   json["streamId"] = streamIdText(v.talkerAdvertiseAttribute().streamId());
                 },
                 [&](const Mrp::MsrpListenerAttribute& v) { json["streamId"] = streamIdText(v.streamId()); },
                 [&](const Mrp::MsrpDomainAttribute& v) {
                   json["classId"] = unsigned{v.srClassId()};
                   json["priority"] = unsigned{v.srClassPriority()};
                   json["vid"] = v.srClassVID();
                 }},
             value.record());
  if (const auto declaration = value.declaration()) json["declaration"] = stateText(*declaration);
}

nlohmann::ordered_json registrationsJson(const std::vector<MrpAgent::Registration>& held) {
  nlohmann::ordered_json entries = nlohmann::ordered_json::array();
  for (const MrpAgent::Registration& registration : held) {
    nlohmann::ordered_json entry = {{"port", registration.port},
                                    {"app", applicationName(registration.application)}};
    valueJsonAdd(entry, registration.value);
    entry["registrar"] = stateText(registration.registrar);
    entry["applicant"] = stateText(registration.applicant);
    entries.push_back(std::move(entry));
  }
  return entries;
}

}  // namespace MrpCli
