#include "control/AttributeMessage.h"

#include <string>
#include <variant>

#include "MrpModel/MrpValueBytes.h"
#include "common/Applications.h"
#include "common/Hex.h"

namespace MrpCli {

nlohmann::ordered_json attributeMessage(const MrpAgent::AttributeValue& value) {
  const std::string record = std::visit(
      [](const auto& r) {
        const auto octets = Mrp::valueBytes(r);
        return hexEncode(octets.data(), octets.size());
      },
      value.record());
  return {{"app", applicationName(value.application())}, {"type", value.attributeType()}, {"record", record}};
}

std::optional<MrpAgent::AttributeValue> attributeFromMessage(const nlohmann::ordered_json& message) {
  if (!message.is_object() || !message.contains("app") || !message["app"].is_string() || !message.contains("type") ||
      !message["type"].is_number_unsigned() || !message.contains("record") || !message["record"].is_string()) {
    return std::nullopt;
  }
  const auto application = applicationNamed(message["app"].get<std::string>());
  const auto type = message["type"].get<unsigned>();
  std::string error;
  const auto octets = hexDecode(message["record"].get<std::string>(), error);
  if (!application || type > 0xff || !octets) return std::nullopt;
  return MrpAgent::AttributeValue::fromOctets(*application, static_cast<std::uint8_t>(type), *octets);
}

}  // namespace MrpCli
