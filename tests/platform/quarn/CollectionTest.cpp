#include "quarn/Collection.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <stdexcept>
#include <unordered_map>

namespace {

TEST(CollectionTest, EntryIsBuildsAnAbsentEntryOnceAndReturnsAnExistingOneUntouched) {
  std::map<int, std::shared_ptr<int>> map;
  int made = 0;
  const auto make = [&] { return std::make_shared<int>(++made); };
  const std::shared_ptr<int> first = Quarn::entryIs(map, 7, make);
  EXPECT_EQ(*first, 1);
  EXPECT_EQ(Quarn::entryIs(map, 7, make), first);
  EXPECT_EQ(made, 1);
  EXPECT_EQ(Quarn::entryOf(map, 8), nullptr);
}

TEST(CollectionTest, AnEntryThatCannotBeBuiltLeavesNoKeyBehind) {
  std::unordered_map<int, std::shared_ptr<int>> map;
  const auto fail = []() -> std::shared_ptr<int> { throw std::invalid_argument("cannot build"); };
  EXPECT_THROW(Quarn::entryIs(map, 7, fail), std::invalid_argument);
  EXPECT_TRUE(map.empty());
}

}  // namespace
