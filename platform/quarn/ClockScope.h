#pragma once

#include "quarn/Clock.h"
#include "quarn/Ptr.h"
#include "quarn/System.h"

namespace Quarn::System {

// Makes `clock` the process's clock while it lives, then puts back the one
// it found, so scopes nest. Engines take the process clock when they are
// built: one built inside a scope keeps that scope's clock.
class ClockScope {
 public:
  explicit ClockScope(Ptr<Clock> clock) : previous_(clockPtr()) { clockIs(std::move(clock)); }
  ~ClockScope() { clockIs(previous_); }
  ClockScope(const ClockScope&) = delete;
  ClockScope& operator=(const ClockScope&) = delete;

 private:
  Ptr<Clock> previous_;
};

}  // namespace Quarn::System
