#pragma once

#include <cstdint>

#include "MrpMsrp/MsrpAttrType.h"
#include "MrpMvrp/MvrpAttrType.h"
#include "MrpSm/MrpLib.h"

namespace Mrp {

// Runs `f` on the service object's transmit (`tx`) or receive field of an
// MSRP attribute type; false, running nothing, for a type MSRP does not have.
template <class F>
bool withMsrpValue(MrpLib& lib, std::uint8_t attributeType, bool tx, F&& f) {
  switch (static_cast<MsrpAttrType>(attributeType)) {
    case MsrpAttrType::talkerAdvertise:
      f(tx ? lib.msrpTalkerAdvertiseTx() : lib.msrpTalkerAdvertiseRx());
      return true;
    case MsrpAttrType::talkerFailed:
      f(tx ? lib.msrpTalkerFailedTx() : lib.msrpTalkerFailedRx());
      return true;
    case MsrpAttrType::listenerVector:
      f(tx ? lib.msrpListenerVectorTx() : lib.msrpListenerVectorRx());
      return true;
    case MsrpAttrType::domainVector:
      f(tx ? lib.msrpDomainVectorTx() : lib.msrpDomainVectorRx());
      return true;
    case MsrpAttrType::invalidAttribute:
      break;
  }
  return false;
}

// The same for MVRP.
template <class F>
bool withMvrpValue(MrpLib& lib, std::uint8_t attributeType, bool tx, F&& f) {
  if (static_cast<MvrpAttrType>(attributeType) != MvrpAttrType::vlanVector) return false;
  f(tx ? lib.mvrpVlanVectorTx() : lib.mvrpVlanVectorRx());
  return true;
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
