#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "AttributeValue.h"
#include "MrpModel/MrpApplication.h"
#include "format/JsonNode.h"

namespace MrpCli {

// The value a declaration or withdrawal names, as the scenario file and the
// agent's control requests write it: "app" (one of `applications`) and one
// value of that application, "vlan": 1..4094 for mvrp, "talkerAdvertise",
// "listener" or "domain" for msrp. Other members of `node` are the caller's
// to check. Throws JsonInputError naming the place of the first fault.
MrpAgent::AttributeValue attributeValueOf(const JsonNode& node, const std::vector<Mrp::MrpApplication>& applications);

// The stream id of a talker named by it alone, as a withdrawal may name it:
// {"app": "msrp", "talkerAdvertise": {"streamId": "00:1b:21:00:00:01:00:01"}};
// nullopt for any other value. Throws JsonInputError for a bad stream id.
std::optional<std::uint64_t> talkerNamedByStreamId(const JsonNode& node,
                                                   const std::vector<Mrp::MrpApplication>& applications);

// As attributeValueOf, and for mvrp "vlans" as well: a list of VLAN ids and
// ranges as switches write one ("1-4094", "10, 20-29"), one value per VLAN
// in the order listed.
std::vector<MrpAgent::AttributeValue> attributeValuesOf(const JsonNode& node,
                                                        const std::vector<Mrp::MrpApplication>& applications);

// A Domain: {"classId": 6, "priority": 3, "vid": 2}.
Mrp::MsrpDomainAttribute msrpDomainOf(const JsonNode& node);

}  // namespace MrpCli
