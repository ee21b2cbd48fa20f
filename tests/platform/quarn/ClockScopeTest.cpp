#include "quarn/ClockScope.h"

#include <gtest/gtest.h>

namespace Quarn {
namespace {

TEST(ClockScopeTest, InstallsTheClockWhileItLives) {
  Ptr<SimClock> sim(new SimClock(42));
  {
    System::ClockScope scope(sim);
    EXPECT_EQ(&System::clock(), sim.ptr());
    EXPECT_EQ(System::currentTime(), 42);
  }
  EXPECT_NE(&System::clock(), sim.ptr());
}

TEST(ClockScopeTest, LeavingTheOutermostScopePutsBackTheRealClock) {
  const Ptr<Clock> real = System::clockPtr();
  { System::ClockScope scope(new SimClock); }
  EXPECT_EQ(System::clockPtr(), real);
}

TEST(ClockScopeTest, NestedScopesPutBackTheClockEachFound) {
  const Ptr<Clock> real = System::clockPtr();
  Ptr<SimClock> outer(new SimClock(1));
  Ptr<SimClock> inner(new SimClock(2));
  {
    System::ClockScope outerScope(outer);
    {
      System::ClockScope innerScope(inner);
      EXPECT_EQ(System::currentTime(), 2);
    }
    EXPECT_EQ(&System::clock(), outer.ptr());
  }
  EXPECT_EQ(System::clockPtr(), real);
}

TEST(ClockScopeTest, AScopeOfNoClockRunsOnTheRealOne) {
  const Ptr<Clock> real = System::clockPtr();
  System::ClockScope outerScope(new SimClock(-1));
  {
    System::ClockScope innerScope(nullptr);
    EXPECT_EQ(System::clockPtr(), real);
  }
  EXPECT_EQ(System::currentTime(), -1);
}

}  // namespace
}  // namespace Quarn
