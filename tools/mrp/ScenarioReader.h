#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

#include "Scenario.h"

namespace MrpCli {

// What is wrong with a scenario, and where: "events[3].declare.vlan: 4095 is
// not a VLAN id (1..4094)", or "not JSON: ..." for text that is not JSON.
class ScenarioError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Reads a scenario from its JSON text, checking every name, reference and
// value; throws ScenarioError at the first fault.
Scenario scenarioFromJson(std::string_view text);

}  // namespace MrpCli
