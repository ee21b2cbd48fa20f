#pragma once

#include <sys/types.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "support/TempDir.h"

namespace MrpTest {

// A program run as a child process for a test, its stdout and stderr kept
// in files of a directory of its own; it is killed (SIGKILL) and reaped when
// the object goes, if it still runs.
class ChildProcess {
 public:
  // Starts `argv` (argv[0] looked up on the PATH); throws std::system_error.
  explicit ChildProcess(const std::vector<std::string>& argv);
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  pid_t pid() const { return pid_; }
  void signal(int signo) const;
  // Waits up to `seconds` for the child to end: its exit status, or 128 +
  // the signal that ended it; nullopt when it still runs.
  std::optional<int> exitStatus(double seconds);
  bool running();

  std::string out() const;
  std::string err() const;

 private:
  TempDir dir_;
  pid_t pid_ = -1;
  std::optional<int> status_;
};

// Polls `done` every 50 ms until it holds or `seconds` have passed; the
// seconds it took, or nullopt when it never held.
std::optional<double> secondsUntil(double seconds, const std::function<bool()>& done);

}  // namespace MrpTest
