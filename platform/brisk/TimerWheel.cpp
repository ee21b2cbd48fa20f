#include "brisk/TimerWheel.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <utility>

namespace Brisk {

using Quarn::kInfinity;
using Quarn::Seconds;

namespace {

// Far enough for any clock, near enough that tick + wheel size cannot overflow.
constexpr Seconds kMaxTick = static_cast<Seconds>(std::numeric_limits<std::int64_t>::max() / 4);
// A fraction of a tick: absorbs the rounding in a time computed as a sum.
constexpr Seconds kTickSlack = 1e-6;

}  // namespace

void TimerWheel::Notifiee::notifierIs(TimerWheel* wheel) {
  if (wheel == wheel_) return;
  timeIs(kInfinity);
  if (wheel_) wheel_->unbind(this);
  wheel_ = wheel;
  if (wheel_) wheel_->bind(this);
}

void TimerWheel::Notifiee::notifierDetached() {
  wheel_ = nullptr;
  time_ = kInfinity;
  prev_ = next_ = boundPrev_ = boundNext_ = nullptr;
}

void TimerWheel::Bucket::pushBack(Notifiee* n) {
  n->prev_ = tail;
  n->next_ = nullptr;
  (tail ? tail->next_ : head) = n;
  tail = n;
}

void TimerWheel::Bucket::remove(Notifiee* n) {
  (n->prev_ ? n->prev_->next_ : head) = n->next_;
  (n->next_ ? n->next_->prev_ : tail) = n->prev_;
  n->prev_ = n->next_ = nullptr;
}

void TimerWheel::Notifiee::timeIs(Seconds t) {
  if (std::isnan(t)) throw std::invalid_argument("TimerWheel::Notifiee::timeIs: time is NaN");
  if (!wheel_) return;
  if (time_ != kInfinity) wheel_->unschedule(this);
  if (t != kInfinity) wheel_->schedule(this, t);
}

TimerWheel::~TimerWheel() {
  while (Notifiee* n = bound_) {
    bound_ = n->boundNext_;
    n->notifierDetached();
  }
}

void TimerWheel::bind(Notifiee* n) {
  n->boundPrev_ = nullptr;
  n->boundNext_ = bound_;
  if (bound_) bound_->boundPrev_ = n;
  bound_ = n;
}

void TimerWheel::unbind(Notifiee* n) {
  (n->boundPrev_ ? n->boundPrev_->boundNext_ : bound_) = n->boundNext_;
  if (n->boundNext_) n->boundNext_->boundPrev_ = n->boundPrev_;
  n->boundPrev_ = n->boundNext_ = nullptr;
}

TimerWheel::TimerWheel(Quarn::Ptr<Quarn::Clock> clock, std::uint32_t tickMsecs, std::uint32_t initialMaxTicks,
                       bool preserveOrder, std::uint32_t defaultBucketSize)
    : clock_(std::move(clock)),
      tickMsecs_(tickMsecs),
      preserveOrder_(preserveOrder),
      defaultBucketSize_(defaultBucketSize),
      driver_(clock_.ptr(), this) {
  if (!clock_) throw std::invalid_argument("TimerWheel: no clock");
  if (tickMsecs == 0) throw std::invalid_argument("TimerWheel: tickMsecs must be positive");
  if (initialMaxTicks == 0) throw std::invalid_argument("TimerWheel: initialMaxTicks must be positive");
  buckets_.resize(initialMaxTicks);
  nextTick_ = tickAtOrAfter(clock_->now());
}

std::int64_t TimerWheel::tickAtOrAfter(Seconds t) const {
  Seconds tick = std::ceil(t * 1000 / tickMsecs_ - kTickSlack);
  return static_cast<std::int64_t>(std::clamp(tick, -kMaxTick, kMaxTick));
}

Seconds TimerWheel::tickTime(std::int64_t tick) const {
  return static_cast<Seconds>(tick) * tickMsecs_ / 1000;
}

TimerWheel::Bucket& TimerWheel::bucket(std::int64_t tick) {
  auto size = static_cast<std::int64_t>(buckets_.size());
  return buckets_[static_cast<std::size_t>((tick % size + size) % size)];
}

bool TimerWheel::inOverflow(std::int64_t tick) const {
  return tick >= nextTick_ + static_cast<std::int64_t>(buckets_.size());
}

void TimerWheel::schedule(Notifiee* n, Seconds t) {
  Seconds now = clock_->now();
  std::int64_t nowTick = tickAtOrAfter(now);
  // An idle wheel's window starts at now, not at the last tick it fired.
  if (scheduledCount_ == 0 && !firing_) moveWindowTo(std::max(nextTick_, nowTick));
  std::int64_t tick = std::max(t > now ? tickAtOrAfter(t) : nowTick, nextTick_);
  n->time_ = t;
  n->tick_ = tick;
  if (inOverflow(tick)) {
    overflow_.emplace(tick, n);
  } else {
    bucket(tick).pushBack(n);
  }
  ++scheduledCount_;
  // While firing, onTick arms the driver once it is done.
  if (!firing_ && tickTime(tick) < driver_.time()) driver_.timeIs(tickTime(tick));
}

void TimerWheel::unschedule(Notifiee* n) {
  if (inOverflow(n->tick_)) {
    auto [first, last] = overflow_.equal_range(n->tick_);
    overflow_.erase(std::find_if(first, last, [n](const auto& entry) { return entry.second == n; }));
  } else {
    bucket(n->tick_).remove(n);
  }
  n->time_ = kInfinity;
  // A driver left armed for a cancelled tick only costs one idle wakeup,
  // but an empty wheel must leave the clock alone.
  if (--scheduledCount_ == 0 && !firing_) driver_.timeIs(kInfinity);
}

// Callers only move the window over ticks that hold no timer.
void TimerWheel::moveWindowTo(std::int64_t tick) {
  nextTick_ = tick;
  while (!overflow_.empty() && !inOverflow(overflow_.begin()->first)) {
    bucket(overflow_.begin()->first).pushBack(overflow_.begin()->second);
    overflow_.erase(overflow_.begin());
  }
}

std::optional<std::int64_t> TimerWheel::nextScheduledTick() {
  if (scheduledCount_ > overflow_.size()) {
    for (std::int64_t tick = nextTick_; !inOverflow(tick); ++tick) {
      if (!bucket(tick).empty()) return tick;
    }
  }
  if (!overflow_.empty()) return overflow_.begin()->first;
  return std::nullopt;
}

void TimerWheel::fireTick(std::int64_t tick) {
  moveWindowTo(tick);
  firing_ = true;
  Bucket& b = bucket(tick);
  // Each timer leaves the list before it fires: timers scheduled for this
  // tick meanwhile are appended and fire in this pass, cancelled ones are gone.
  while (Notifiee* n = b.head) {
    b.remove(n);
    n->time_ = kInfinity;
    --scheduledCount_;
    n->onTime();
  }
  firing_ = false;
  moveWindowTo(tick + 1);
}

void TimerWheel::onTick() {
  Quarn::Ptr<TimerWheel> self(this);  // a timer may drop the wheel's last reference
  for (auto tick = nextScheduledTick(); tick && tickTime(*tick) <= clock_->now(); tick = nextScheduledTick()) {
    fireTick(*tick);
  }
  arm();
}

void TimerWheel::arm() {
  auto tick = nextScheduledTick();
  driver_.timeIs(tick ? tickTime(*tick) : kInfinity);
}

}  // namespace Brisk
