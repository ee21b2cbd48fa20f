#include "brisk/TimerWheel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace Brisk {
namespace {

using Quarn::kInfinity;
using Quarn::Ptr;
using Quarn::Seconds;
using Quarn::SimClock;

using Firing = std::pair<std::string, Seconds>;  // who fired, and when

// Records each onTime() with the clock's time, then runs an optional action.
class Recorder : public TimerWheel::Notifiee {
 public:
  Recorder(TimerWheel* wheel, std::string name, std::vector<Firing>* log)
      : Notifiee(wheel), clock_(wheel->clock()), name_(std::move(name)), log_(log) {}
  void onTime() override {
    log_->emplace_back(name_, clock_->now());
    if (action) action();
  }
  std::function<void()> action;

 private:
  Ptr<Quarn::Clock> clock_;
  std::string name_;
  std::vector<Firing>* log_;
};

constexpr std::uint32_t kTickMsecs = 100;

class TimerWheelTest : public ::testing::Test {
 protected:
  void wheelIs(std::uint32_t maxTicks, bool preserveOrder = true) {
    wheel_ = new TimerWheel(clock_, kTickMsecs, maxTicks, preserveOrder, 4);
  }
  std::unique_ptr<Recorder> recorder(const std::string& name) {
    return std::make_unique<Recorder>(wheel_.ptr(), name, &log_);
  }

  Ptr<SimClock> clock_{new SimClock};
  Ptr<TimerWheel> wheel_{new TimerWheel(clock_, kTickMsecs, 16, true, 4)};
  std::vector<Firing> log_;
};

TEST_F(TimerWheelTest, ReportsItsConfiguration) {
  EXPECT_EQ(wheel_->clock(), Ptr<Quarn::Clock>(clock_));
  EXPECT_EQ(wheel_->tickMsecs(), kTickMsecs);
  EXPECT_EQ(wheel_->initialMaxTicks(), 16u);
  EXPECT_TRUE(wheel_->preserveOrder());
  EXPECT_EQ(wheel_->defaultBucketSize(), 4u);
  EXPECT_EQ(wheel_->scheduledCount(), 0u);
}

TEST_F(TimerWheelTest, FiresOnTicksWithTiesInSchedulingOrder) {
  auto a = recorder("a"), b = recorder("b"), c = recorder("c");
  a->timeIs(0.25);
  b->timeIs(0.1);
  c->timeIs(0.25);
  EXPECT_EQ(wheel_->scheduledCount(), 3u);
  clock_->advance(1);
  EXPECT_EQ(log_, (std::vector<Firing>{{"b", 0.1}, {"a", 0.3}, {"c", 0.3}}));
  EXPECT_EQ(wheel_->scheduledCount(), 0u);
}

TEST_F(TimerWheelTest, FiresOnTheFirstTickAtOrAfterItsTime) {
  struct Case {
    Seconds time;
    Seconds fired;
  };
  const Case cases[] = {
      {0.0, 0.0}, {0.1, 0.1}, {0.15, 0.2}, {0.2, 0.2}, {0.3, 0.3}, {0.7, 0.7}, {1.0001, 1.1}, {1.1, 1.1},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.time);
    clock_ = new SimClock;
    wheelIs(16);
    log_.clear();
    auto a = recorder("a");
    a->timeIs(c.time);
    clock_->advance(2);
    EXPECT_EQ(log_, (std::vector<Firing>{{"a", c.fired}}));
  }
}

TEST_F(TimerWheelTest, PastTimeOnAnIdleWheelFiresOnTheNextTick) {
  auto early = recorder("early"), past = recorder("past");
  early->timeIs(0.1);
  clock_->advance(0.35);
  past->timeIs(0.1);
  clock_->advance(1);
  EXPECT_EQ(log_, (std::vector<Firing>{{"early", 0.1}, {"past", 0.4}}));
}

TEST_F(TimerWheelTest, PastTimeOnAWaitingWheelFiresOnTheNextTick) {
  auto late = recorder("late"), past = recorder("past");
  late->timeIs(1);
  clock_->advance(0.35);  // no tick fired yet: the wheel waits for 1.0
  past->timeIs(0.1);
  clock_->advance(1);
  EXPECT_EQ(log_, (std::vector<Firing>{{"past", 0.4}, {"late", 1}}));
}

