#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "quarn/Clock.h"

namespace MrpTest {

using Firing = std::pair<std::string, Quarn::Seconds>;  // who fired, and when

// A clock notifiee that logs each onTime() with the clock's time, then runs
// an optional action.
class ClockRecorder : public Quarn::Clock::Notifiee {
 public:
  ClockRecorder(Quarn::Clock* clock, std::string name, std::vector<Firing>* log)
      : Notifiee(clock), name_(std::move(name)), log_(log) {}
  void onTime() override {
    log_->emplace_back(name_, notifier()->now());
    if (action) action();
  }
  std::function<void()> action;

 private:
  std::string name_;
  std::vector<Firing>* log_;
};

}  // namespace MrpTest
