#pragma once

#include <cstdint>
#include <optional>
#include <ostream>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "MrpModel/MrpApplication.h"
#include "MrpMsrp/MsrpDomainAttribute.h"
#include "MrpMsrp/MsrpListenerAttribute.h"
#include "MrpMsrp/MsrpTalkerAdvertiseAttribute.h"
#include "MrpMsrp/MsrpTalkerFailedAttribute.h"
#include "MrpMvrp/MvrpVlanAttribute.h"
#include "MrpSm/MrpLib.h"

namespace MrpAgent {

// One MSRP or MVRP attribute value, as an agent declares it or hears of it:
// the value record of its attribute type.
class AttributeValue {
 public:
  using Record = std::variant<Mrp::MvrpVlanAttribute, Mrp::MsrpTalkerAdvertiseAttribute,
                              Mrp::MsrpTalkerFailedAttribute, Mrp::MsrpListenerAttribute, Mrp::MsrpDomainAttribute>;

  AttributeValue(Record record) : record_(std::move(record)) {}

  // The value of an application's attribute type whose stored octets (the
  // FirstValue in wire order) are `octets`; nullopt for an unknown type.
  static std::optional<AttributeValue> fromOctets(Mrp::MrpApplication application, std::uint8_t attributeType,
                                                  std::span<const std::uint8_t> octets);
  // The value last received for the attribute type, from the service
  // object's receive fields; nullopt for an unknown type.
  static std::optional<AttributeValue> received(Mrp::MrpLib& lib, std::uint8_t attributeType);

  const Record& record() const { return record_; }
  Mrp::MrpApplication application() const;
  std::uint8_t attributeType() const;
  // The key the engine gives the value: the VLAN id, the stream id of
  // talkers and listeners, the class id of a domain.
  std::uint64_t attributeKey() const;
  // The FirstValue in wire order (for a Listener the stream id only).
  std::vector<std::uint8_t> firstValue() const;
  // The Listener's declaration; nullopt for any other value.
  std::optional<Mrp::MsrpListenerEvent> declaration() const;

  // Puts the value into the service object's transmit field of its type,
  // as a request to the engine needs it.
  void transmitFieldIs(Mrp::MrpLib& lib) const;

  friend bool operator==(const AttributeValue&, const AttributeValue&) = default;

 private:
  Record record_;
};

// The value's record in its text form.
std::ostream& operator<<(std::ostream& os, const AttributeValue& value);

}  // namespace MrpAgent