TEST_F(TimerWheelTest, ArmsTheClockForTheNextNonEmptyTickOnly) {
  EXPECT_EQ(clock_->scheduledCount(), 0u);
  auto a = recorder("a"), b = recorder("b");
  a->timeIs(0.45);
  b->timeIs(0.8);
  EXPECT_EQ(clock_->scheduledCount(), 1u);
  EXPECT_EQ(clock_->nextTime(), 0.5);
  clock_->advance(0.6);
  EXPECT_EQ(clock_->nextTime(), 0.8);
  b->timeIs(kInfinity);
  EXPECT_EQ(clock_->scheduledCount(), 0u);
}

TEST_F(TimerWheelTest, ReschedulingReplacesTheEarlierTime) {
  auto a = recorder("a");
  a->timeIs(0.2);
  a->timeIs(0.5);
  EXPECT_EQ(a->time(), 0.5);
  EXPECT_EQ(wheel_->scheduledCount(), 1u);
  clock_->advance(1);
  EXPECT_EQ(log_, (std::vector<Firing>{{"a", 0.5}}));
  EXPECT_EQ(a->time(), kInfinity);
}

TEST_F(TimerWheelTest, SchedulingAtInfinityCancels) {
  auto a = recorder("a");
  a->timeIs(0.2);
  a->timeIs(kInfinity);
  EXPECT_EQ(wheel_->scheduledCount(), 0u);
  clock_->advance(1);
  EXPECT_TRUE(log_.empty());
}

TEST_F(TimerWheelTest, TimerBeyondTheWheelFiresOnItsTick) {
  wheelIs(4);
  auto a = recorder("a"), b = recorder("b"), c = recorder("c");
  a->timeIs(1.05);
  b->timeIs(100);
  c->timeIs(100);
  clock_->advance(200);
  EXPECT_EQ(log_, (std::vector<Firing>{{"a", 1.1}, {"b", 100}, {"c", 100}}));
}

TEST_F(TimerWheelTest, TiesKeepSchedulingOrderAcrossTheOverflow) {
  wheelIs(4);
  auto a = recorder("a"), b = recorder("b"), c = recorder("c");
  a->timeIs(1.1);  // beyond the wheel until c fires
  c->action = [&] { b->timeIs(1.05); };
  c->timeIs(0.8);
  clock_->advance(2);
  EXPECT_EQ(log_, (std::vector<Firing>{{"c", 0.8}, {"a", 1.1}, {"b", 1.1}}));
}

TEST_F(TimerWheelTest, CancellingATimerBeyondTheWheel) {
  wheelIs(4);
  auto a = recorder("a"), b = recorder("b");
  a->timeIs(5);
  b->timeIs(5);
  a->timeIs(kInfinity);
  clock_->advance(10);
  EXPECT_EQ(log_, (std::vector<Firing>{{"b", 5}}));
}

TEST_F(TimerWheelTest, FiringTimerMayRescheduleItself) {
  auto a = recorder("a");
  a->action = [&] { a->timeIs(clock_->now() + 0.1); };
  a->timeIs(0.1);
  clock_->advance(0.35);
  EXPECT_EQ(log_, (std::vector<Firing>{{"a", 0.1}, {"a", 0.2}, {"a", 0.3}}));
  EXPECT_EQ(a->time(), 0.4);
}

TEST_F(TimerWheelTest, FiringTimerMayRescheduleThenCancelItself) {
  auto a = recorder("a"), b = recorder("b");
  a->action = [&] {
    a->timeIs(clock_->now());
    a->timeIs(kInfinity);
  };
  a->timeIs(0.3);
  b->timeIs(0.3);
  clock_->advance(1);
  EXPECT_EQ(log_, (std::vector<Firing>{{"a", 0.3}, {"b", 0.3}}));
  EXPECT_EQ(wheel_->scheduledCount(), 0u);
}

