#pragma once

#include <cstdint>
#include <type_traits>

#include "MrpMsrp/MsrpAttrType.h"
#include "MrpMvrp/MvrpAttrType.h"
#include "MrpSm/MrpLib.h"

namespace Mrp {

// Runs `f` with `std::type_identity<Record>` for the value record of an MSRP
// attribute type; false, running nothing, for a type MSRP does not have.
template <class F>
bool withMsrpValueType(std::uint8_t attributeType, F&& f) {
  switch (static_cast<MsrpAttrType>(attributeType)) {
    case MsrpAttrType::talkerAdvertise:
      f(std::type_identity<MsrpTalkerAdvertiseAttribute>{});
      return true;
    case MsrpAttrType::talkerFailed:
      f(std::type_identity<MsrpTalkerFailedAttribute>{});
      return true;
    case MsrpAttrType::listenerVector:
      f(std::type_identity<MsrpListenerAttribute>{});
      return true;
    case MsrpAttrType::domainVector:
      f(std::type_identity<MsrpDomainAttribute>{});
      return true;
    case MsrpAttrType::invalidAttribute:
      break;
  }
  return false;
}

// The same for MVRP.
template <class F>
bool withMvrpValueType(std::uint8_t attributeType, F&& f) {
  if (static_cast<MvrpAttrType>(attributeType) != MvrpAttrType::vlanVector) return false;
  f(std::type_identity<MvrpVlanAttribute>{});
  return true;
}

// The same for an attribute type of `application`.
template <class F>
bool withValueType(MrpApplication application, std::uint8_t attributeType, F&& f) {
  switch (application) {
    case MrpApplication::msrp:
      return withMsrpValueType(attributeType, f);
    case MrpApplication::mvrp:
      return withMvrpValueType(attributeType, f);
  }
  return false;
}

// The service object's transmit (`tx`) or receive field of a value record.
inline MsrpTalkerAdvertiseAttribute& mrpLibField(MrpLib& lib, bool tx,
                                                 std::type_identity<MsrpTalkerAdvertiseAttribute>) {
  return tx ? lib.msrpTalkerAdvertiseTx() : lib.msrpTalkerAdvertiseRx();
}
inline MsrpTalkerFailedAttribute& mrpLibField(MrpLib& lib, bool tx, std::type_identity<MsrpTalkerFailedAttribute>) {
  return tx ? lib.msrpTalkerFailedTx() : lib.msrpTalkerFailedRx();
}
inline MsrpListenerAttribute& mrpLibField(MrpLib& lib, bool tx, std::type_identity<MsrpListenerAttribute>) {
  return tx ? lib.msrpListenerVectorTx() : lib.msrpListenerVectorRx();
}
inline MsrpDomainAttribute& mrpLibField(MrpLib& lib, bool tx, std::type_identity<MsrpDomainAttribute>) {
  return tx ? lib.msrpDomainVectorTx() : lib.msrpDomainVectorRx();
}
inline MvrpVlanAttribute& mrpLibField(MrpLib& lib, bool tx, std::type_identity<MvrpVlanAttribute>) {
  return tx ? lib.mvrpVlanVectorTx() : lib.mvrpVlanVectorRx();
}

// Runs `f` on the service object's transmit (`tx`) or receive field of an
// MSRP attribute type; false, running nothing, for a type MSRP does not have.
template <class F>
bool withMsrpValue(MrpLib& lib, std::uint8_t attributeType, bool tx, F&& f) {
  return withMsrpValueType(attributeType, [&](auto type) { f(mrpLibField(lib, tx, type)); });
}

// The same for MVRP.
template <class F>
bool withMvrpValue(MrpLib& lib, std::uint8_t attributeType, bool tx, F&& f) {
  return withMvrpValueType(attributeType, [&](auto type) { f(mrpLibField(lib, tx, type)); });
}

// Runs `f` on the transmit (`tx`) or receive field of an attribute type of
// the service object's application; false for a type it does not have.
template <class F>
bool withValueField(MrpLib& lib, std::uint8_t attributeType, bool tx, F&& f) {
  switch (lib.application()) {
    case MrpApplication::msrp:
      return withMsrpValue(lib, attributeType, tx, f);
    case MrpApplication::mvrp:
      return withMvrpValue(lib, attributeType, tx, f);
  }
  return false;
}

template <class F>
bool withReceiveField(MrpLib& lib, std::uint8_t attributeType, F&& f) {
  return withValueField(lib, attributeType, false, f);
}

}  // namespace Mrp
