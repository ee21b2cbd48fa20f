#include "MrpSm/MrpDatabaseReviewSm.h"

#include "MrpSm/MrpSmTrace.h"

namespace Mrp {

MrpDatabaseReviewSm::MrpDatabaseReviewSm(const char* name, MrpSm* mrpSm, MrpAttrLogSm* mrpAttrLogSm,
                                         Quarn::Ptr<Quarn::Clock> clock)
    : name_(name),
      mrpSm_(mrpSm),
      mrpAttrLogSm_(mrpAttrLogSm),
      clock_(std::move(clock)),
      clockReactor_(clock_.ptr(), this) {
  handleInitialized();
}

void MrpDatabaseReviewSm::handleInitialized() {
  MRP_TRACE(8, name_ << "::handleInitialized()");
  reviewTimerIs(&clockReactor_, kFillInterval, kMaxCredits, kMinDelay, kMaxDelay);
  initializedIs();
}

void MrpDatabaseReviewSm::reviewTimerIs(Quarn::Clock::Notifiee* notifiee, Quarn::Seconds fillInterval,
                                        std::uint32_t maxCredits, Quarn::Seconds minDelay, Quarn::Seconds maxDelay) {
  reviewTimer_ = new Brisk::ReviewTimer(notifiee, fillInterval, maxCredits, minDelay, maxDelay);
}

void MrpDatabaseReviewSm::doUpdateReviewTimer() {
  MRP_TRACE(8, name_ << "::doUpdateReviewTimer()");
  if (reviewTimer_->reviewPending()) return;
  if (!pendingEmpty()) reviewTimer_->doUpdateNextReview();
}

}  // namespace Mrp
