#pragma once

#include "quarn/Clock.h"

namespace Quarn::System {

// The process's active clock: a RealClock unless one was installed.
Clock& clock();
Ptr<Clock> clockPtr();
// Installs the active clock; nullptr restores the real clock.
void clockIs(Ptr<Clock> clock);

// now() of the active clock.
Seconds currentTime();

}  // namespace Quarn::System
