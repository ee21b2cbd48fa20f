#pragma once

#include <optional>
#include <string>

#include "support/ScopedEnv.h"
#include "support/TempDir.h"

namespace MrpTest {

// A service manager's notification socket for a test: a unix datagram
// socket bound in a temporary directory, with NOTIFY_SOCKET naming it for
// the object's lifetime (children started meanwhile inherit it).
class NotifySocket {
 public:
  // Throws std::system_error.
  NotifySocket();
  ~NotifySocket();
  NotifySocket(const NotifySocket&) = delete;
  NotifySocket& operator=(const NotifySocket&) = delete;

  // The next datagram, waiting up to `seconds` for it; nullopt when none came.
  std::optional<std::string> next(double seconds = 0) const;

 private:
  TempDir dir_;
  int fd_ = -1;
  std::optional<ScopedEnv> env_;
};

}  // namespace MrpTest
