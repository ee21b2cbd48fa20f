#include "quarn/Clock.h"

#include <gtest/gtest.h>

#include "support/ClockRecorder.h"

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace Quarn {
namespace {

using MrpTest::Firing;
using Recorder = MrpTest::ClockRecorder;

class ClockTest : public ::testing::Test {
 protected:
  std::unique_ptr<Recorder> recorder(const std::string& name) {
    return std::make_unique<Recorder>(clock_.ptr(), name, &log_);
  }

  Ptr<SimClock> clock_{new SimClock};
  std::vector<Firing> log_;
};

TEST_F(ClockTest, FiresInTimeOrderWithTiesInSchedulingOrder) {
  auto a = recorder("a"), b = recorder("b"), c = recorder("c"), d = recorder("d");
  a->timeIs(2);
  b->timeIs(1);
  c->timeIs(2);
  d->timeIs(1);
  clock_->advance(3);
  EXPECT_EQ(log_, (std::vector<Firing>{{"b", 1}, {"d", 1}, {"a", 2}, {"c", 2}}));
}

TEST_F(ClockTest, AdvanceLandsExactlyOnTheEnd) {
  auto a = recorder("a");
  a->timeIs(0.7);
  clock_->advance(0.5);
  EXPECT_EQ(clock_->now(), 0.5);
  EXPECT_TRUE(log_.empty());
  clock_->advance(0.75);
  EXPECT_EQ(clock_->now(), 1.25);
  EXPECT_EQ(log_, (std::vector<Firing>{{"a", 0.7}}));
}

TEST_F(ClockTest, ReschedulingReplacesTheEarlierTime) {
  auto a = recorder("a");
  a->timeIs(1);
  a->timeIs(2);
  EXPECT_EQ(a->time(), 2);
  EXPECT_EQ(clock_->scheduledCount(), 1u);
  clock_->advance(3);
  EXPECT_EQ(log_, (std::vector<Firing>{{"a", 2}}));
  EXPECT_EQ(a->time(), kInfinity);
}

TEST_F(ClockTest, SchedulingAtInfinityCancels) {
  auto a = recorder("a");
  a->timeIs(1);
  a->timeIs(kInfinity);
  EXPECT_EQ(clock_->nextTime(), kInfinity);
  clock_->advance(2);
  EXPECT_TRUE(log_.empty());
}

TEST_F(ClockTest, NotifieeSchedulesAnotherDuringOnTime) {
  auto a = recorder("a"), b = recorder("b");
  a->action = [&] { b->timeIs(clock_->now() + 0.5); };
  a->timeIs(1);
  clock_->advance(2);
  EXPECT_EQ(log_, (std::vector<Firing>{{"a", 1}, {"b", 1.5}}));
}

TEST_F(ClockTest, NotifieeReschedulingItselfFiresPeriodically) {
  auto a = recorder("a");
  a->action = [&] { a->timeIs(clock_->now() + 1); };
  a->timeIs(1);
  clock_->advance(3.5);
  EXPECT_EQ(log_, (std::vector<Firing>{{"a", 1}, {"a", 2}, {"a", 3}}));
  EXPECT_EQ(a->time(), 4);
}

TEST_F(ClockTest, FireDueFiresOnlyWhatIsDueNow) {
  auto a = recorder("a"), b = recorder("b");
  a->timeIs(0);
  b->timeIs(1);
  EXPECT_EQ(clock_->fireDue(), 1u);
  EXPECT_EQ(log_, (std::vector<Firing>{{"a", 0}}));
  EXPECT_EQ(clock_->nextTime(), 1);
}

TEST_F(ClockTest, DestroyingANotifieeCancelsIt) {
  auto a = recorder("a");
  a->timeIs(1);
  a.reset();
  EXPECT_EQ(clock_->scheduledCount(), 0u);
  clock_->advance(2);
  EXPECT_TRUE(log_.empty());
}

TEST_F(ClockTest, MovingToAnotherClockCancelsThePendingTime) {
  Ptr<SimClock> other(new SimClock);
  auto a = recorder("a");
  a->timeIs(1);
  a->notifierIs(other.ptr());
  EXPECT_EQ(a->time(), kInfinity);
  EXPECT_EQ(clock_->scheduledCount(), 0u);
}

TEST_F(ClockTest, NotifieeOutlivingItsClockIsDetached) {
  auto a = recorder("a");
  a->timeIs(1);
  clock_ = nullptr;
  EXPECT_EQ(a->notifier(), nullptr);
  EXPECT_EQ(a->time(), kInfinity);
  a->timeIs(2);  // no clock to reach: stays unscheduled
  EXPECT_EQ(a->time(), kInfinity);
}

TEST_F(ClockTest, UnscheduledNotifieeOutlivingItsClockIsDetached) {
  auto a = recorder("a");
  clock_ = nullptr;
  EXPECT_EQ(a->notifier(), nullptr);
  a->timeIs(2);
  EXPECT_EQ(a->time(), kInfinity);
}

}  // namespace
}  // namespace Quarn
