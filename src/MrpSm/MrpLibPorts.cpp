#include "MrpSm/MrpLib.h"
#include "MrpSm/MrpSm.h"
#include "MrpSm/MrpSmTrace.h"
#include "quarn/Assert.h"

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

}  // namespace Mrp
