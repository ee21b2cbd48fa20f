#include "quarn/Trace.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace {

using Quarn::traceLevelsIs;
using Quarn::traceTag;

constexpr std::uint32_t bit(int level) { return 1u << level; }

class TraceTest : public ::testing::Test {
 protected:
  TraceTest() { Quarn::traceLevelsClear(); }
  ~TraceTest() override { Quarn::traceLevelsClear(); }

  // Returns `v`, counting that it was evaluated.
  int counted(int v) {
    ++evaluations_;
    return v;
  }

  int evaluations_ = 0;
  Quarn::CaptureTraceSink sink_;
};

TEST_F(TraceTest, DisabledLevelDoesNotEvaluateItsArguments) {
  Quarn::TraceTag& tag = traceTag("TraceTestTag");
  ASSERT_TRUE(traceLevelsIs("TraceTestTag/0-3"));
  QTRACE(tag, 5, "value " << counted(7));
  EXPECT_EQ(evaluations_, 0);
  EXPECT_TRUE(sink_.lines().empty());
}

TEST_F(TraceTest, EnabledLevelEmitsTagLevelAndExactText) {
  Quarn::TraceTag& tag = traceTag("TraceTestTag");
  ASSERT_TRUE(traceLevelsIs("TraceTestTag/3"));
  QTRACE(tag, 3, "value " << counted(7) << " for " << std::string("Ethernet1"));
  EXPECT_EQ(evaluations_, 1);
  ASSERT_EQ(sink_.lines().size(), 1u);
  EXPECT_EQ(sink_.lines()[0].tag, "TraceTestTag");
  EXPECT_EQ(sink_.lines()[0].level, 3);
  EXPECT_EQ(sink_.lines()[0].text, "value 7 for Ethernet1");
  EXPECT_TRUE(sink_.contains("value 7 for Ethernet1"));
  EXPECT_FALSE(sink_.contains("value 7"));
}

TEST_F(TraceTest, LevelsOutsideTheRangeAreNeverEnabled) {
  Quarn::TraceTag& tag = traceTag("TraceTestTag");
  tag.levelsIs(~0u);
  EXPECT_EQ(tag.levels(), 0x3ffu);
  EXPECT_TRUE(tag.enabled(Quarn::TraceTag::kMaxLevel));
  for (int level : {-1, Quarn::TraceTag::kMaxLevel + 1, 40}) EXPECT_FALSE(tag.enabled(level)) << level;
}

struct SelectionCase {
  const char* selection;
  const char* tag;
  std::uint32_t levels;
};

TEST_F(TraceTest, ValidSelectionsSetTheNamedLevels) {
  const SelectionCase cases[] = {
      {"MrpSm/0-9", "MrpSm", 0x3ff},
      {"Tag/4,6", "Tag", bit(4) | bit(6)},
      {"Tag/4,6-7", "Tag", bit(4) | bit(6) | bit(7)},
      {"*/0-3", "AnyTag", 0xf},
      {"A/1,B/2-3", "A", bit(1)},
      {"A/1,B/2-3", "B", bit(2) | bit(3)},
      {"Tag/5-5", "Tag", bit(5)},
  };
  for (const SelectionCase& c : cases) {
    Quarn::traceLevelsClear();
    EXPECT_TRUE(traceLevelsIs(c.selection)) << c.selection;
    EXPECT_EQ(traceTag(c.tag).levels(), c.levels) << c.selection;
  }
}

TEST_F(TraceTest, MalformedSelectionsAreRejectedWithoutChangingAnything) {
  const char* malformed[] = {"MrpSm/x", "/3", "4", "MrpSm/5-2", "", "MrpSm/", "MrpSm/1,", "MrpSm/10",
                             "MrpSm/1-10", "MrpSm/1/2", "*/1,MrpSm/x"};
  ASSERT_TRUE(traceLevelsIs("MrpSm/2"));
  for (const char* selection : malformed) {
    EXPECT_FALSE(traceLevelsIs(selection)) << selection;
    EXPECT_EQ(traceTag("MrpSm").levels(), bit(2)) << selection;
  }
  // Nothing of a rejected selection is kept for tags created later either.
  EXPECT_EQ(traceTag("TraceTestCreatedAfterRejection").levels(), 0u);
}

TEST_F(TraceTest, SelectionsApplyToTagsCreatedLater) {
  ASSERT_TRUE(traceLevelsIs("TraceTestLater/4"));
  ASSERT_TRUE(traceLevelsIs("*/1"));
  ASSERT_TRUE(traceLevelsIs("TraceTestLaterToo/6"));
  EXPECT_EQ(traceTag("TraceTestLater").levels(), bit(1));
  EXPECT_EQ(traceTag("TraceTestLaterToo").levels(), bit(6));
  EXPECT_EQ(traceTag("TraceTestLaterOther").levels(), bit(1));
}

TEST_F(TraceTest, LaterSelectionReplacesLevelsOfTheTagsItNames) {
  ASSERT_TRUE(traceLevelsIs("*/0-3"));
  ASSERT_TRUE(traceLevelsIs("TraceTestA/5"));
  EXPECT_EQ(traceTag("TraceTestA").levels(), bit(5));
  EXPECT_EQ(traceTag("TraceTestB").levels(), 0xfu);
}

TEST_F(TraceTest, ClearDisablesEveryTagAndForgetsSelections) {
  Quarn::TraceTag& tag = traceTag("TraceTestTag");
  ASSERT_TRUE(traceLevelsIs("*/0-9"));
  Quarn::traceLevelsClear();
  EXPECT_EQ(tag.levels(), 0u);
  EXPECT_EQ(traceTag("TraceTestCreatedAfterClear").levels(), 0u);
  QTRACE(tag, 0, "hidden");
  EXPECT_TRUE(sink_.lines().empty());
}

// The registry reads MRP_TRACE once, when it is created. A threadsafe death
// test re-executes this binary, so its child starts with the variable set.
class TraceEnvDeathTest : public ::testing::Test {
 protected:
  TraceEnvDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
  ~TraceEnvDeathTest() override { unsetenv("MRP_TRACE"); }

  // The child reports the tag's levels (0-7 suffice here) as its exit status.
  static void exitWithLevels(const char* tag) { std::_Exit(static_cast<int>(traceTag(tag).levels() & 0xff)); }
};

TEST_F(TraceEnvDeathTest, EnvironmentSelectsLevelsAtStartup) {
  setenv("MRP_TRACE", "TraceEnvTag/1,5", 1);
  EXPECT_EXIT(exitWithLevels("TraceEnvTag"), ::testing::ExitedWithCode(bit(1) | bit(5)), "");
}

TEST_F(TraceEnvDeathTest, MalformedEnvironmentIsReportedAndIgnored) {
  setenv("MRP_TRACE", "*/1,TraceEnvTag/x", 1);
  EXPECT_EXIT(exitWithLevels("TraceEnvTag"), ::testing::ExitedWithCode(0),
              ::testing::HasSubstr("MRP_TRACE: ignoring malformed selection \"*/1,TraceEnvTag/x\""));
}

}  // namespace
