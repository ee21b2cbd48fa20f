#include "brisk/ReviewTimer.h"

#include <algorithm>
#include <stdexcept>

namespace Brisk {

namespace {

void requireValid(Quarn::Clock::Notifiee* notifiee, Quarn::Seconds fillInterval, std::uint32_t maxCredits,
                  Quarn::Seconds minDelay, Quarn::Seconds maxDelay) {
  if (!notifiee || !notifiee->notifier()) throw std::invalid_argument("ReviewTimer: notifiee without a clock");
  if (!(fillInterval > 0)) throw std::invalid_argument("ReviewTimer: fillInterval must be above 0");
  if (maxCredits == 0) throw std::invalid_argument("ReviewTimer: maxCredits must be above 0");
  if (!(minDelay >= 0) || !(maxDelay >= minDelay)) {
    throw std::invalid_argument("ReviewTimer: need 0 <= minDelay <= maxDelay");
  }
}

}  // namespace

ReviewTimer::ReviewTimer(Quarn::Clock::Notifiee* notifiee, Quarn::Seconds fillInterval, std::uint32_t maxCredits,
                         Quarn::Seconds minDelay, Quarn::Seconds maxDelay)
    : notifiee_((requireValid(notifiee, fillInterval, maxCredits, minDelay, maxDelay), notifiee)),
      fillInterval_(fillInterval),
      maxCredits_(maxCredits),
      minDelay_(minDelay),
      maxDelay_(maxDelay),
      credits_(maxCredits),
      creditTime_(clock().now()) {}

double ReviewTimer::creditsAt(Quarn::Seconds t) const {
  return std::min<double>(maxCredits_, credits_ + (t - creditTime_) / fillInterval_);
}

void ReviewTimer::doUpdateNextReview() {
  if (reviewPending()) return;
  const Quarn::Seconds now = clock().now();
  const double available = creditsAt(now);
  // Without a whole credit, wait until the missing fraction has come back.
  const Quarn::Seconds wait = available >= 1 ? 0 : (1 - available) * fillInterval_;
  // The review spends its credit now; the balance may go below 0 until then.
  credits_ = available - 1;
  creditTime_ = now;
  notifiee_->timeIs(now + std::max(minDelay_, wait));
}

}  // namespace Brisk
