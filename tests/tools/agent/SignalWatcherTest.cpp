#include "agent/SignalWatcher.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <vector>

namespace MrpTest {
namespace {

TEST(SignalWatcherTest, ASignalBecomesAnEventOfTheLoop) {
  Quarn::Ptr<Quarn::EventLoop> loop = Quarn::EventLoop::simLoopNew();
  std::vector<int> heard;
  MrpCli::SignalWatcher watcher(loop, {SIGUSR1, SIGUSR2}, [&](int signo) { heard.push_back(signo); });
  raise(SIGUSR2);
  EXPECT_TRUE(heard.empty()) << "nothing runs inside the signal";
  loop->runUntilIdle();
  EXPECT_EQ(heard, std::vector<int>{SIGUSR2});
}

TEST(SignalWatcherTest, TheSignalsAreBlockedOnlyWhileItExists) {
  sigset_t blocked;
  {
    Quarn::Ptr<Quarn::EventLoop> loop = Quarn::EventLoop::simLoopNew();
    MrpCli::SignalWatcher watcher(loop, {SIGUSR1}, [](int) {});
    sigprocmask(SIG_BLOCK, nullptr, &blocked);
    EXPECT_TRUE(sigismember(&blocked, SIGUSR1));
    raise(SIGUSR1);  // left unread: it must not reach the process afterwards
  }
  sigprocmask(SIG_BLOCK, nullptr, &blocked);
  EXPECT_FALSE(sigismember(&blocked, SIGUSR1));
}

}  // namespace
}  // namespace MrpTest
