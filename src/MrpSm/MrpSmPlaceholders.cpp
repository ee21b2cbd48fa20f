// Calls into work that has not landed yet: declared where they belong,
// with empty bodies until their own pieces replace them.

#include "MrpSm/MrpLeaveAllSm.h"
#include "MrpSm/MrpSm.h"
#include "MrpSm/MrpSmTrace.h"

namespace Mrp {

// LeaveAll machines. Enable and disable already trace their signatures, as
// they will: that is how a caller is seen until they start timers.
void MrpLeaveAllSm::mrpEnableLeaveAllPending(const Velo::IntfId&) {
  MRP_TRACE(8, "void Mrp::MrpLeaveAllSm::mrpEnableLeaveAllPending(Velo::IntfId)");
}
void MrpLeaveAllSm::mrpDisableLeaveAllPending(const Velo::IntfId&) {
  MRP_TRACE(8, "void Mrp::MrpLeaveAllSm::mrpDisableLeaveAllPending(Velo::IntfId)");
}
void MrpLeaveAllSm::mrpRestartLeaveAllTimer(const Velo::IntfId&, std::uint8_t, Quarn::Seconds) {}
Quarn::Seconds getLeaveAllTime(const MrpSm&, const Velo::IntfId&) { return 0; }

}  // namespace Mrp
