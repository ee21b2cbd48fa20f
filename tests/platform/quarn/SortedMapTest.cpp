#include "quarn/SortedMap.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>
#include <vector>

namespace {

using Map = Quarn::SortedMap<int, std::string>;

std::vector<std::pair<int, std::string>> entriesOf(const Map& map) {
  std::vector<std::pair<int, std::string>> out;
  for (const auto& [key, value] : map) out.emplace_back(key, value);
  return out;
}

TEST(SortedMapTest, KeepsKeysAscendingWhateverTheOrderOfInsertion) {
  Map map;
  for (int key : {30, 10, 40, 20}) map.insertOrAssign(key, std::string("v").append(std::to_string(key)));
  EXPECT_EQ(entriesOf(map), (std::vector<std::pair<int, std::string>>{{10, "v10"}, {20, "v20"}, {30, "v30"}, {40, "v40"}}));
  EXPECT_EQ(map.size(), 4u);
  ASSERT_TRUE(map.find(20));
  EXPECT_EQ(*map.find(20), "v20");
  EXPECT_FALSE(map.find(25));
}

TEST(SortedMapTest, FindOrInsertLeavesAnExistingValueAlone) {
  Map map;
  map.findOrInsert(1, [] { return std::string("first"); });
  EXPECT_EQ(map.findOrInsert(1, [] { return std::string("second"); }), "first");
  map.insertOrAssign(1, "third");
  EXPECT_EQ(*map.find(1), "third");
}

TEST(SortedMapTest, ErasedKeysAreGoneAndMayComeBack) {
  Map map;
  for (int key = 0; key < 10; ++key) map.insertOrAssign(key, "x");
  map.erase(3);
  map.erase(3);   // twice is once
  map.erase(42);  // never there
  EXPECT_FALSE(map.contains(3));
  EXPECT_EQ(map.size(), 9u);
  map.insertOrAssign(3, "back");
  EXPECT_EQ(*map.find(3), "back");
  EXPECT_EQ(map.size(), 10u);
}

// Walking the keys in order is the common case and takes a shortcut; the
// shortcut must not outlive an insertion or erasure before it.
TEST(SortedMapTest, InOrderWalksFindTheRightValuesAcrossInsertionsAndErasures) {
  Map map;
  for (int key = 0; key < 20; key += 2) map.insertOrAssign(key, std::to_string(key));
  for (int key = 0; key < 20; ++key) {
    if (key % 2) {
      EXPECT_FALSE(map.find(key)) << key;
    } else {
      ASSERT_TRUE(map.find(key)) << key;
      EXPECT_EQ(*map.find(key), std::to_string(key));
    }
  }
  ASSERT_TRUE(map.find(6));
  map.insertOrAssign(5, "five");  // before the entry found last
  map.erase(8);                   // the entry after it
  ASSERT_TRUE(map.find(5));
  EXPECT_EQ(*map.find(5), "five");
  ASSERT_TRUE(map.find(6));
  EXPECT_EQ(*map.find(6), "6");
  EXPECT_FALSE(map.find(8));
  ASSERT_TRUE(map.find(10));
  EXPECT_EQ(*map.find(10), "10");
  map.findOrInsert(9, [] { return std::string("nine"); });
  EXPECT_EQ(entriesOf(map).size(), 11u);
  ASSERT_TRUE(map.find(9));
  EXPECT_EQ(*map.find(9), "nine");
}

TEST(SortedMapTest, UpperBoundIsTheFirstKeyAfterPresentOrNot) {
  Map map;
  for (int key : {10, 20, 30, 40}) map.insertOrAssign(key, "x");
  map.erase(30);
  EXPECT_EQ(map.upperBound(20).key(), 40) << "the erased key is passed over";
  EXPECT_EQ(map.upperBound(25).key(), 40);
  EXPECT_EQ(map.upperBound(5).key(), 10);
  EXPECT_EQ(map.upperBound(40), map.end());
}

// Random inserts and erases, most keys going as a port's registrations do,
// against std::map: order, contents and size agree throughout.
TEST(SortedMapTest, AgreesWithAStdMapThroughRandomInsertsAndErases) {
  Map map;
  std::map<int, std::string> expected;
  std::mt19937 random(3);
  for (int step = 0; step < 20000; ++step) {
    const int key = static_cast<int>(random() % 500);
    if (random() % 3 == 0) {
      map.erase(key);
      expected.erase(key);
    } else {
      map.insertOrAssign(key, std::to_string(step));
      expected[key] = std::to_string(step);
    }
    if (step % 997 == 0) {
      const std::vector<std::pair<int, std::string>> want(expected.begin(), expected.end());
      ASSERT_EQ(entriesOf(map), want);
    }
  }
  EXPECT_EQ(map.size(), expected.size());
}

TEST(SortedSetTest, IsASortedSetWithUpperBound) {
  Quarn::SortedSet<std::uint64_t> set;
  for (std::uint64_t key : {5u, 1u, 3u}) set.insert(key);
  set.insert(3);
  set.erase(1);
  EXPECT_EQ(std::vector<std::uint64_t>(set.begin(), set.end()), (std::vector<std::uint64_t>{3, 5}));
  EXPECT_EQ(set.count(3), 1u);
  EXPECT_EQ(set.count(1), 0u);
  EXPECT_EQ(*set.upper_bound(3), 5u);
  EXPECT_EQ(set.upper_bound(5), set.end());
  set.clear();
  EXPECT_TRUE(set.empty());
}

}  // namespace
