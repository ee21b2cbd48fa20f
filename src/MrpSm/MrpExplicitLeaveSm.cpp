#include "MrpSm/MrpExplicitLeaveSm.h"

#include "MrpSm/MrpSmTrace.h"
#include "quarn/Assert.h"

namespace Mrp {

MrpExplicitLeaveSm::MrpExplicitLeaveSm(MrpExplicitLeaveSmMap::Group* group, std::uint64_t key)
    : Notifiee(group->map().timerWheel()), group_(group), key_(key) {
  handleInitialized();
}

void MrpExplicitLeaveSm::handleInitialized() {
  MRP_TRACE(8, "void Mrp::MrpLeaveSm::handleInitialized()");
  doScheduleLeaveTimer(group_->map().engine().leaveTime());
}

void MrpExplicitLeaveSm::leavePendingIs(std::uint64_t key, bool pending) {
  QASSERT(key == key_);
  pending_ = pending;
}

std::vector<std::uint64_t> MrpExplicitLeaveSm::leavePendingKeys() const {
  if (!pending_) return {};
  return {key_};
}

void MrpExplicitLeaveSm::doScheduleLeaveTimer(Quarn::Seconds seconds) {
  const Quarn::Seconds expiry = notifier()->clock()->now() + seconds;
  MRP_TRACE(8, "void Mrp::MrpLeaveSm::doScheduleLeaveTimer(const Seconds&)" << " key: " << mrpAttribute());
  MRP_TRACE(8, "Leave timer will expire at: " << expiry);
  timeIs(expiry);
}

void MrpExplicitLeaveSm::handleLeaveTimer() {
  MrpExplicitLeaveSmMap& map = group_->map();
  const MrpAttribute attribute = mrpAttribute();
  MRP_TRACE(7, "MrpLeaveSm::handleLeaveTimer() " << attribute);
  MrpExplicitLeaveSm* const outer = map.firingIs(this);
  map.engine().drainPort(attribute.intfId);
  if (pending_) map.engine().leaveTimer(attribute);
  map.firingDone(*this, outer);  // may free this machine
}

}  // namespace Mrp
