#include "AttributeValue.h"

#include "MrpModel/MrpValueBytes.h"
#include "MrpModel/MrpWireFormat.h"
#include "MrpMsrp/MsrpAttrType.h"
#include "MrpMvrp/MvrpAttrType.h"
#include "Overloaded.h"

namespace MrpAgent {

namespace {

template <class Record>
AttributeValue recordOf(std::span<const std::uint8_t> octets) {
  return AttributeValue(Mrp::valueFromBytes<Record>(octets));
}

}  // namespace

std::optional<AttributeValue> AttributeValue::fromOctets(Mrp::MrpApplication application, std::uint8_t attributeType,
                                                         std::span<const std::uint8_t> octets) {
  if (application == Mrp::MrpApplication::mvrp) {
    if (static_cast<Mrp::MvrpAttrType>(attributeType) != Mrp::MvrpAttrType::vlanVector) return std::nullopt;
    return recordOf<Mrp::MvrpVlanAttribute>(octets);
  }
  if (application != Mrp::MrpApplication::msrp) return std::nullopt;
  switch (static_cast<Mrp::MsrpAttrType>(attributeType)) {
    case Mrp::MsrpAttrType::talkerAdvertise:
      return recordOf<Mrp::MsrpTalkerAdvertiseAttribute>(octets);
    case Mrp::MsrpAttrType::talkerFailed:
      return recordOf<Mrp::MsrpTalkerFailedAttribute>(octets);
    case Mrp::MsrpAttrType::listenerVector:
      return recordOf<Mrp::MsrpListenerAttribute>(octets);
    case Mrp::MsrpAttrType::domainVector:
      return recordOf<Mrp::MsrpDomainAttribute>(octets);
    case Mrp::MsrpAttrType::invalidAttribute:
      break;
  }
  return std::nullopt;
}

std::optional<AttributeValue> AttributeValue::received(Mrp::MrpLib& lib, std::uint8_t attributeType) {
  if (lib.application() == Mrp::MrpApplication::mvrp) {
    if (static_cast<Mrp::MvrpAttrType>(attributeType) != Mrp::MvrpAttrType::vlanVector) return std::nullopt;
    return AttributeValue(lib.mvrpVlanVectorRx());
  }
  switch (static_cast<Mrp::MsrpAttrType>(attributeType)) {
    case Mrp::MsrpAttrType::talkerAdvertise:
      return AttributeValue(lib.msrpTalkerAdvertiseRx());
    case Mrp::MsrpAttrType::talkerFailed:
      return AttributeValue(lib.msrpTalkerFailedRx());
    case Mrp::MsrpAttrType::listenerVector:
      return AttributeValue(lib.msrpListenerVectorRx());
    case Mrp::MsrpAttrType::domainVector:
      return AttributeValue(lib.msrpDomainVectorRx());
    case Mrp::MsrpAttrType::invalidAttribute:
      break;
  }
  return std::nullopt;
}

Mrp::MrpApplication AttributeValue::application() const {
  return std::holds_alternative<Mrp::MvrpVlanAttribute>(record_) ? Mrp::MrpApplication::mvrp
                                                                 : Mrp::MrpApplication::msrp;
}

std::uint8_t AttributeValue::attributeType() const {
  using Mrp::MsrpAttrType;
  const auto code = [](auto type) { return static_cast<std::uint8_t>(type); };
  return std::visit(Overloaded{[&](const Mrp::MvrpVlanAttribute&) { return code(Mrp::MvrpAttrType::vlanVector); },
                               [&](const Mrp::MsrpTalkerAdvertiseAttribute&) { return code(MsrpAttrType::talkerAdvertise); },
                               [&](const Mrp::MsrpTalkerFailedAttribute&) { return code(MsrpAttrType::talkerFailed); },
                               [&](const Mrp::MsrpListenerAttribute&) { return code(MsrpAttrType::listenerVector); },
                               [&](const Mrp::MsrpDomainAttribute&) { return code(MsrpAttrType::domainVector); }},
                    record_);
}

std::uint64_t AttributeValue::attributeKey() const {
  return std::visit(
      Overloaded{[](const Mrp::MvrpVlanAttribute& v) -> std::uint64_t { return v.vlanId(); },
                 [](const Mrp::MsrpTalkerAdvertiseAttribute& v) -> std::uint64_t { return v.streamId(); },
                 [](const Mrp::MsrpTalkerFailedAttribute& v) -> std::uint64_t {
                   return v.talkerAdvertiseAttribute().streamId();
                 },
                 [](const Mrp::MsrpListenerAttribute& v) -> std::uint64_t { return v.streamId(); },
                 [](const Mrp::MsrpDomainAttribute& v) -> std::uint64_t { return v.srClassId(); }},
      record_);
}

std::vector<std::uint8_t> AttributeValue::firstValue() const {
  const std::uint16_t length = Mrp::mrpSizeOfAttribute(attributeType(), static_cast<std::uint8_t>(application()));
  return std::visit(
      [length](const auto& record) {
        const auto octets = Mrp::valueBytes(record);
        return std::vector<std::uint8_t>(octets.begin(), octets.begin() + length);
      },
      record_);
}

std::optional<Mrp::MsrpListenerEvent> AttributeValue::declaration() const {
  if (const auto* listener = std::get_if<Mrp::MsrpListenerAttribute>(&record_)) return listener->listenerEvent();
  return std::nullopt;
}

void AttributeValue::transmitFieldIs(Mrp::MrpLib& lib) const {
  std::visit(Overloaded{[&](const Mrp::MvrpVlanAttribute& v) { lib.mvrpVlanVectorTx() = v; },
                        [&](const Mrp::MsrpTalkerAdvertiseAttribute& v) { lib.msrpTalkerAdvertiseTx() = v; },
                        [&](const Mrp::MsrpTalkerFailedAttribute& v) { lib.msrpTalkerFailedTx() = v; },
                        [&](const Mrp::MsrpListenerAttribute& v) { lib.msrpListenerVectorTx() = v; },
                        [&](const Mrp::MsrpDomainAttribute& v) { lib.msrpDomainVectorTx() = v; }},
             record_);
}

std::ostream& operator<<(std::ostream& os, const AttributeValue& value) {
  std::visit([&os](const auto& record) { os << record; }, value.record());
  return os;
}

}  // namespace MrpAgent
