#include "quarn/System.h"

namespace Quarn::System {

namespace {

Ptr<Clock>& realClock() {
  static Ptr<Clock> clock(new RealClock);
  return clock;
}

Ptr<Clock>& activeClock() {
  static Ptr<Clock> clock = realClock();
  return clock;
}

}  // namespace

Clock& clock() { return *activeClock(); }
Ptr<Clock> clockPtr() { return activeClock(); }
void clockIs(Ptr<Clock> clock) { activeClock() = clock ? clock : realClock(); }
Seconds currentTime() { return activeClock()->now(); }

}  // namespace Quarn::System
