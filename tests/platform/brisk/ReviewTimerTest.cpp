#include "brisk/ReviewTimer.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

#include "support/ClockRecorder.h"

namespace Brisk {
namespace {

using MrpTest::ClockRecorder;
using MrpTest::Firing;
using Quarn::Ptr;
using Quarn::Seconds;
using Quarn::SimClock;

constexpr Seconds kFill = 1.0;
constexpr std::uint32_t kCredits = 4;
constexpr Seconds kDelay = 0.1;

class ReviewTimerTest : public ::testing::Test {
 protected:
  std::vector<Seconds> firedAt() const {
    std::vector<Seconds> times;
    for (const Firing& f : log_) times.push_back(f.second);
    return times;
  }
  // Each review asks for the next one, as a reviewer with work left does.
  void keepReviewing() {
    review_.action = [this] { timer_->doUpdateNextReview(); };
  }

  Ptr<SimClock> clock_{new SimClock};
  std::vector<Firing> log_;
  ClockRecorder review_{clock_.ptr(), "review", &log_};
  Ptr<ReviewTimer> timer_{new ReviewTimer(&review_, kFill, kCredits, kDelay, kDelay)};
};

void expectTimes(const std::vector<Seconds>& actual, const std::vector<Seconds>& expected) {
  ASSERT_EQ(actual.size(), expected.size());
  for (std::size_t i = 0; i < actual.size(); ++i) EXPECT_NEAR(actual[i], expected[i], 1e-9) << "review " << i;
}

TEST_F(ReviewTimerTest, ReportsItsConfiguration) {
  EXPECT_EQ(timer_->notifiee(), &review_);
  EXPECT_EQ(timer_->fillInterval(), kFill);
  EXPECT_EQ(timer_->maxCredits(), kCredits);
  EXPECT_EQ(timer_->minDelay(), kDelay);
  EXPECT_EQ(timer_->maxDelay(), kDelay);
  EXPECT_DOUBLE_EQ(timer_->credits(), 4.0) << "starts with every credit";
  EXPECT_FALSE(timer_->reviewPending());
}

TEST_F(ReviewTimerTest, ReviewRunsAtTheDelayAfterTheRequestAndSpendsACredit) {
  clock_->advance(5);
  timer_->doUpdateNextReview();
  EXPECT_TRUE(timer_->reviewPending());
  EXPECT_DOUBLE_EQ(timer_->credits(), 3.0);
  clock_->advance(0.1 - 1e-9);
  EXPECT_TRUE(log_.empty()) << "not before the minimum delay";
  clock_->advance(1e-9);
  expectTimes(firedAt(), {5.1});
  EXPECT_FALSE(timer_->reviewPending());
}

TEST_F(ReviewTimerTest, RequestWhileAReviewIsPendingChangesNothing) {
  timer_->doUpdateNextReview();
  clock_->advance(0.05);
  timer_->doUpdateNextReview();
  EXPECT_NEAR(timer_->credits(), 3.05, 1e-9) << "no second credit spent";
  clock_->advance(10);
  expectTimes(firedAt(), {0.1});
}

TEST_F(ReviewTimerTest, BurstRunsAtTheShortDelayWhileCreditsLastThenOncePerFillInterval) {
  keepReviewing();
  timer_->doUpdateNextReview();
  clock_->advance(4.05);
  expectTimes(firedAt(), {0.1, 0.2, 0.3, 0.4, 1.0, 2.0, 3.0, 4.0});
}

TEST_F(ReviewTimerTest, CreditsComeBackOnePerFillIntervalUpToTheMaximum) {
  for (int i = 0; i < 4; ++i) {
    timer_->doUpdateNextReview();
    clock_->advance(0.1);
  }
  EXPECT_NEAR(timer_->credits(), 0.4, 1e-9);
  clock_->advance(1.6);
  EXPECT_NEAR(timer_->credits(), 2.0, 1e-9);
  clock_->advance(100);
  EXPECT_DOUBLE_EQ(timer_->credits(), 4.0) << "never above the maximum";
}

TEST_F(ReviewTimerTest, IdleTimerRefillsForANewBurst) {
  keepReviewing();
  timer_->doUpdateNextReview();
  clock_->advance(1.05);  // four short reviews and one rate-limited one
  review_.action = nullptr;
  clock_->advance(10);  // idle: every credit comes back
  log_.clear();
  keepReviewing();
  timer_->doUpdateNextReview();
  clock_->advance(0.5);
  expectTimes(firedAt(), {11.15, 11.25, 11.35, 11.45});
}

TEST_F(ReviewTimerTest, PartlyRefilledTimerRunsOnlyTheCreditsItHasAtTheShortDelay) {
  keepReviewing();
  timer_->doUpdateNextReview();
  clock_->advance(1.05);  // credits used up by the review at 1.0
  review_.action = nullptr;
  clock_->advance(2.95);  // the review asked for at 1.0 ran at 2.0; two credits back at 4.0
  log_.clear();
  keepReviewing();
  timer_->doUpdateNextReview();
  clock_->advance(1.5);
  expectTimes(firedAt(), {4.1, 4.2, 5.0});
}

TEST_F(ReviewTimerTest, InvalidArgumentsAreRefused) {
  ClockRecorder unbound(nullptr, "unbound", &log_);
  auto make = [](Quarn::Clock::Notifiee* n, Seconds fill, std::uint32_t credits, Seconds minDelay, Seconds maxDelay) {
    Ptr<ReviewTimer> timer = new ReviewTimer(n, fill, credits, minDelay, maxDelay);
  };
  EXPECT_THROW(make(nullptr, kFill, kCredits, kDelay, kDelay), std::invalid_argument);
  EXPECT_THROW(make(&unbound, kFill, kCredits, kDelay, kDelay), std::invalid_argument);
  EXPECT_THROW(make(&review_, 0, kCredits, kDelay, kDelay), std::invalid_argument);
  EXPECT_THROW(make(&review_, kFill, 0, kDelay, kDelay), std::invalid_argument);
  EXPECT_THROW(make(&review_, kFill, kCredits, -0.1, kDelay), std::invalid_argument);
  EXPECT_THROW(make(&review_, kFill, kCredits, 0.2, 0.1), std::invalid_argument);
  EXPECT_NO_THROW(make(&review_, kFill, kCredits, 0, 0.5));
}

}  // namespace
}  // namespace Brisk
