#pragma once

#include <nlohmann/json.hpp>

#include <optional>

#include "AttributeValue.h"

namespace MrpCli {

// An attribute value as the agent's processes pass it to one another: the
// application, the attribute type and the whole value record in hex (a
// Listener's declaration included), so that it arrives exactly as it left.
//   {"app": "msrp", "type": 3, "record": "001b2100000100010000000002"}
nlohmann::ordered_json attributeMessage(const MrpAgent::AttributeValue& value);
// The value a message carries; nullopt for one that carries none.
std::optional<MrpAgent::AttributeValue> attributeFromMessage(const nlohmann::ordered_json& message);

}  // namespace MrpCli
