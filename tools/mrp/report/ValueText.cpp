#include "report/ValueText.h"

#include <cstdio>
#include <sstream>

#include "MrpMsrp/MsrpAttrType.h"
#include "MrpMvrp/MvrpAttrType.h"
#include "Overloaded.h"

namespace MrpCli {

std::string talkerText(const Mrp::MsrpTalkerAdvertiseAttribute& talker) {
  return streamIdText(talker.streamId()) + " (" + talker.frame().dmac().toString() + ", VLAN " +
         std::to_string(talker.frame().vlanId()) + ")";
}

std::string streamIdText(std::uint64_t streamId) {
  std::string text;
  for (int shift = 56; shift >= 0; shift -= 8) {
    char octet[4];
    std::snprintf(octet, sizeof octet, shift == 56 ? "%02x" : ":%02x", static_cast<unsigned>((streamId >> shift) & 0xff));
    text += octet;
  }
  return text;
}

std::string valueText(const MrpAgent::AttributeValue& value) {
  return std::visit(
      MrpAgent::Overloaded{
          [](const Mrp::MvrpVlanAttribute& v) { return "VLAN " + std::to_string(v.vlanId()); },
          [](const Mrp::MsrpTalkerAdvertiseAttribute& v) { return "talker " + talkerText(v); },
          [](const Mrp::MsrpTalkerFailedAttribute& v) {
            return "talker failed " + talkerText(v.talkerAdvertiseAttribute()) + " code " +
                   std::to_string(v.failureInformation().failureCode());
          },
          [](const Mrp::MsrpListenerAttribute& v) {
            // A stored registration keeps its declaration apart from the value.
            if (v.listenerEvent() == Mrp::MsrpListenerEvent::ignore) return "listener " + streamIdText(v.streamId());
            std::ostringstream declaration;
            declaration << v.listenerEvent();  // its name, or its code when it has none
            return "listener " + streamIdText(v.streamId()) + " " + declaration.str();
          },
          [](const Mrp::MsrpDomainAttribute& v) {
            return "domain class " + std::to_string(v.srClassId()) + " (priority " +
                   std::to_string(v.srClassPriority()) + ", VLAN " + std::to_string(v.srClassVID()) + ")";
          }},
      value.record());
}

std::string attributeTypeText(Mrp::MrpApplication application, std::uint8_t attributeType) {
  if (application == Mrp::MrpApplication::mvrp) {
    if (static_cast<Mrp::MvrpAttrType>(attributeType) == Mrp::MvrpAttrType::vlanVector) return "VLAN";
    return std::to_string(attributeType);
  }
  switch (static_cast<Mrp::MsrpAttrType>(attributeType)) {
    case Mrp::MsrpAttrType::talkerAdvertise:
      return "talker advertise";
    case Mrp::MsrpAttrType::talkerFailed:
      return "talker failed";
    case Mrp::MsrpAttrType::listenerVector:
      return "listener";
    case Mrp::MsrpAttrType::domainVector:
      return "domain";
    case Mrp::MsrpAttrType::invalidAttribute:
      break;
  }
  return std::to_string(attributeType);
}

std::string roleText(Stp::MstiPortStatus::Role role) {
  using Role = Stp::MstiPortStatus::Role;
  switch (role) {
    case Role::disabled:
      return "disabled";
    case Role::root:
      return "root";
    case Role::designated:
      return "designated";
    case Role::alternate:
      return "alternate";
    case Role::backup:
      return "backup";
  }
  return std::to_string(static_cast<unsigned>(role));
}

const char* forgetCauseName(MrpAgent::Bridge::ForgetCause cause) {
  switch (cause) {
    case MrpAgent::Bridge::ForgetCause::portClosed:
      return "port closed";
    case MrpAgent::Bridge::ForgetCause::blocked:
      return "blocked";
  }
  return "forgotten";
}

}  // namespace MrpCli
