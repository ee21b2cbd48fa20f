#include "quarn/Assert.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <type_traits>

#include "velo/IntfId.h"

namespace {

using ::testing::HasSubstr;

bool initialized() { return true; }
bool mrpIntfPamSmHas(const Velo::IntfId& intfId) { return intfId.empty(); }

TEST(AssertTest, TrueConditionIsEvaluatedOnceAndContinues) {
  int evaluations = 0;
  QASSERT(++evaluations == 1);
  EXPECT_EQ(evaluations, 1);
}

TEST(AssertTest, ConditionWithATopLevelCommaCompiles) {
  QASSERT(std::is_same_v<int, int>);
  SUCCEED();
}

TEST(AssertDeathTest, FailedAssertionAbortsWithTheConditionText) {
  EXPECT_EXIT(QASSERT(!initialized()), ::testing::KilledBySignal(SIGABRT),
              HasSubstr("Assertion failed: !initialized() (" __FILE__ ":"));
}

TEST(AssertDeathTest, MessageKeepsTheConditionAsWritten) {
  const Velo::IntfId intfId("Ethernet1");
  EXPECT_DEATH(QASSERT(mrpIntfPamSmHas( intfId )), HasSubstr("mrpIntfPamSmHas( intfId )"));
}

TEST(AssertDeathTest, MessageKeepsATopLevelComma) {
  EXPECT_DEATH(QASSERT(std::is_same_v<int, long>), HasSubstr("std::is_same_v<int, long>"));
}

}  // namespace
