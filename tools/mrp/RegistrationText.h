#pragma once

#include <nlohmann/json.hpp>

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
// type, key, value (the FirstValue in hex), a Listener's declaration,
// registrar and applicant.
nlohmann::ordered_json registrationsJson(const std::vector<MrpAgent::Registration>& held);
// The type, key and FirstValue of a value, and a Listener's declaration,
// added to `json`.
void valueJsonAdd(nlohmann::ordered_json& json, const MrpAgent::AttributeValue& value);

}  // namespace MrpCli
