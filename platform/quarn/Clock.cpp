#include "quarn/Clock.h"

#include <time.h>

namespace Quarn {

void Clock::Notifiee::notifierIs(Clock* clock) {
  if (clock == clock_) return;
  timeIs(kInfinity);
  if (clock_) clock_->bound_.erase(this);
  clock_ = clock;
  if (clock_) clock_->bound_.insert(this);
}

void Clock::Notifiee::timeIs(Seconds t) {
  if (!clock_) {
    time_ = kInfinity;
    return;
  }
  clock_->unschedule(this);
  if (t != kInfinity) clock_->schedule(this, t);
}

Clock::~Clock() {
  // Notifiees outliving their clock must not reach back into it.
  for (Notifiee* n : bound_) {
    n->time_ = kInfinity;
    n->clock_ = nullptr;
  }
}

void Clock::schedule(Notifiee* n, Seconds t) {
  n->time_ = t;
  n->sequence_ = nextSequence_++;
  queue_.insert({t, n->sequence_, n});
}

void Clock::unschedule(Notifiee* n) {
  if (n->time_ == kInfinity) return;
  queue_.erase({n->time_, n->sequence_, n});
  n->time_ = kInfinity;
}

Seconds Clock::nextTime() const { return queue_.empty() ? kInfinity : queue_.begin()->time; }

bool Clock::fireNext(Seconds limit) {
  if (queue_.empty() || queue_.begin()->time > limit) return false;
  Notifiee* n = queue_.begin()->notifiee;
  queue_.erase(queue_.begin());
  n->time_ = kInfinity;
  n->onTime();
  return true;
}

std::size_t Clock::fireDue() {
  std::size_t fired = 0;
  while (fireNext(now())) ++fired;
  return fired;
}

Seconds RealClock::now() const {
  timespec ts{};
  clock_gettime(CLOCK_MONOTONIC, &ts);
  return static_cast<Seconds>(ts.tv_sec) + static_cast<Seconds>(ts.tv_nsec) * 1e-9;
}

void SimClock::advanceTo(Seconds t) {
  while (nextTime() <= t) {
    if (nextTime() > now_) now_ = nextTime();
    fireNext(now_);
  }
  if (t > now_) now_ = t;
}

}  // namespace Quarn
