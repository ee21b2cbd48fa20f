#include "WorkerProcess.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>

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

}  // namespace
}  // namespace MrpTest