TEST_F(TimerWheelTest, FiringTimerMayCancelAnotherDueOnTheSameTick) {
  auto a = recorder("a"), b = recorder("b"), c = recorder("c");
  a->action = [&] { b->timeIs(kInfinity); };
  a->timeIs(0.3);
  b->timeIs(0.3);
  c->timeIs(0.3);
  clock_->advance(1);
  EXPECT_EQ(log_, (std::vector<Firing>{{"a", 0.3}, {"c", 0.3}}));
}

TEST_F(TimerWheelTest, TimerScheduledForTheFiringTickFiresInTheSamePass) {
  auto a = recorder("a"), b = recorder("b");
  a->action = [&] { b->timeIs(clock_->now()); };
  a->timeIs(0.3);
  clock_->advance(1);
  EXPECT_EQ(log_, (std::vector<Firing>{{"a", 0.3}, {"b", 0.3}}));
}

TEST_F(TimerWheelTest, WithoutPreserveOrderEveryRemainingTimerFires) {
  wheelIs(16, false);
  auto a = recorder("a"), b = recorder("b"), c = recorder("c"), d = recorder("d");
  for (auto* r : {a.get(), b.get(), c.get(), d.get()}) r->timeIs(0.3);
  a->timeIs(kInfinity);
  clock_->advance(1);
  std::sort(log_.begin(), log_.end());
  EXPECT_EQ(log_, (std::vector<Firing>{{"b", 0.3}, {"c", 0.3}, {"d", 0.3}}));
}

TEST_F(TimerWheelTest, DestroyingANotifieeCancelsIt) {
  auto a = recorder("a");
  a->timeIs(0.2);
  a.reset();
  EXPECT_EQ(wheel_->scheduledCount(), 0u);
  EXPECT_EQ(clock_->scheduledCount(), 0u);
  clock_->advance(1);
  EXPECT_TRUE(log_.empty());
}

TEST_F(TimerWheelTest, MovingToAnotherWheelCancelsThePendingTime) {
  auto a = recorder("a");
  a->timeIs(0.2);
  Ptr<TimerWheel> other(new TimerWheel(clock_, kTickMsecs, 16, true, 4));
  a->notifierIs(other.ptr());
  EXPECT_EQ(a->time(), kInfinity);
  EXPECT_EQ(wheel_->scheduledCount(), 0u);
  a->notifierIs(nullptr);
}

TEST_F(TimerWheelTest, DestroyingTheWheelFirstDetachesItsNotifiees) {
  auto scheduled = recorder("scheduled"), idle = recorder("idle");
  scheduled->timeIs(0.2);
  wheel_ = nullptr;
  for (Recorder* r : {scheduled.get(), idle.get()}) {
    EXPECT_EQ(r->notifier(), nullptr);
    EXPECT_EQ(r->time(), kInfinity);
    r->timeIs(0.5);  // no wheel to reach: stays unscheduled
    EXPECT_EQ(r->time(), kInfinity);
  }
  EXPECT_EQ(clock_->scheduledCount(), 0u);
  clock_->advance(1);
  EXPECT_TRUE(log_.empty());
}

TEST_F(TimerWheelTest, TimerMayReleaseTheWheelWhileFiring) {
  auto a = recorder("a");
  a->action = [&] { wheel_ = nullptr; };
  a->timeIs(0.2);
  clock_->advance(1);
  EXPECT_EQ(log_, (std::vector<Firing>{{"a", 0.2}}));
  EXPECT_EQ(a->notifier(), nullptr);
  EXPECT_EQ(clock_->scheduledCount(), 0u);
}

TEST_F(TimerWheelTest, BadInputThrows) {
  EXPECT_THROW(Ptr<TimerWheel>(new TimerWheel(nullptr, kTickMsecs, 16, true, 4)), std::invalid_argument);
  EXPECT_THROW(Ptr<TimerWheel>(new TimerWheel(clock_, 0, 16, true, 4)), std::invalid_argument);
  EXPECT_THROW(Ptr<TimerWheel>(new TimerWheel(clock_, kTickMsecs, 0, true, 4)), std::invalid_argument);
  auto a = recorder("a");
  EXPECT_THROW(a->timeIs(std::nan("")), std::invalid_argument);
  EXPECT_EQ(wheel_->scheduledCount(), 0u);
}

}  // namespace
}  // namespace Brisk
