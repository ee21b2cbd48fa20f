#include "lumen/TraceRing.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

namespace Lumen {
namespace {

std::vector<std::int64_t> firstArgs(const TraceRing& ring) {
  std::vector<std::int64_t> args;
  for (std::size_t i = 0; i < ring.size(); ++i) args.push_back(ring.at(i).arg0);
  return args;
}

TEST(TraceRingTest, StartsEmpty) {
  TraceRing ring(4);
  EXPECT_EQ(ring.capacity(), 4u);
  EXPECT_EQ(ring.size(), 0u);
  EXPECT_EQ(ring.recorded(), 0u);
}

TEST(TraceRingTest, KeepsRecordsOldestFirstWithTheirFields) {
  TraceRing ring(4);
  ring.record("a", 1, -2);
  ring.record("b", 3);
  ASSERT_EQ(ring.size(), 2u);
  EXPECT_STREQ(ring.at(0).event, "a");
  EXPECT_EQ(ring.at(0).arg0, 1);
  EXPECT_EQ(ring.at(0).arg1, -2);
  EXPECT_STREQ(ring.last().event, "b");
  EXPECT_EQ(ring.last().arg1, 0);
}

TEST(TraceRingTest, ARecordNamesItsSubjectWhenGivenOne) {
  TraceRing ring(2);
  ring.record("a", 1, 2, "Ethernet1");
  ring.record("b");
  EXPECT_STREQ(ring.at(0).subject, "Ethernet1");
  EXPECT_EQ(ring.last().subject, nullptr);
}

TEST(TraceRingTest, NewestRecordsReplaceOldestWhenFull) {
  TraceRing ring(3);
  for (std::int64_t i = 1; i <= 7; ++i) ring.record("e", i);
  EXPECT_EQ(ring.size(), 3u);
  EXPECT_EQ(ring.recorded(), 7u);
  EXPECT_EQ(firstArgs(ring), (std::vector<std::int64_t>{5, 6, 7}));
}

TEST(TraceRingTest, ClearForgetsEveryRecord) {
  TraceRing ring(2);
  ring.record("e", 1);
  ring.clear();
  EXPECT_EQ(ring.size(), 0u);
  ring.record("e", 2);
  EXPECT_EQ(firstArgs(ring), (std::vector<std::int64_t>{2}));
}

TEST(TraceRingTest, ZeroCapacityIsRefused) { EXPECT_THROW(TraceRing(0), std::invalid_argument); }

TEST(TraceRingTest, TheProcessHasOneFastTrace) {
  EXPECT_EQ(&fastTrace(), &fastTrace());
  EXPECT_GT(fastTrace().capacity(), 0u);
}

}  // namespace
}  // namespace Lumen
