#pragma once

#include <nlohmann/json.hpp>

#include <cstdint>
#include <string>
#include <vector>

#include "Bridge.h"

namespace MrpCli {

// What a bridge holds, for a person: a table with a heading, each line
// begun by `indent`, or "(none)".
//   port  app   attribute  registrar  applicant
//   eth1  mvrp  VLAN 10    IN         VO
std::string registrationTable(const std::vector<MrpAgent::Registration>& held, const std::string& indent = "");

// ...and for a program: one object per registration, with its port, app,
// the value as valueJsonAdd writes it, registrar and applicant.
nlohmann::ordered_json registrationsJson(const std::vector<MrpAgent::Registration>& held);
// The type, key and FirstValue (in hex) of a value, then its readable
// fields (valueFieldsJsonAdd), added to `json`.
void valueJsonAdd(nlohmann::ordered_json& json, const MrpAgent::AttributeValue& value);
// An attribute key as JSON: a string of decimal digits ("10"). Stream ids
// are 64-bit keys, and tools that read JSON numbers as doubles round them
// above 2^53, so that two streams one apart would read as one.
nlohmann::ordered_json attributeKeyJson(std::uint64_t key);
// What a person reads of a value, added to `json`: "vlan" of a VLAN,
// "streamId" of a talker or a listener and a Listener's "declaration", a
// domain's "classId", "priority" and "vid".
void valueFieldsJsonAdd(nlohmann::ordered_json& json, const MrpAgent::AttributeValue& value);

}  // namespace MrpCli
