#include "agent/WorkerProcess.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <vector>

#include "agent/RestartBackoff.h"

namespace MrpTest {
namespace {

// The wait status of a child that ran `body`.
int statusOf(void (*body)()) {
  const pid_t pid = fork();
  if (pid == 0) body();
  int status = 0;
  waitpid(pid, &status, 0);
  return status;
}

TEST(WorkerProcessTest, HowAWorkerEndedIsSaidInWords) {
  EXPECT_EQ(MrpCli::exitText(statusOf([] { _exit(3); })), "exited with status 3");
  EXPECT_EQ(MrpCli::exitText(statusOf([] {
              std::signal(SIGKILL, SIG_DFL);
              kill(getpid(), SIGKILL);
              _exit(0);
            })),
            "was killed by signal 9 (Killed)");
}

// A worker's life before each death, and the wait before its next start.
struct Death {
  double livedSeconds;
  double delaySeconds;
};

TEST(RestartBackoffTest, WaitsASecondAndLongerWhileTheWorkerKeepsDyingYoung) {
  const std::vector<Death> deaths = {
      {600, 1},  // the first death: a second
      {0.1, 2}, {0.1, 4}, {3, 8}, {9.9, 16}, {0.1, 30}, {0.1, 30},  // a crash loop slows down, to 30 s
      {10, 1},   // a worker that had settled
      {0.1, 2},
  };
  MrpCli::RestartBackoff backoff;
  for (std::size_t i = 0; i < deaths.size(); ++i) {
    EXPECT_EQ(backoff.delayAfter(deaths[i].livedSeconds), deaths[i].delaySeconds) << "death " << i;
  }
}

}  // namespace
}  // namespace MrpTest
