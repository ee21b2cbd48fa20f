#include "quarn/EventLoop.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include "support/ClockRecorder.h"

#include <functional>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace Quarn {
namespace {

// Only a safety net: every fd waited on in these tests is already readable.
constexpr Seconds kSafetyWait = 5;

// A non-blocking socketpair; writing to `writer` makes `reader` readable.
struct SocketPair {
  SocketPair() {
    int fds[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0, fds) < 0) {
      throw std::system_error(errno, std::generic_category(), "socketpair");
    }
    reader = fds[0];
    writer = fds[1];
  }
  ~SocketPair() {
    close(reader);
    close(writer);
  }
  void send() const { ASSERT_EQ(write(writer, "x", 1), 1); }

  int reader;
  int writer;
};

// Drains its fd and counts the wakeups, then runs an optional action.
class Reader : public EventLoop::FdNotifiee {
 public:
  explicit Reader(int fd) : fd_(fd) {}
  void onReadable() override {
    char buf[16];
    while (read(fd_, buf, sizeof buf) > 0) {
    }
    ++calls;
    if (action) action();
  }
  int calls = 0;
  std::function<void()> action;

 private:
  int fd_;
};

using MrpTest::Firing;

class RealEventLoopTest : public ::testing::Test {
 protected:
  Ptr<EventLoop> loop_ = EventLoop::realLoopNew();
  std::vector<Firing> log_;
};

TEST_F(RealEventLoopTest, IsNotSimulated) {
  EXPECT_FALSE(loop_->simulated());
  EXPECT_NE(dynamic_cast<RealClock*>(loop_->clockPtr().ptr()), nullptr);
}

TEST_F(RealEventLoopTest, DeliversSocketReadability) {
  SocketPair pair;
  Reader reader(pair.reader);
  loop_->fdNotifieeIs(pair.reader, &reader);
  EXPECT_FALSE(loop_->runOnce(0));
  pair.send();
  EXPECT_TRUE(loop_->runOnce(kSafetyWait));
  EXPECT_EQ(reader.calls, 1);
  EXPECT_FALSE(loop_->runOnce(0));  // drained
}

TEST_F(RealEventLoopTest, RemovedFdIsNotDelivered) {
  SocketPair pair;
  Reader reader(pair.reader);
  loop_->fdNotifieeIs(pair.reader, &reader);
  loop_->fdNotifieeDel(pair.reader);
  pair.send();
  EXPECT_FALSE(loop_->runOnce(0));
  EXPECT_EQ(reader.calls, 0);
  EXPECT_EQ(loop_->fdCount(), 0u);
}

TEST_F(RealEventLoopTest, NotifieeMayRemoveItselfAndOthersWhileDispatching) {
  SocketPair first, second;
  Reader a(first.reader), b(second.reader);
  auto removeBoth = [&] {
    loop_->fdNotifieeDel(first.reader);
    loop_->fdNotifieeDel(second.reader);
  };
  a.action = removeBoth;
  b.action = removeBoth;
  loop_->fdNotifieeIs(first.reader, &a);
  loop_->fdNotifieeIs(second.reader, &b);
  first.send();
  second.send();
  ASSERT_TRUE(loop_->runOnce(kSafetyWait));
  // Whichever ran first removed the other before its turn.
  EXPECT_EQ(a.calls + b.calls, 1);
}

TEST_F(RealEventLoopTest, TimerDueNowFiresInRunOnce) {
  MrpTest::ClockRecorder timer(&loop_->clock(), "t", &log_);
  timer.timeIs(loop_->clock().now());
  EXPECT_TRUE(loop_->runOnce(kSafetyWait));
  ASSERT_EQ(log_.size(), 1u);
  EXPECT_EQ(timer.time(), kInfinity);
}

