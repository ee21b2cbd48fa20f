#include "MrpMsrp/MsrpAttrType.h"
#include "MrpMsrp/MsrpValueSequence.h"
#include "MrpMvrp/MvrpAttrType.h"
#include "MrpSm/MrpLib.h"
#include "MrpSm/MrpSm.h"
#include "MrpSm/MrpSmTrace.h"
#include "MrpSm/MrpValueAt.h"

namespace Mrp {

namespace {

// The attribute type being parsed; 0 (no type) without an active engine.
std::uint8_t currentAttributeType(const MrpSm* mrpSm) {
  if (mrpSm == nullptr || !mrpSm->parseContext()) return 0;
  return mrpSm->parseContext()->attributeType();
}

}  // namespace

void MrpLib::mrpIncrementTalkerAdvertise() {
  msrpTalkerAdvertiseRx_ = mrpIncrementTalkerAttribute(msrpTalkerAdvertiseRx_);
  MRP_TRACE(8, " TalkerAdvertiseAttribute = " << msrpTalkerAdvertiseRx_);
}

void MrpLib::mrpIncrementTalkerFailed() {
  msrpTalkerFailedRx_.talkerAdvertiseAttributeIs(
      mrpIncrementTalkerAttribute(msrpTalkerFailedRx_.talkerAdvertiseAttribute()));
  MRP_TRACE(8, " TalkerFailedAttribute = " << msrpTalkerFailedRx_);
}

void MrpLib::mrpIncrementListenerVector() { msrpListenerVectorRx_ = mrpValueAt(msrpListenerVectorRx_, 1); }

void MrpLib::mrpIncrementDomainVector() {
  msrpDomainVectorRx_ = mrpValueAt(msrpDomainVectorRx_, 1);
  MRP_TRACE(8, " Domain vector = " << msrpDomainVectorRx_);
}

void MrpLib::mrpIncrementVlanVector() {
  mvrpVlanVectorRx_ = mrpValueAt(mvrpVlanVectorRx_, 1);
  MRP_TRACE(8, " Vlan vector = " << mvrpVlanVectorRx_);
}

void MrpLib::mrpValueFromFirstValue(std::uint16_t valueIndex) {
  if (valueIndex == 0) return;
  switch (application_) {
    case MrpApplication::msrp:
      mrpMsrpValueFromFirstValue();
      break;
    case MrpApplication::mvrp:
      mrpMvrpValueFromFirstValue();
      break;
  }
}

void MrpLib::mrpMsrpValueFromFirstValue() {
  switch (static_cast<MsrpAttrType>(currentAttributeType(mrpSm_))) {
    case MsrpAttrType::talkerAdvertise:
      mrpIncrementTalkerAdvertise();
      break;
    case MsrpAttrType::talkerFailed:
      mrpIncrementTalkerFailed();
      break;
    case MsrpAttrType::listenerVector:
      mrpIncrementListenerVector();
      break;
    case MsrpAttrType::domainVector:
      mrpIncrementDomainVector();
      break;
    default:
      break;
  }
}

void MrpLib::mrpMvrpValueFromFirstValue() {
  if (static_cast<MvrpAttrType>(currentAttributeType(mrpSm_)) == MvrpAttrType::vlanVector) mrpIncrementVlanVector();
}

}  // namespace Mrp
