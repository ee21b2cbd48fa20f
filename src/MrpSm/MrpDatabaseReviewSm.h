#pragma once

#include <cstdint>

#include "MrpSm/MrpAttrLogSm.h"
#include "brisk/ReviewTimer.h"
#include "quarn/Clock.h"
#include "quarn/Lifecycle.h"
#include "quarn/Ptr.h"

namespace Mrp {

class MrpSm;

// What the machines that commit batched store updates share: a review timer
// on the clock that paces reviews by credits, and the check of the
// attribute log that makes a review stop early. Each machine says what its
// pending map is and how a review commits it.
class MrpDatabaseReviewSm : public Quarn::PtrInterface, public Quarn::Lifecycle {
 public:
  // Four reviews back to back, each 0.1 s after it was asked for, then
  // about one per second.
  static constexpr Quarn::Seconds kFillInterval = 1.0;
  static constexpr std::uint32_t kMaxCredits = 4;
  static constexpr Quarn::Seconds kMinDelay = 0.1;
  static constexpr Quarn::Seconds kMaxDelay = 0.1;

  MrpDatabaseReviewSm(const MrpDatabaseReviewSm&) = delete;
  MrpDatabaseReviewSm& operator=(const MrpDatabaseReviewSm&) = delete;

  MrpSm* mrpSm() const { return mrpSm_; }
  MrpAttrLogSm* mrpAttrLogSm() const { return mrpAttrLogSm_; }
  const Quarn::Ptr<Quarn::Clock>& clock() const { return clock_; }
  const Quarn::Ptr<Brisk::ReviewTimer>& reviewTimer() const { return reviewTimer_; }

  void handleInitialized();
  void reviewTimerIs(Quarn::Clock::Notifiee* notifiee, Quarn::Seconds fillInterval, std::uint32_t maxCredits,
                     Quarn::Seconds minDelay, Quarn::Seconds maxDelay);
  // Asks for a review unless one is pending or there is nothing to commit.
  void doUpdateReviewTimer();
  // Commits what the log takes, then asks for the next review if anything is left.
  virtual void doReview() = 0;

 protected:
  // `name` prefixes the traces, e.g. "MrpDatabaseAddSm".
  MrpDatabaseReviewSm(const char* name, MrpSm* mrpSm, MrpAttrLogSm* mrpAttrLogSm, Quarn::Ptr<Quarn::Clock> clock);
  ~MrpDatabaseReviewSm() override = default;

  const char* name() const { return name_; }
  virtual bool pendingEmpty() const = 0;
  // A review stops while the watchdog reports the log's output clogged.
  bool attrLogOutClogged() const { return mrpAttrLogSm_ && mrpAttrLogSm_->isAttrLogOutClogged(); }

 private:
  class ClockReactor : public Quarn::Clock::Notifiee {
   public:
    ClockReactor(Quarn::Clock* clock, MrpDatabaseReviewSm* owner) : Notifiee(clock), owner_(owner) {}
    void onTime() override { owner_->doReview(); }

   private:
    MrpDatabaseReviewSm* owner_;
  };

  const char* name_;
  MrpSm* mrpSm_;
  MrpAttrLogSm* mrpAttrLogSm_;
  Quarn::Ptr<Quarn::Clock> clock_;
  ClockReactor clockReactor_;
  Quarn::Ptr<Brisk::ReviewTimer> reviewTimer_;
};

}  // namespace Mrp
