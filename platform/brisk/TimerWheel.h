#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include "quarn/Clock.h"

namespace Brisk {

// Many timers at tick granularity on one Quarn::Clock. Tick k is at time
// k * tickMsecs / 1000 on the clock's time line; a timer fires on the first
// tick at or after its time. A time already past fires on the first tick at
// or after now that has not fired yet. The wheel keeps one Clock::Notifiee,
// armed for the next non-empty tick only, so an idle wheel costs no wakeups.
//
// The wheel has initialMaxTicks buckets, covering the ticks from the next
// unprocessed one on. A timer further out is parked in an overflow list,
// sorted by tick, and moved into its bucket once the wheel reaches it.
// A bucket is two pointers, so defaultBucketSize is kept as a hint only.
//
// Timers due on the same tick fire in scheduling order. A tick's timers are
// a list threaded through the timers themselves, so scheduling, cancelling
// and binding a timer cost the same however many share its tick or wheel;
// order is therefore kept whatever preserveOrder says (it is kept as
// configuration). A firing timer may reschedule or cancel itself or any
// other timer; one scheduled for the tick being fired fires in the same pass.
class TimerWheel : public Quarn::PtrInterface {
 public:
  class Notifiee {
   public:
    Notifiee() = default;
    explicit Notifiee(TimerWheel* wheel) { notifierIs(wheel); }
    Notifiee(const Notifiee&) = delete;
    Notifiee& operator=(const Notifiee&) = delete;
    virtual ~Notifiee() { notifierIs(nullptr); }

    TimerWheel* notifier() const { return wheel_; }
    // Moving to another wheel cancels a pending time.
    void notifierIs(TimerWheel* wheel);
    // Called when the wheel goes away first.
    void notifierDetached();

    // The time asked for; kInfinity when nothing is scheduled.
    Quarn::Seconds time() const { return time_; }
    // Schedules onTime() (replacing an earlier time); kInfinity cancels.
    // Ignored without a wheel; a NaN time throws std::invalid_argument.
    void timeIs(Quarn::Seconds t);

    // Must not throw: the rest of the tick would be left unfired.
    virtual void onTime() = 0;

   private:
    friend class TimerWheel;
    TimerWheel* wheel_ = nullptr;
    Quarn::Seconds time_ = Quarn::kInfinity;
    std::int64_t tick_ = 0;  // meaningful while time_ is finite
    // The neighbours in the tick's list (while scheduled in the wheel's
    // window) and in the wheel's list of every bound timer.
    Notifiee* prev_ = nullptr;
    Notifiee* next_ = nullptr;
    Notifiee* boundPrev_ = nullptr;
    Notifiee* boundNext_ = nullptr;
  };

  // Throws std::invalid_argument for a null clock or a zero tick or size.
  TimerWheel(Quarn::Ptr<Quarn::Clock> clock, std::uint32_t tickMsecs, std::uint32_t initialMaxTicks,
             bool preserveOrder, std::uint32_t defaultBucketSize);
  TimerWheel(const TimerWheel&) = delete;
  TimerWheel& operator=(const TimerWheel&) = delete;

  Quarn::Ptr<Quarn::Clock> clock() const { return clock_; }
  std::uint32_t tickMsecs() const { return tickMsecs_; }
  std::uint32_t initialMaxTicks() const { return static_cast<std::uint32_t>(buckets_.size()); }
  bool preserveOrder() const { return preserveOrder_; }
  std::uint32_t defaultBucketSize() const { return defaultBucketSize_; }
  std::size_t scheduledCount() const { return scheduledCount_; }

 protected:
  // Leaves the notifiees detached.
  ~TimerWheel() override;

 private:
  // The timers of one tick, in scheduling order.
  struct Bucket {
    Notifiee* head = nullptr;
    Notifiee* tail = nullptr;
    bool empty() const { return head == nullptr; }
    void pushBack(Notifiee* n);
    void remove(Notifiee* n);
  };

  class Driver : public Quarn::Clock::Notifiee {
   public:
    Driver(Quarn::Clock* clock, TimerWheel* wheel) : Quarn::Clock::Notifiee(clock), wheel_(wheel) {}
    void onTime() override { wheel_->onTick(); }

   private:
    TimerWheel* wheel_;
  };

  std::int64_t tickAtOrAfter(Quarn::Seconds t) const;
  Quarn::Seconds tickTime(std::int64_t tick) const;
  Bucket& bucket(std::int64_t tick);
  bool inOverflow(std::int64_t tick) const;

  void schedule(Notifiee* n, Quarn::Seconds t);
  void unschedule(Notifiee* n);
  void bind(Notifiee* n);
  void unbind(Notifiee* n);
  void moveWindowTo(std::int64_t tick);
  std::optional<std::int64_t> nextScheduledTick();
  void fireTick(std::int64_t tick);
  void onTick();
  void arm();

  Quarn::Ptr<Quarn::Clock> clock_;
  std::uint32_t tickMsecs_;
  bool preserveOrder_;
  std::uint32_t defaultBucketSize_;
  std::vector<Bucket> buckets_;
  std::multimap<std::int64_t, Notifiee*> overflow_;  // equal ticks in scheduling order
  std::int64_t nextTick_ = 0;                        // first tick not yet processed
  bool firing_ = false;                              // inside fireTick
  std::size_t scheduledCount_ = 0;
  Notifiee* bound_ = nullptr;  // every bound notifiee, scheduled or not
  Driver driver_;
};

}  // namespace Brisk
