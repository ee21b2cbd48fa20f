#include "agent/WorkerChannel.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>

namespace MrpCli {

namespace {

using SteadyClock = std::chrono::steady_clock;

// Milliseconds left until `deadline`, at least 0.
int millisecondsUntil(SteadyClock::time_point deadline) {
  const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - SteadyClock::now()).count();
  return left > 0 ? static_cast<int>(left) : 0;
}

}  // namespace

WorkerChannel::WorkerChannel(Quarn::Ptr<Quarn::EventLoop> loop, int fd, OnMessage onMessage, OnClosed onClosed)
    : loop_(std::move(loop)), fd_(fd), onMessage_(std::move(onMessage)), onClosed_(std::move(onClosed)), reactor_(this) {
  fcntl(fd_, F_SETFL, fcntl(fd_, F_GETFL) | O_NONBLOCK);
  loop_->fdNotifieeIs(fd_, &reactor_);
}

WorkerChannel::~WorkerChannel() {
  if (fd_ >= 0) {
    loop_->fdNotifieeDel(fd_);
    close(fd_);
  }
}

void WorkerChannel::doClose() {
  loop_->fdNotifieeDel(fd_);
  close(fd_);
  fd_ = -1;
}

std::string WorkerChannel::lineOf(const Json& message) {
  return message.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

bool WorkerChannel::send(const Json& message) { return sendLines(lineOf(message)); }

bool WorkerChannel::sendLines(const std::string& line) {
  if (fd_ < 0) return false;
  std::size_t sent = 0;
  while (sent < line.size()) {
    const ssize_t n = ::send(fd_, line.data() + sent, line.size() - sent, MSG_NOSIGNAL);
    if (n >= 0) {
      sent += static_cast<std::size_t>(n);
    } else if (errno == EAGAIN || errno == EWOULDBLOCK) {
      pollfd p{fd_, POLLOUT, 0};
      poll(&p, 1, -1);
    } else if (errno != EINTR) {
      return false;
    }
  }
  return true;
}

bool WorkerChannel::handleReadable() {
  char buffer[65536];
  for (;;) {
    const ssize_t n = recv(fd_, buffer, sizeof buffer, 0);
    if (n < 0 && errno == EINTR) continue;
    if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) break;
    if (n <= 0) {
      doClose();
      onClosed_();
      return false;
    }
    pending_.append(buffer, static_cast<std::size_t>(n));
  }
  std::size_t start = 0;
  for (std::size_t end = pending_.find('\n'); end != std::string::npos; end = pending_.find('\n', start)) {
    const Json message = Json::parse(pending_.begin() + static_cast<std::ptrdiff_t>(start),
                                     pending_.begin() + static_cast<std::ptrdiff_t>(end), nullptr, false);
    start = end + 1;
    if (!message.is_discarded()) onMessage_(message);
  }
  pending_.erase(0, start);
  return true;
}

bool WorkerChannel::waitUntil(const std::function<bool()>& done, double seconds) {
  const auto deadline =
      SteadyClock::now() + std::chrono::duration_cast<SteadyClock::duration>(std::chrono::duration<double>(seconds));
  while (!done()) {
    if (fd_ < 0) return false;
    pollfd p{fd_, POLLIN, 0};
    const int ready = poll(&p, 1, millisecondsUntil(deadline));
    if (ready == 0) return false;
    if (ready > 0 && !handleReadable()) return done();
  }
  return true;
}

}  // namespace MrpCli
