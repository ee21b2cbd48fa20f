#include "MrpSm/MrpAttrIter.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <unordered_map>
#include <vector>

namespace Mrp {
namespace {

using Key = MrpAttrIter::Key;

const Velo::IntfId kEth1("Ethernet1");
const Velo::IntfId kEth2("Ethernet2");

TEST(MrpAttrIterKeyTest, EqualExactlyWhenPortAndTypeAreEqual) {
  EXPECT_EQ((Key{kEth1, 3}), (Key{kEth1, 3}));
  EXPECT_NE((Key{kEth1, 3}), (Key{kEth1, 4}));
  EXPECT_NE((Key{kEth1, 3}), (Key{kEth2, 3}));
}

TEST(MrpAttrIterKeyTest, OrderedByPortThenType) {
  const std::vector<Key> ascending{{kEth1, 1}, {kEth1, 4}, {kEth2, 0}, {kEth2, 2}};
  for (std::size_t i = 0; i + 1 < ascending.size(); ++i) {
    EXPECT_LT(ascending[i], ascending[i + 1]) << i;
    EXPECT_FALSE(ascending[i + 1] < ascending[i]) << i;
  }
}

TEST(MrpAttrIterKeyTest, HashKeysAMap) {
  const std::hash<Key> hash;
  EXPECT_EQ(hash(Key{kEth1, 3}), hash(Key{kEth1, 3}));
  EXPECT_NE(hash(Key{kEth1, 3}), hash(Key{kEth1, 4}));
  std::unordered_map<Key, int> map{{{kEth1, 1}, 1}, {{kEth1, 2}, 2}, {{kEth2, 1}, 3}};
  EXPECT_EQ(map.at(Key{kEth1, 2}), 2);
  EXPECT_EQ(map.at(Key{kEth2, 1}), 3);
}

TEST(MrpAttrIterKeyTest, TextFormNamesTheTypeAndBothFields) {
  const Key key{kEth2, 4};
  EXPECT_EQ(key.stringValue(), "Value('Mrp::MrpAttrIter::Key', ** {'intfId': Ethernet2, 'attributeType': 4})");
  std::ostringstream os;
  os << key;
  EXPECT_EQ(os.str(), key.stringValue());
}

TEST(MrpAttrIterKeyTest, ParsesItsOwnTextForm) {
  for (const Key& key : {Key{kEth1, 0}, Key{kEth2, 4}, Key{Velo::IntfId("Port-Channel10"), 255}}) {
    EXPECT_EQ(Key::fromString(key.stringValue()), key) << key;
  }
  EXPECT_EQ(Key::fromString("Value('Mrp::MrpAttrIter::Key', ** {'attributeType': 1, 'intfId': Ethernet1})"),
            (Key{kEth1, 1}))
      << "fields in any order";
}

TEST(MrpAttrIterKeyTest, RefusesAnyOtherText) {
  for (const char* text : {
           "",
           "Value('Mrp::MrpAttribute', ** {'intfId': Ethernet1, 'attributeType': 1})",
           "Value('Mrp::MrpAttrIter::Key', ** {'intfId': Ethernet1})",
           "Value('Mrp::MrpAttrIter::Key', ** {'intfId': Ethernet1, 'attributeType': 256})",
           "Value('Mrp::MrpAttrIter::Key', ** {'intfId': Ethernet1, 'attributeType': -1})",
           "Value('Mrp::MrpAttrIter::Key', ** {'intfId': Ethernet1, 'attributeType': 1x})",
           "Value('Mrp::MrpAttrIter::Key', ** {'intfId': Ethernet1, 'attributeType': 1, 'attributeKey': 2})",
           "Value('Mrp::MrpAttrIter::Key', ** {'intfId': Ethernet1, 'attributeType': 1})x",
       }) {
    EXPECT_FALSE(Key::fromString(text)) << text;
  }
}

TEST(MrpAttrIterTest, KeepsItsKeysAscending) {
  MrpAttrIter iter({kEth1, 1});
  EXPECT_EQ(iter.key(), (Key{kEth1, 1}));
  for (std::uint64_t key : {30u, 10u, 20u, 10u}) iter.attributeKeyIs(key, true);
  EXPECT_EQ(std::vector<std::uint64_t>(iter.attributeKeys().begin(), iter.attributeKeys().end()),
            (std::vector<std::uint64_t>{10, 20, 30}));
  EXPECT_TRUE(iter.attributeKey(20));
  iter.attributeKeyIs(20, false);
  iter.attributeKeyIs(99, false);
  EXPECT_FALSE(iter.attributeKey(20));
  EXPECT_EQ(iter.attributeKeys().size(), 2u);
}

}  // namespace
}  // namespace Mrp