TEST_F(RealEventLoopTest, StopEndsRun) {
  MrpTest::ClockRecorder timer(&loop_->clock(), "t", &log_);
  timer.action = [&] { loop_->stop(); };
  timer.timeIs(loop_->clock().now());
  loop_->run();
  EXPECT_EQ(log_.size(), 1u);
}

TEST_F(RealEventLoopTest, BadInputThrows) {
  Reader reader(-1);
  EXPECT_THROW(loop_->fdNotifieeIs(-1, &reader), std::system_error);
  EXPECT_THROW(loop_->runOnce(-1), std::invalid_argument);
  EXPECT_THROW(loop_->advance(1), std::logic_error);
}

class SimEventLoopTest : public ::testing::Test {
 protected:
  Ptr<EventLoop> loop_ = EventLoop::simLoopNew(10);
  std::vector<Firing> log_;
};

TEST_F(SimEventLoopTest, StartsAtTheGivenTime) {
  EXPECT_TRUE(loop_->simulated());
  EXPECT_EQ(loop_->clock().now(), 10);
}

TEST_F(SimEventLoopTest, AdvanceFiresTimersInOrderAndLandsOnTheEnd) {
  MrpTest::ClockRecorder a(&loop_->clock(), "a", &log_), b(&loop_->clock(), "b", &log_), c(&loop_->clock(), "c", &log_);
  a.timeIs(12);
  b.timeIs(11);
  c.timeIs(12);
  loop_->advance(2.5);
  EXPECT_EQ(log_, (std::vector<Firing>{{"b", 11}, {"a", 12}, {"c", 12}}));
  EXPECT_EQ(loop_->clock().now(), 12.5);
}

TEST_F(SimEventLoopTest, RunUntilIdleDeliversReadabilityWithoutMovingTime) {
  SocketPair pair;
  Reader reader(pair.reader);
  MrpTest::ClockRecorder now(&loop_->clock(), "now", &log_), later(&loop_->clock(), "later", &log_);
  loop_->fdNotifieeIs(pair.reader, &reader);
  now.timeIs(10);
  later.timeIs(11);
  pair.send();
  EXPECT_EQ(loop_->runUntilIdle(), 2u);
  EXPECT_EQ(reader.calls, 1);
  EXPECT_EQ(log_, (std::vector<Firing>{{"now", 10}}));
  EXPECT_EQ(loop_->clock().now(), 10);
}

TEST_F(SimEventLoopTest, RunOnceJumpsToTheNextTimerWithinMaxWait) {
  MrpTest::ClockRecorder a(&loop_->clock(), "a", &log_);
  a.timeIs(13);
  EXPECT_FALSE(loop_->runOnce(1));
  EXPECT_EQ(loop_->clock().now(), 11);
  EXPECT_TRUE(loop_->runOnce(kInfinity));
  EXPECT_EQ(log_, (std::vector<Firing>{{"a", 13}}));
  EXPECT_FALSE(loop_->runOnce(kInfinity));  // nothing left: time stays
  EXPECT_EQ(loop_->clock().now(), 13);
}

TEST_F(SimEventLoopTest, RunReturnsWhenNothingIsLeft) {
  MrpTest::ClockRecorder a(&loop_->clock(), "a", &log_);
  a.action = [&] {
    if (log_.size() < 3) a.timeIs(loop_->clock().now() + 1);
  };
  a.timeIs(11);
  loop_->run();
  EXPECT_EQ(log_, (std::vector<Firing>{{"a", 11}, {"a", 12}, {"a", 13}}));
}

TEST_F(SimEventLoopTest, StopEndsRun) {
  MrpTest::ClockRecorder a(&loop_->clock(), "a", &log_);
  a.action = [&] {
    a.timeIs(loop_->clock().now() + 1);
    if (log_.size() == 2) loop_->stop();
  };
  a.timeIs(11);
  loop_->run();
  EXPECT_EQ(log_, (std::vector<Firing>{{"a", 11}, {"a", 12}}));
}

}  // namespace
}  // namespace Quarn
