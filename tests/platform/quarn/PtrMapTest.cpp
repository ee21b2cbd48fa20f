#include "quarn/PtrMap.h"

#include <string>

#include <gtest/gtest.h>

namespace {

class Item : public Quarn::PtrInterface {
 public:
  Item(std::string key, int value = 0) : key_(std::move(key)), value_(value) {}
  const std::string& key() const { return key_; }
  int value() const { return value_; }

 private:
  std::string key_;
  int value_;
};

TEST(PtrMapTest, FindOfAbsentKeyIsNull) {
  Quarn::PtrMap<std::string, Item> map;
  EXPECT_EQ(map.find("a"), nullptr);
}

TEST(PtrMapTest, EmplaceMakesOnceFromKeyAndArguments) {
  Quarn::PtrMap<std::string, Item> map;
  auto [made, created] = map.emplace("a", 7);
  ASSERT_TRUE(created);
  EXPECT_EQ(made->key(), "a");
  EXPECT_EQ(made->value(), 7);

  auto [again, createdAgain] = map.emplace("a", 9);
  EXPECT_FALSE(createdAgain);
  EXPECT_EQ(again, made);
  EXPECT_EQ(again->value(), 7);
  EXPECT_EQ(map.find("a"), made);
  EXPECT_EQ(map.size(), 1u);
}

TEST(PtrMapTest, AssignReportsWhetherTheSlotChanged) {
  Quarn::PtrMap<std::string, Item> map;
  Quarn::Ptr<Item> first = new Item("a");
  Quarn::Ptr<Item> second = new Item("a");
  EXPECT_TRUE(map.assign("a", first));
  EXPECT_FALSE(map.assign("a", first));
  EXPECT_TRUE(map.assign("a", second));
  EXPECT_EQ(map.find("a"), second);
}

TEST(PtrMapTest, EraseAndClearDropTheReferences) {
  Quarn::PtrMap<std::string, Item> map;
  Quarn::Ptr<Item> a = map.emplace("a").first;
  Quarn::Ptr<Item> b = map.emplace("b").first;
  EXPECT_EQ(a->references(), 2u);

  EXPECT_TRUE(map.erase("a"));
  EXPECT_FALSE(map.erase("a"));
  EXPECT_EQ(a->references(), 1u);
  ASSERT_EQ(map.size(), 1u);
  EXPECT_EQ(map.map().begin()->first, "b");

  map.clear();
  EXPECT_EQ(map.size(), 0u);
  EXPECT_EQ(b->references(), 1u);
}

}  // namespace
