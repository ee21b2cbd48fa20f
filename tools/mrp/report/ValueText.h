#pragma once

#include <cstdint>
#include <string>

#include "AttributeValue.h"
#include "Bridge.h"
#include "MrpModel/MrpApplication.h"
#include "stp/MstiPortStatus.h"

namespace MrpCli {

// Attribute values and what happens to them, in the words of the timeline a
// network engineer reads.

// "VLAN 10", "talker 00:1b:21:00:00:01:00:01 (91:e0:f0:00:fe:01, VLAN 2)",
// "listener 00:1b:21:00:00:01:00:01 ready", "domain class 6 (priority 3, VLAN 2)".
std::string valueText(const MrpAgent::AttributeValue& value);
// A talker's stream, destination and VLAN: "00:1b:21:00:00:01:00:01 (91:e0:f0:00:fe:01, VLAN 2)".
std::string talkerText(const Mrp::MsrpTalkerAdvertiseAttribute& talker);
// "VLAN", "talker advertise", "talker failed", "listener", "domain"; the
// number for a type the application does not have.
std::string attributeTypeText(Mrp::MrpApplication application, std::uint8_t attributeType);
// Eight octets in hex, colon-separated: "00:1b:21:00:00:01:00:01".
std::string streamIdText(std::uint64_t streamId);
// "disabled", "root", "designated", "alternate", "backup".
std::string roleText(Stp::MstiPortStatus::Role role);
// Why a registration went without a leave indication: "port closed", "blocked".
const char* forgetCauseName(MrpAgent::Bridge::ForgetCause cause);

}  // namespace MrpCli
