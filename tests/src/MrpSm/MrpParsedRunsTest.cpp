#include "MrpSm/MrpParsedRuns.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace {

using Mrp::MrpParsedRuns;
using Octets = std::vector<std::uint8_t>;

constexpr std::uint64_t kVlanLimit = 0xffff;
const Octets kNoDeclarations;

TEST(MrpParsedRunsTest, KeepsEachVectorsFirstValueCountAndEvents) {
  MrpParsedRuns runs;
  ASSERT_TRUE(runs.add(1, Octets{0x00, 0x0a}, 10, kVlanLimit, Octets{1, 1, 5}, kNoDeclarations));
  ASSERT_TRUE(runs.add(1, Octets{0x00, 0x64}, 100, kVlanLimit, Octets{3}, kNoDeclarations));
  ASSERT_EQ(runs.runs().size(), 2u);
  const MrpParsedRuns::Run& first = runs.runs()[0];
  EXPECT_EQ(first.count, 3);
  EXPECT_EQ(first.firstKey, 10u);
  EXPECT_EQ(first.firstValue[1], 0x0a);
  EXPECT_EQ(runs.event(first, 2), 5);
  EXPECT_EQ(runs.event(runs.runs()[1], 0), 3);
  EXPECT_EQ(runs.eventOf(1, 12), 5);
  EXPECT_EQ(runs.eventOf(1, 100), 3);
  EXPECT_FALSE(runs.eventOf(1, 13));
  EXPECT_FALSE(runs.eventOf(2, 10)) << "another type";
}

TEST(MrpParsedRunsTest, KeepsAListenerVectorsDeclarations) {
  MrpParsedRuns runs;
  ASSERT_TRUE(runs.add(3, Octets(12, 0), 7, UINT64_MAX, Octets{1, 2}, Octets{2, 3}));
  EXPECT_TRUE(runs.runs()[0].declared);
  EXPECT_EQ(runs.declaration(runs.runs()[0], 1), 3);
}

struct Refusal {
  const char* name;
  std::uint64_t firstKey;
  std::size_t count;
  std::uint64_t keyLimit;
};

// Keys 10-12 of type 1 are taken; each of these would repeat one or wrap.
TEST(MrpParsedRunsTest, RefusesRepeatedOrWrappingKeysAndTakesNothing) {
  const Refusal refusals[] = {
      {"the same first key", 10, 1, kVlanLimit},
      {"ending on the first key", 8, 3, kVlanLimit},
      {"starting on the last key", 12, 2, kVlanLimit},
      {"around the taken keys", 5, 20, kVlanLimit},
      {"past the VLAN id space", 0xfffe, 3, kVlanLimit},
      {"past a domain's class ids", 250, 10, 0xff},
      {"past the stream ids", UINT64_MAX - 1, 3, UINT64_MAX},
  };
  for (const Refusal& r : refusals) {
    SCOPED_TRACE(r.name);
    MrpParsedRuns runs;
    ASSERT_TRUE(runs.add(1, Octets{0, 10}, 10, kVlanLimit, Octets{1, 1, 1}, kNoDeclarations));
    EXPECT_FALSE(runs.add(1, Octets(2, 0), r.firstKey, r.keyLimit, Octets(r.count, 2), kNoDeclarations));
    EXPECT_EQ(runs.runs().size(), 1u);
    EXPECT_EQ(runs.eventOf(1, 10), 1);
  }
}

TEST(MrpParsedRunsTest, AdjacentKeysAndOtherTypesAreTaken) {
  MrpParsedRuns runs;
  ASSERT_TRUE(runs.add(1, Octets{0, 10}, 10, kVlanLimit, Octets{1, 1, 1}, kNoDeclarations));
  EXPECT_TRUE(runs.add(1, Octets{0, 13}, 13, kVlanLimit, Octets{1}, kNoDeclarations));
  EXPECT_TRUE(runs.add(1, Octets{0, 9}, 9, kVlanLimit, Octets{1}, kNoDeclarations));
  EXPECT_TRUE(runs.add(2, Octets{0, 10}, 10, kVlanLimit, Octets{1}, kNoDeclarations));
  EXPECT_TRUE(runs.add(1, Octets{0xff, 0xff}, 0xffff, kVlanLimit, Octets{1}, kNoDeclarations)) << "the last key fits";
  runs.clear();
  EXPECT_TRUE(runs.empty());
  EXPECT_FALSE(runs.eventOf(1, 10));
}

}  // namespace
