#pragma once

#include <map>

#include "quarn/Clock.h"

namespace Quarn {

// The single-threaded reactor: dispatches fd readability (epoll,
// level-triggered) and the timers of its own clock.
//
// Real mode (realLoopNew): the clock is a RealClock. runOnce() blocks in
// epoll_wait until an fd is readable, the clock's next timer is due, or
// maxWait has passed, then dispatches readable fds and fires due timers.
//
// Simulated mode (simLoopNew): the clock is a SimClock and nothing ever
// blocks. Time moves only through advance() (timers fire at their own
// times, ties in scheduling order, landing exactly on the end) or runOnce()
// (which jumps to the next timer instead of waiting for it). fds are polled
// with a zero timeout, so a test can mix a socketpair with simulated time;
// advance() fires timers only, runUntilIdle() delivers readability too.
//
// A notifiee must drain its fd (or remove itself) in onReadable: the fd
// stays readable otherwise, and runUntilIdle() would never return.
// Errors from epoll throw std::system_error.
class EventLoop : public PtrInterface {
 public:
  class FdNotifiee {
   public:
    virtual ~FdNotifiee() = default;
    // Also called on hang-up or error: the next read reports it.
    virtual void onReadable() = 0;
  };

  static Ptr<EventLoop> realLoopNew();
  static Ptr<EventLoop> simLoopNew(Seconds start = 0);

  EventLoop(const EventLoop&) = delete;
  EventLoop& operator=(const EventLoop&) = delete;

  Clock& clock() const { return *clock_; }
  Ptr<Clock> clockPtr() const { return clock_; }
  bool simulated() const { return simClock_ != nullptr; }

  // Watches `fd` for readability, replacing an earlier notifiee of the same
  // fd; nullptr stops watching it. Safe to call from inside onReadable.
  void fdNotifieeIs(int fd, FdNotifiee* notifiee);
  // Stops watching `fd`; a no-op when it is not watched. Tolerates an fd that
  // was already closed.
  void fdNotifieeDel(int fd);
  std::size_t fdCount() const { return fds_.size(); }

  // Waits up to maxWait (>= 0, kInfinity for no limit) for readability or
  // the next due timer and dispatches. Returns whether anything was
  // dispatched.
  bool runOnce(Seconds maxWait);
  // Dispatches until stop(). A simulated loop also returns when nothing is
  // left to happen (no readable fd, no timer).
  void run();
  // Ends run() after the current dispatch; only meaningful inside run().
  void stop() { stopping_ = true; }

  // Dispatches readable fds and fires due timers until neither is left,
  // without moving time. Returns how many were dispatched.
  std::size_t runUntilIdle();
  // Simulated mode only (std::logic_error otherwise): runs time forward by d.
  void advance(Seconds d);

 protected:
  ~EventLoop() override;

 private:
  EventLoop(Ptr<Clock> clock, SimClock* simClock);
  // Waits up to `wait` seconds in epoll_wait, then calls every notifiee
  // whose fd was readable and is still watched.
  std::size_t dispatchReadable(Seconds wait);

  Ptr<Clock> clock_;
  SimClock* simClock_;  // clock_ itself in simulated mode, else nullptr
  int epollFd_;
  std::map<int, FdNotifiee*> fds_;
  bool stopping_ = false;
};

}  // namespace Quarn
