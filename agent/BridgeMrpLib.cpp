#include "BridgeMrpLib.h"

namespace MrpAgent {

bool BridgeMrpLib::mrpJoinIndication(const Mrp::MrpParameters& indication) {
  // A join is indicated while the received value is in the receive fields.
  if (const std::optional<AttributeValue> value = AttributeValue::received(*this, indication.attributeType)) {
    owner_->handleJoin(indication, *value);
  }
  return false;
}

void BridgeMrpLib::mrpLeaveIndication(const Mrp::MrpParameters& indication) {
  owner_->handleLeave(indication, application());
}

void BridgeMrpLib::mrpListenerJoinWithoutIndication(const Mrp::MrpParameters& join) {
  if (const std::optional<AttributeValue> value = AttributeValue::received(*this, join.attributeType)) {
    owner_->handleListenerJoin(join, *value);
  }
}

}  // namespace MrpAgent
