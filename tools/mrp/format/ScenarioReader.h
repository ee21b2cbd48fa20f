#pragma once

#include <string_view>

#include "format/JsonNode.h"
#include "format/Scenario.h"

namespace MrpCli {

// What is wrong with a scenario, and where: "events[3].declare.vlan: 4095 is
// not a VLAN id (1..4094)", or "not JSON: ..." for text that is not JSON.
using ScenarioError = JsonInputError;

// Reads a scenario from its JSON text, checking every name, reference and
// value; throws ScenarioError at the first fault.
Scenario scenarioFromJson(std::string_view text);

}  // namespace MrpCli
