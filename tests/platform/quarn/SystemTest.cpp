#include "quarn/System.h"

#include <gtest/gtest.h>

#include "quarn/ClockScope.h"

namespace Quarn {
namespace {

TEST(SystemTest, CurrentTimeReadsTheInstalledClock) {
  Ptr<SimClock> sim(new SimClock(42));
  System::ClockScope scope(sim);
  EXPECT_EQ(&System::clock(), sim.ptr());
  EXPECT_EQ(System::currentTime(), 42);
  sim->advance(1.5);
  EXPECT_EQ(System::currentTime(), 43.5);
}

TEST(SystemTest, OutsideAScopeTheClockIsTheRealOne) {
  Ptr<SimClock> sim(new SimClock(-1));
  { System::ClockScope scope(sim); }
  EXPECT_NE(&System::clock(), sim.ptr());
  Ptr<Clock> real(new RealClock);
  Seconds before = real->now();
  Seconds current = System::currentTime();
  EXPECT_LE(before, current);
  EXPECT_LE(current, real->now());
}

}  // namespace
}  // namespace Quarn
