#include "MrpSm/MrpLeaveSm.h"

#include <algorithm>
#include <vector>

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
  doScheduleLeaveTimer(mrpSm_->mrpConfig()->leaveTime());
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
  doDrainPort();
  // A key handled here may leave the set: walk what is pending now.
  for (std::uint64_t key : leavePendingKeys()) handleLeavePending(key);
  MrpRegistrarSm& registrar = *mrpSm_->registrarSm();
  if (registrar.leaveSm(mrpAttribute_) == self) {
    registrar.leaveSmDel(mrpAttribute_);
  } else if (registrar.explicitLeaveSm(mrpAttribute_) == self) {
    registrar.explicitLeaveSmDel(mrpAttribute_);
  }
}

void MrpLeaveSm::doDrainPort() {
  const Quarn::Ptr<MrpIntfPamSm> intfPamSm = mrpSm_->mrpPamSm()->mrpIntfPamSm(mrpAttribute_.intfId);
  if (!intfPamSm) return;
  const Velo::Pam& pam = *intfPamSm->pam();
  // Stops too when the socket reports data but yields no frame, which would
  // otherwise never end.
  for (std::uint64_t taken = pam.rxPkts(); pam.hasDataOnSocket(); taken = pam.rxPkts()) {
    intfPamSm->handleMrpdu();
    if (pam.rxPkts() == taken) break;
  }
}

void MrpLeaveSm::handleLeavePending(std::uint64_t key) {
  if (!leavePending(key)) return;
  mrpSm_->mrpFillContextFromDatabase({mrpAttribute_.intfId, mrpAttribute_.attributeType, key});
  MrpRegistrarSm& registrar = *mrpSm_->registrarSm();
  registrar.registrarEventIs(MrpRegistrarEvent::leaveTimer);
  registrar.handleRegistrarEvent();
}

}  // namespace Mrp
