#include "MrpSm/MrpSm.h"

namespace Mrp {

namespace {

// One key rule for transmit and receive values.
std::uint64_t msrpKey(std::uint8_t attributeType, const MsrpTalkerAdvertiseAttribute& talker,
                      const MsrpTalkerFailedAttribute& failed, const MsrpListenerAttribute& listener,
                      const MsrpDomainAttribute& domain) {
  switch (attributeType) {
    case 1:
      return talker.streamId();
    case 2:
      return failed.talkerAdvertiseAttribute().streamId();
    case 3:
      return listener.streamId();
    case 4:
      return domain.srClassId();
    default:
      return 0;
  }
}

std::uint64_t mvrpKey(std::uint8_t attributeType, const MvrpVlanAttribute& vlan) {
  return attributeType == 1 ? vlan.vlanId() : 0;
}

}  // namespace

std::uint64_t MrpSm::msrpGetTxAttributeKey() const {
  MrpLib& lib = *mrpLib_;
  return msrpKey(parseContext_->attributeType(), lib.msrpTalkerAdvertiseTx(), lib.msrpTalkerFailedTx(),
                 lib.msrpListenerVectorTx(), lib.msrpDomainVectorTx());
}

std::uint64_t MrpSm::msrpGetRxAttributeKey() const {
  MrpLib& lib = *mrpLib_;
  return msrpKey(parseContext_->attributeType(), lib.msrpTalkerAdvertiseRx(), lib.msrpTalkerFailedRx(),
                 lib.msrpListenerVectorRx(), lib.msrpDomainVectorRx());
}

std::uint64_t MrpSm::mvrpGetTxAttributeKey() const {
  return mvrpKey(parseContext_->attributeType(), mrpLib_->mvrpVlanVectorTx());
}

std::uint64_t MrpSm::mvrpGetRxAttributeKey() const {
  return mvrpKey(parseContext_->attributeType(), mrpLib_->mvrpVlanVectorRx());
}

std::uint64_t MrpSm::mrpGetTxAttributeKey() const {
  switch (mrpLib_->application()) {
    case MrpApplication::msrp:
      return msrpGetTxAttributeKey();
    case MrpApplication::mvrp:
      return mvrpGetTxAttributeKey();
  }
  return 0;
}

std::uint64_t MrpSm::mrpGetRxAttributeKey() const {
  switch (mrpLib_->application()) {
    case MrpApplication::msrp:
      return msrpGetRxAttributeKey();
    case MrpApplication::mvrp:
      return mvrpGetRxAttributeKey();
  }
  return 0;
}

}  // namespace Mrp
