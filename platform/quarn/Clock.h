#pragma once

#include <cstdint>
#include <set>
#include <unordered_set>

#include "quarn/Ptr.h"
#include "quarn/Types.h"

namespace Quarn {

// A time source that also schedules: a Clock::Notifiee asks for onTime() at
// an absolute time. Due notifiees fire in time order, ties in the order in
// which they were scheduled. The real clock reads CLOCK_MONOTONIC and is
// driven by an EventLoop; the simulated clock moves only when told to.
class Clock : public PtrInterface {
 public:
  class Notifiee {
   public:
    Notifiee() = default;
    explicit Notifiee(Clock* clock) { notifierIs(clock); }
    Notifiee(const Notifiee&) = delete;
    Notifiee& operator=(const Notifiee&) = delete;
    virtual ~Notifiee() { notifierIs(nullptr); }

    Clock* notifier() const { return clock_; }
    // Moving to another clock cancels a pending time.
    void notifierIs(Clock* clock);

    // The time at which onTime() is due; kInfinity when none is scheduled.
    Seconds time() const { return time_; }
    // Schedules onTime() at `t` (replacing any earlier request); kInfinity cancels.
    void timeIs(Seconds t);

    virtual void onTime() = 0;

   private:
    friend class Clock;
    Clock* clock_ = nullptr;
    Seconds time_ = kInfinity;
    std::uint64_t sequence_ = 0;
  };

  Clock() = default;
  Clock(const Clock&) = delete;
  Clock& operator=(const Clock&) = delete;

  virtual Seconds now() const = 0;

  // Earliest scheduled time, kInfinity when nothing is scheduled.
  Seconds nextTime() const;
  std::size_t scheduledCount() const { return queue_.size(); }

  // Fires, in order, every notifiee due at or before now(), including ones
  // scheduled by the notifications themselves. Returns how many fired.
  std::size_t fireDue();

 protected:
  ~Clock() override;
  // Fires the earliest notifiee if it is due at or before `limit`.
  bool fireNext(Seconds limit);

 private:
  struct Entry {
    Seconds time;
    std::uint64_t sequence;
    Notifiee* notifiee;
    bool operator<(const Entry& o) const {
      return time != o.time ? time < o.time : sequence < o.sequence;
    }
  };

  void schedule(Notifiee* n, Seconds t);
  void unschedule(Notifiee* n);

  std::set<Entry> queue_;
  // Every notifiee bound to this clock, scheduled or not.
  std::unordered_set<Notifiee*> bound_;
  std::uint64_t nextSequence_ = 0;
};

// CLOCK_MONOTONIC, in seconds.
class RealClock : public Clock {
 public:
  Seconds now() const override;
};

// Simulated time: starts at `start` and moves only through advance/advanceTo,
// which fire every notifiee due on the way at its own time.
class SimClock : public Clock {
 public:
  explicit SimClock(Seconds start = 0) : now_(start) {}

  Seconds now() const override { return now_; }
  // Runs time forward by `d` seconds; lands exactly on the end.
  void advance(Seconds d) { advanceTo(now_ + d); }
  void advanceTo(Seconds t);

 private:
  Seconds now_;
};

}  // namespace Quarn
