#include <vector>

#include "MrpModel/VlanId.h"
#include "MrpSm/MrpLib.h"
#include "MrpSm/MrpSm.h"
#include "MrpSm/MrpSmLog.h"
#include "MrpSm/MrpSmTrace.h"
#include "quarn/Assert.h"
#include "stp/PvstInstanceName.h"

namespace Mrp {

void MrpLib::mrpInterfaceEnable(const Velo::IntfId& intfId) {
  MRP_TRACE(8, "MrpLib::mrpInterfaceEnable( " << intfId << " )");
  QASSERT(mrpSm());
  mrpSm()->desiredIntfDir()->intfDesiredIs(intfId, true);
}

void MrpLib::mrpInterfaceDisable(const Velo::IntfId& intfId) {
  MRP_TRACE(8, "MrpLib::mrpInterfaceDisable( " << intfId << " )");
  QASSERT(mrpSm());
  mrpSm()->mrpTransmitTxAttributes(intfId);
  mrpTxPacketContextDel(intfId);
  mrpTxSecondPacketContextDel(intfId);
  mrpCleanUpIntfDatabase(intfId);
  mrpSm()->desiredIntfDir()->intfDesiredDel(intfId);
}

void MrpLib::mrpCleanUpIntfDatabase(const Velo::IntfId& intfId) {
  QASSERT(mrpSm());
  MrpSm& sm = *mrpSm();
  if (sm.standbyMode() || !sm.active()) return;
  sm.registrarSm()->mrpCancelLeavePending(intfId);
  for (std::uint8_t type = 1; type <= sm.maxAttrTypes(); ++type) {
    const Quarn::Ptr<MrpAttrIter> iter = sm.attributeStore().mrpAttrIter({intfId, type});
    if (!iter) continue;
    // A deletion may shrink the index being walked.
    const std::vector<std::uint64_t> keys(iter->attributeKeys().begin(), iter->attributeKeys().end());
    for (std::uint64_t key : keys) sm.addAttrToDeletePending({intfId, type, key});
  }
}

void MrpLib::mrpCleanUpIntfDatabaseAttribute(const Velo::IntfId& intfId, std::uint8_t attributeType,
                                             const std::uint64_t& attrKey) {
  QASSERT(mrpSm());
  MrpSm& sm = *mrpSm();
  if (sm.standbyMode() || !sm.active()) return;
  const Quarn::Ptr<MrpIntfTypeApplicant> stored = sm.attributeStore().mrpIntfTypeApplicant(intfId, attributeType);
  if (stored && stored->mrpAttribute(attrKey)) sm.addAttrToDeletePending({intfId, attributeType, attrKey});
}

std::uint16_t MrpLib::getNativeVlanId(const Velo::IntfId& intfId) const {
  QASSERT(mrpSm());
  const Quarn::Ptr<Bridging::SwitchIntfConfig> config = mrpSm()->brConfig()->switchIntfConfig(intfId);
  return config ? config->nativeVlan() : 0;
}

Quarn::String MrpLib::baseSpanningTreeTopo(const Velo::IntfId& intfId) const {
  QASSERT(mrpSm());
  const MrpSm& sm = *mrpSm();
  const Stp::Mode mode = sm.stpStatus()->mode();
  switch (mode) {
    case Stp::kModeMstp:
    case Stp::kModeRstp:
    case Stp::kModeStp:
      return kCistName;
    case Stp::kModeNone:
      return kNoStpName;
    default:
      break;
  }
  const std::uint16_t nativeVlan = getNativeVlanId(intfId);
  // No native VLAN, no topology: nothing governs the port.
  if (nativeVlan == 0) return {};
  const VlanId vlanId(nativeVlan);
  if (mode == Stp::kModePvst) return Stp::pvstInstanceName(vlanId.value());
  const Quarn::Ptr<Bridging::Topology::Topology> topology = sm.brTopoConfig()->topologyOfVlan(vlanId.value());
  if (!topology) return {};
  if (mode == Stp::kModeBackup) return kBackupPrefix + std::to_string(topology->number());
  return topology->name();
}

}  // namespace Mrp
