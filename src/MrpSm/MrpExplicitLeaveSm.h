#pragma once

#include <cstdint>
#include <vector>

#include "MrpModel/MrpAttribute.h"
#include "MrpSm/MrpExplicitLeaveSmMap.h"
#include "brisk/TimerWheel.h"
#include "quarn/Types.h"

namespace Mrp {

// The leave machine of one attribute that a received Lv put in LV: its own
// timer, and its own key pending until the attribute joins again or the
// timer fires. At expiry the port's waiting frame is processed, the key, if
// still pending, gets leavetimer!, and the machine leaves its map. Made and
// owned by MrpExplicitLeaveSmMap; the timer is the record's base, so a
// machine is one small allocation.
class MrpExplicitLeaveSm : public Brisk::TimerWheel::Notifiee {
 public:
  MrpExplicitLeaveSm(const MrpExplicitLeaveSm&) = delete;
  MrpExplicitLeaveSm& operator=(const MrpExplicitLeaveSm&) = delete;

  // The machine's key in the registrar's map: the attribute it times.
  MrpAttribute mrpAttribute() const { return {group_->intfId(), group_->attributeType(), key_}; }
  // Whether the machine is still in its map.
  bool filed() const { return filed_; }

  // Its own key is the only one the machine times.
  bool leavePending(std::uint64_t key) const { return key == key_ && pending_; }
  void leavePendingIs(std::uint64_t key, bool pending);
  void leavePendingDel(std::uint64_t key) { pending_ = pending_ && key != key_; }
  void leavePendingDelAll() { pending_ = false; }
  std::vector<std::uint64_t> leavePendingKeys() const;

  // (Re)starts the timer at now + `seconds`.
  void doScheduleLeaveTimer(Quarn::Seconds seconds);
  // When the timer fires; kInfinity when it is not armed.
  Quarn::Seconds leaveTimerTime() const { return time(); }

  // Expiry: the port's waiting frame first, then leavetimer! for the key if
  // it is still pending, then the machine leaves its map (if it is still in it).
  void handleLeaveTimer();
  void onTime() override { handleLeaveTimer(); }

 private:
  friend class MrpExplicitLeaveSmMap;

  // Arms the timer with the engine's leave time.
  MrpExplicitLeaveSm(MrpExplicitLeaveSmMap::Group* group, std::uint64_t key);
  void handleInitialized();

  MrpExplicitLeaveSmMap::Group* group_;
  std::uint64_t key_;
  bool pending_ = false;
  bool filed_ = true;
};

}  // namespace Mrp
