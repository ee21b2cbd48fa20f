#pragma once

#include <optional>
#include <string>

#include "AttributeValue.h"

namespace MrpCli {

// A declaration the agent was asked for: on one port, or on every port
// without one. A later declaration of the same attribute (application,
// type and key) in the same place replaces it.
struct Declaration {
  MrpAgent::AttributeValue value;
  std::optional<std::string> port;

  bool samePlaceAs(const MrpAgent::AttributeValue& other, const std::optional<std::string>& otherPort) const {
    return value.application() == other.application() && value.attributeType() == other.attributeType() &&
           value.attributeKey() == other.attributeKey() && port == otherPort;
  }
};

}  // namespace MrpCli
