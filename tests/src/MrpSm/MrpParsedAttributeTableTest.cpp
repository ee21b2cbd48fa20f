#include "MrpSm/MrpParsedAttributeTable.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>

namespace {

using Mrp::MrpParsedAttributeKey;
using Mrp::MrpParsedAttributeTable;

TEST(MrpParsedAttributeTableTest, FindsWhatWasCreatedAndNothingElse) {
  MrpParsedAttributeTable table;
  const auto vlan10 = table.findOrCreate({1, 10});
  vlan10->attributeEventIs(5);
  EXPECT_EQ(table.findOrCreate({1, 10}), vlan10) << "an existing record is returned as it is";
  EXPECT_EQ(vlan10->attributeEvent(), 5);
  EXPECT_EQ(table.find({1, 10}), vlan10);
  EXPECT_FALSE(table.find({2, 10})) << "another type is another attribute";
  EXPECT_EQ(table.size(), 1u);
}

TEST(MrpParsedAttributeTableTest, ClearedRecordsAreReusedFreshForOtherKeys) {
  MrpParsedAttributeTable table;
  Mrp::MrpParsedAttribute* first = table.findOrCreate({1, 10}).ptr();
  first->attributeEventIs(3);
  first->attributeValueEnq(0x0a);
  table.clear();
  EXPECT_TRUE(table.empty());
  const auto reused = table.findOrCreate({1, 20});
  EXPECT_EQ(reused.ptr(), first) << "no allocation for the next frame's attribute";
  EXPECT_EQ(reused->key(), (MrpParsedAttributeKey{1, 20}));
  EXPECT_EQ(reused->attributeEvent(), 0);
  EXPECT_TRUE(reused->attributeValues().empty());
}

TEST(MrpParsedAttributeTableTest, ARecordSomebodyHoldsIsNotReused) {
  MrpParsedAttributeTable table;
  const Quarn::Ptr<Mrp::MrpParsedAttribute> held = table.findOrCreate({1, 10});
  table.erase({1, 10});
  const auto next = table.findOrCreate({1, 11});
  EXPECT_NE(next, held);
  EXPECT_EQ(held->key(), (MrpParsedAttributeKey{1, 10})) << "the holder's record keeps its key";
}

// Many keys, erased in a shuffled order, against a plain map: the probe
// sequences stay intact through growth and backward-shift deletion.
TEST(MrpParsedAttributeTableTest, AgreesWithAMapThroughGrowthAndErasure) {
  MrpParsedAttributeTable table;
  std::map<MrpParsedAttributeKey, std::uint8_t> expected;
  std::mt19937 random(7);
  for (std::uint64_t key = 0; key < 5000; ++key) {
    const MrpParsedAttributeKey k{static_cast<std::uint8_t>(1 + key % 4), key * 0x9e37 % 100000};
    const auto event = static_cast<std::uint8_t>(random() % 6);
    table.findOrCreate(k)->attributeEventIs(event);
    expected[k] = event;
  }
  std::vector<MrpParsedAttributeKey> keys;
  for (const auto& [k, event] : expected) keys.push_back(k);
  std::shuffle(keys.begin(), keys.end(), random);
  for (std::size_t i = 0; i < keys.size(); i += 2) {
    table.erase(keys[i]);
    expected.erase(keys[i]);
  }
  EXPECT_EQ(table.size(), expected.size());
  for (const auto& [k, event] : expected) {
    const auto found = table.find(k);
    ASSERT_TRUE(found) << unsigned{k.attributeType} << "/" << k.attributeKey;
    EXPECT_EQ(found->attributeEvent(), event);
  }
  for (std::size_t i = 0; i < keys.size(); i += 2) EXPECT_FALSE(table.find(keys[i]));
}

}  // namespace
