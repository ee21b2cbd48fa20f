#pragma once

#include <cstdint>

#include "quarn/Clock.h"
#include "quarn/Ptr.h"

namespace Brisk {

// A credit-based rate limiter for reviews of pending work. Each review asked
// for with doUpdateNextReview() runs the notifiee's onTime() once, on the
// notifiee's clock, and spends one credit. Credits come back continuously,
// one per fillInterval, up to maxCredits; the timer starts full. With a
// credit in hand a review runs minDelay after the request; without one it
// runs when the next credit is back (and never sooner than minDelay). So up
// to maxCredits reviews run back to back at the short delay, after which
// they run about once per fillInterval.
class ReviewTimer : public Quarn::PtrInterface {
 public:
  // `notifiee` must be bound to a clock and outlive the timer. Throws
  // std::invalid_argument for a null or unbound notifiee, a fillInterval not
  // above 0, 0 credits, a negative minDelay or a maxDelay below minDelay.
  ReviewTimer(Quarn::Clock::Notifiee* notifiee, Quarn::Seconds fillInterval, std::uint32_t maxCredits,
              Quarn::Seconds minDelay, Quarn::Seconds maxDelay);
  ReviewTimer(const ReviewTimer&) = delete;
  ReviewTimer& operator=(const ReviewTimer&) = delete;

  Quarn::Clock::Notifiee* notifiee() const { return notifiee_; }
  Quarn::Seconds fillInterval() const { return fillInterval_; }
  std::uint32_t maxCredits() const { return maxCredits_; }
  Quarn::Seconds minDelay() const { return minDelay_; }
  // A review with a credit in hand runs at minDelay, within this bound.
  Quarn::Seconds maxDelay() const { return maxDelay_; }

  // Credits available now, fractions included; below 0 while reviews
  // already scheduled are still waiting for theirs.
  double credits() const { return creditsAt(clock().now()); }

  // A review is scheduled and has not run yet.
  bool reviewPending() const { return notifiee_->time() != Quarn::kInfinity; }
  // Schedules one review; does nothing while one is pending.
  void doUpdateNextReview();

 protected:
  ~ReviewTimer() override = default;

 private:
  Quarn::Clock& clock() const { return *notifiee_->notifier(); }
  double creditsAt(Quarn::Seconds t) const;

  Quarn::Clock::Notifiee* notifiee_;
  Quarn::Seconds fillInterval_;
  std::uint32_t maxCredits_;
  Quarn::Seconds minDelay_;
  Quarn::Seconds maxDelay_;
  double credits_;               // credits at creditTime_, after the spending then
  Quarn::Seconds creditTime_;
};

}  // namespace Brisk
