#include "MrpSm/MrpLeaveSm.h"

#include <algorithm>
#include <vector>

#include "MrpSm/MrpConfigTime.h"
#include "MrpSm/MrpSm.h"
#include "MrpSm/MrpSmTrace.h"
#include "quarn/System.h"

namespace Mrp {

MrpLeaveSm::MrpLeaveSm(const MrpAttribute& mrpAttribute, MrpSm* mrpSm, Quarn::Ptr<Brisk::TimerWheel> timerWheel)
    : mrpAttribute_(mrpAttribute),
      mrpSm_(mrpSm),
      timerWheel_(std::move(timerWheel)),
      leaveTimer_(timerWheel_.ptr(), this) {
  handleInitialized();
}

void MrpLeaveSm::handleInitialized() {
  MRP_TRACE(8, "void Mrp::MrpLeaveSm::handleInitialized()");
  initializedIs();
  doScheduleLeaveTimer(mrpConfigTime("leaveTime", mrpSm_->mrpConfig()->leaveTime()));
}

void MrpLeaveSm::doScheduleLeaveTimer(Quarn::Seconds seconds) {
  const Quarn::Seconds expiry = timerWheel_->clock()->now() + seconds;
  MRP_TRACE(8, "void Mrp::MrpLeaveSm::doScheduleLeaveTimer(const Seconds&)" << " key: " << mrpAttribute_);
  MRP_TRACE(8, "Leave timer will expire at: " << expiry);
  leaveTimer_.timeIs(expiry);
}

void MrpLeaveSm::handleLeaveTimer() {
  Quarn::Ptr<MrpLeaveSm> self(this);  // leaving the registrar's map drops the last reference
  MRP_TRACE(7, "MrpLeaveSm::handleLeaveTimer() " << mrpAttribute_);
  doDrainPort(*mrpSm_, mrpAttribute_.intfId);
  // A key handled here may leave the set: walk what is pending now.
  for (std::uint64_t key : leavePendingKeys()) handleLeavePending(key);
  MrpRegistrarSm& registrar = *mrpSm_->registrarSm();
  if (registrar.leaveSm(mrpAttribute_) == self) registrar.leaveSmDel(mrpAttribute_);
}

void MrpLeaveSm::doDrainPort(MrpSm& mrpSm, const Velo::IntfId& intfId) {
  const Quarn::Ptr<MrpIntfPamSm> intfPamSm = mrpSm.mrpPamSm()->mrpIntfPamSm(intfId);
  // One frame: a socket that reports data but yields none is left alone.
  if (intfPamSm && intfPamSm->pam()->hasDataOnSocket()) intfPamSm->handleMrpdu();
}

void MrpLeaveSm::handleLeavePending(std::uint64_t key) {
  if (leavePending(key)) doLeaveTimer(*mrpSm_, {mrpAttribute_.intfId, mrpAttribute_.attributeType, key});
}

void MrpLeaveSm::doLeaveTimer(MrpSm& mrpSm, const MrpAttribute& attribute) {
  mrpSm.mrpFillContextFromDatabase(attribute);
  MrpRegistrarSm& registrar = *mrpSm.registrarSm();
  registrar.registrarEventIs(MrpRegistrarEvent::leaveTimer);
  registrar.handleRegistrarEvent();
}

}  // namespace Mrp
