#include "quarn/EventLoop.h"

#include <sys/epoll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cmath>
#include <stdexcept>
#include <string>
#include <system_error>

namespace Quarn {

namespace {

std::system_error epollError(const std::string& what) {
  return std::system_error(errno, std::generic_category(), "EventLoop: " + what);
}

// Rounds up so that a wait for a timer never wakes just before it is due.
int timeoutMsecs(Seconds wait) {
  if (wait == kInfinity) return -1;
  Seconds msecs = std::ceil(wait * 1000);
  return msecs >= INT_MAX ? INT_MAX : static_cast<int>(msecs);
}

}  // namespace

Ptr<EventLoop> EventLoop::realLoopNew() { return Ptr<EventLoop>(new EventLoop(new RealClock, nullptr)); }

Ptr<EventLoop> EventLoop::simLoopNew(Seconds start) {
  auto* clock = new SimClock(start);
  return Ptr<EventLoop>(new EventLoop(clock, clock));
}

EventLoop::EventLoop(Ptr<Clock> clock, SimClock* simClock)
    : clock_(std::move(clock)), simClock_(simClock), epollFd_(epoll_create1(EPOLL_CLOEXEC)) {
  if (epollFd_ < 0) throw epollError("epoll_create1 failed");
}

EventLoop::~EventLoop() { close(epollFd_); }

void EventLoop::fdNotifieeIs(int fd, FdNotifiee* notifiee) {
  if (!notifiee) {
    fdNotifieeDel(fd);
    return;
  }
  if (!fds_.contains(fd)) {
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.fd = fd;
    if (epoll_ctl(epollFd_, EPOLL_CTL_ADD, fd, &event) < 0) {
      throw epollError("cannot watch fd " + std::to_string(fd));
    }
  }
  fds_[fd] = notifiee;
}

void EventLoop::fdNotifieeDel(int fd) {
  if (fds_.erase(fd) == 0) return;
  // Closing an fd already took it out of the epoll set.
  if (epoll_ctl(epollFd_, EPOLL_CTL_DEL, fd, nullptr) < 0 && errno != EBADF && errno != ENOENT) {
    throw epollError("cannot stop watching fd " + std::to_string(fd));
  }
}

std::size_t EventLoop::dispatchReadable(Seconds wait) {
  std::array<epoll_event, 64> events;
  int ready = epoll_wait(epollFd_, events.data(), static_cast<int>(events.size()), timeoutMsecs(wait));
  if (ready < 0) {
    if (errno == EINTR) return 0;
    throw epollError("epoll_wait failed");
  }
  std::size_t dispatched = 0;
  for (int i = 0; i < ready; ++i) {
    // Looked up again each time: an earlier notifiee may have removed this one.
    auto it = fds_.find(events[i].data.fd);
    if (it == fds_.end()) continue;
    ++dispatched;
    it->second->onReadable();
  }
  return dispatched;
}

bool EventLoop::runOnce(Seconds maxWait) {
  if (!(maxWait >= 0)) throw std::invalid_argument("EventLoop::runOnce: maxWait must be >= 0");
  if (!simulated()) {
    Seconds untilTimer = std::max<Seconds>(0, clock_->nextTime() - clock_->now());
    std::size_t dispatched = dispatchReadable(std::min(maxWait, untilTimer));
    return dispatched + clock_->fireDue() > 0;
  }
  // Simulated waiting is a jump in time, and only when no fd is ready.
  bool readable = dispatchReadable(0) > 0;
  Seconds target = readable ? clock_->now() : std::min(clock_->nextTime(), clock_->now() + maxWait);
  if (target == kInfinity) return readable;
  bool timerDue = clock_->nextTime() <= target;
  simClock_->advanceTo(target);
  return readable || timerDue;
}

void EventLoop::run() {
  stopping_ = false;
  while (!stopping_) {
    bool dispatched = runOnce(kInfinity);
    // A simulated loop with nothing left to happen would spin forever.
    if (!dispatched && simulated()) return;
  }
}

std::size_t EventLoop::runUntilIdle() {
  std::size_t total = 0;
  for (;;) {
    std::size_t dispatched = dispatchReadable(0) + clock_->fireDue();
    if (dispatched == 0) return total;
    total += dispatched;
  }
}

void EventLoop::advance(Seconds d) {
  if (!simulated()) throw std::logic_error("EventLoop::advance: the loop runs in real time");
  if (!(d >= 0)) throw std::invalid_argument("EventLoop::advance: d must be >= 0");
  simClock_->advance(d);
}

}  // namespace Quarn
