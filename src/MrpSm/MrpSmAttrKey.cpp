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

std::uint64_t msrpGetTxAttributeKey(MrpLib& lib, std::uint8_t attributeType) {
  return msrpKey(attributeType, lib.msrpTalkerAdvertiseTx(), lib.msrpTalkerFailedTx(), lib.msrpListenerVectorTx(),
                 lib.msrpDomainVectorTx());
}

std::uint64_t msrpGetRxAttributeKey(MrpLib& lib, std::uint8_t attributeType) {
  return msrpKey(attributeType, lib.msrpTalkerAdvertiseRx(), lib.msrpTalkerFailedRx(), lib.msrpListenerVectorRx(),
                 lib.msrpDomainVectorRx());
}

}  // namespace

std::uint64_t MrpSm::mrpGetTxAttributeKey() const {
  const std::uint8_t type = parseContext_->attributeType();
  switch (mrpLib_->application()) {
    case MrpApplication::msrp:
      return msrpGetTxAttributeKey(*mrpLib_, type);
    case MrpApplication::mvrp:
      return mvrpKey(type, mrpLib_->mvrpVlanVectorTx());
  }
  return 0;
}

std::uint64_t MrpSm::mrpGetRxAttributeKey() const {
  const std::uint8_t type = parseContext_->attributeType();
  switch (mrpLib_->application()) {
    case MrpApplication::msrp:
      return msrpGetRxAttributeKey(*mrpLib_, type);
    case MrpApplication::mvrp:
      return mvrpKey(type, mrpLib_->mvrpVlanVectorRx());
  }
  return 0;
}

}  // namespace Mrp
