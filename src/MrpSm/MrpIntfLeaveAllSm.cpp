#include "MrpSm/MrpIntfLeaveAllSm.h"

#include <algorithm>
#include <vector>

#include "MrpSm/MrpSm.h"
#include "MrpSm/MrpSmTrace.h"
#include "quarn/Collection.h"

namespace Mrp {

MrpIntfLeaveAllSm::MrpIntfLeaveAllSm(Velo::IntfId intfId, MrpSm* mrpSm, Quarn::Ptr<Brisk::TimerWheel> timerWheel)
    : intfId_(std::move(intfId)), mrpSm_(mrpSm), timerWheel_(std::move(timerWheel)),
      leaveAllTimer_(timerWheel_.ptr(), this) {
  handleInitialized();
}

void MrpIntfLeaveAllSm::handleInitialized() {
  MRP_TRACE(8, "void Mrp::MrpIntfLeaveAllSm::handleInitialized()");
  initializedIs();
  leaveAllTimer_.timeIs(Quarn::kInfinity);
}

Quarn::Seconds MrpIntfLeaveAllSm::now() const { return timerWheel_->clock()->now(); }

Quarn::Ptr<MrpLeaveAllTimer> MrpIntfLeaveAllSm::leaveAllPending(std::uint8_t attrType) const {
  return Quarn::entryOf(leaveAllPending_, attrType);
}

Quarn::Ptr<MrpLeaveAllTimer> MrpIntfLeaveAllSm::leaveAllPendingIs(std::uint8_t attrType) {
  return Quarn::entryIs(leaveAllPending_, attrType, [attrType] { return new MrpLeaveAllTimer(attrType); });
}

void MrpIntfLeaveAllSm::leaveAllTimePublish(std::uint8_t attrType, Quarn::Seconds period) const {
  mrpSm_->mrpStatus()->applicationDatabaseIs(mrpSm_->mrpLib()->application())->leaveAllTimeIs({intfId_, attrType},
                                                                                              period);
}

void MrpIntfLeaveAllSm::doScheduleLeaveAllTimer(Quarn::Seconds period) {
  const Quarn::Seconds t = now() + period;
  if (t <= leaveAllTimer_.time()) leaveAllTimer_.timeIs(t);
}

void MrpIntfLeaveAllSm::doRestartLeaveAllTimer(std::uint8_t attrType, Quarn::Seconds period) {
  const Quarn::Ptr<MrpLeaveAllTimer> timer = leaveAllPending(attrType);
  if (!timer) return;
  timer->expiryTimeIs(now() + period);
  doScheduleLeaveAllTimer(period);
  leaveAllTimePublish(attrType, period);
}

void MrpIntfLeaveAllSm::handleLeaveAllTimer() {
  Quarn::Ptr<MrpIntfLeaveAllSm> self(this);  // what the LeaveAll sets off may disable the port
  MRP_TRACE(8, "void Mrp::MrpIntfLeaveAllSm::handleLeaveAllTimer()" << " intf: " << intfId_);
  const Quarn::Seconds period = getLeaveAllTime(*mrpSm_, intfId_);
  Quarn::Seconds next = Quarn::kInfinity;
  std::vector<std::uint8_t> types;
  for (const auto& [attrType, timer] : leaveAllPending_) types.push_back(attrType);
  for (std::uint8_t attrType : types) {
    handleTxLeaveAll(attrType, period);
    if (const Quarn::Ptr<MrpLeaveAllTimer> timer = leaveAllPending(attrType)) {
      next = std::min(next, timer->expiryTime());
    }
  }
  mrpSm_->mrpTransmitTxAttributes(intfId_);
  // A type that is overdue is served on the next tick; so is one due now,
  // which a period of 0 makes, so the timer cannot fire again and again
  // within the tick.
  if (now() >= next) next = now() + kEarlyService;
  leaveAllTimer_.timeIs(next);
}

void MrpIntfLeaveAllSm::handleTxLeaveAll(std::uint8_t attrType, Quarn::Seconds period) {
  const Quarn::Ptr<MrpLeaveAllTimer> timer = leaveAllPending(attrType);
  if (!timer) return;
  // Served up to 0.1 s early, never later than the timer allows.
  if (now() - timer->expiryTime() <= -kEarlyService) return;
  MRP_TRACE(7, " handleTxLeaveAll. type = " << static_cast<unsigned>(attrType) << " intfId = " << intfId_);
  MrpParseContext& context = *mrpSm_->parseContext();
  context.sendTxLvAllIs(true);
  MRP_TRACE(7, " sendTxLvAllIs = " << context.sendTxLvAll());
  mrpSm_->leaveAllSm()->mrpPostLeaveAllToSm(intfId_, attrType, MrpApplicantEvent::txLvAll, MrpRegistrarEvent::txLvAll);
  // No message of the type took the LeaveAll along: it goes out alone.
  if (context.sendTxLvAll()) mrpSm_->mrpLib()->mrpSendLeaveAll(attrType, intfId_);
  context.sendTxLvAllIs(false);
  timer->expiryTimeIs(now() + period);
  leaveAllTimePublish(attrType, period);
}

void MrpIntfLeaveAllSm::handleCfgIntfLeaveAllTime() {
  const Quarn::Seconds period = getLeaveAllTime(*mrpSm_, intfId_);
  for (const auto& [attrType, timer] : leaveAllPending_) {
    timer->expiryTimeIs(now() + period);
    leaveAllTimePublish(attrType, period);
  }
  doScheduleLeaveAllTimer(period);
}

}  // namespace Mrp
