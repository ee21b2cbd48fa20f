#include "quarn/System.h"

#include <gtest/gtest.h>

namespace Quarn {
namespace {

class SystemTest : public ::testing::Test {
 protected:
  void TearDown() override { System::clockIs(nullptr); }
};

TEST_F(SystemTest, CurrentTimeReadsTheInstalledClock) {
  Ptr<SimClock> sim(new SimClock(42));
  System::clockIs(sim);
  EXPECT_EQ(&System::clock(), sim.ptr());
  EXPECT_EQ(System::currentTime(), 42);
  sim->advance(1.5);
  EXPECT_EQ(System::currentTime(), 43.5);
}

TEST_F(SystemTest, ClearingTheClockRestoresTheRealOne) {
  Ptr<SimClock> sim(new SimClock(-1));
  System::clockIs(sim);
  System::clockIs(nullptr);
  EXPECT_NE(&System::clock(), sim.ptr());
  Ptr<Clock> real(new RealClock);
  Seconds before = real->now();
  Seconds current = System::currentTime();
  EXPECT_LE(before, current);
  EXPECT_LE(current, real->now());
}

}  // namespace
}  // namespace Quarn
