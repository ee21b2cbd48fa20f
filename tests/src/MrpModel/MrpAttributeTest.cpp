#include "MrpModel/MrpAttribute.h"

#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <unordered_set>

#include "MrpModel/MrpLeaveAllKey.h"

namespace {

using Mrp::MrpAttribute;

TEST(MrpAttributeTest, AttributesDifferingOnlyInKeyAreDistinctKeys) {
  const MrpAttribute a{Velo::IntfId("Ethernet1"), 1, 100};
  const MrpAttribute b{Velo::IntfId("Ethernet1"), 1, 101};
  EXPECT_NE(a, b);
  EXPECT_LT(a, b);
  std::map<MrpAttribute, int> ordered{{a, 1}, {b, 2}};
  std::unordered_set<MrpAttribute> hashed{a, b};
  EXPECT_EQ(ordered.size(), 2u);
  EXPECT_EQ(hashed.size(), 2u);
  EXPECT_EQ(hashed.count(MrpAttribute{Velo::IntfId("Ethernet1"), 1, 100}), 1u);
}

TEST(MrpAttributeTest, OrdersByPortThenTypeThenKey) {
  const MrpAttribute ordered[] = {
      {Velo::IntfId("Ethernet1"), 1, 900},
      {Velo::IntfId("Ethernet1"), 2, 0},
      {Velo::IntfId("Ethernet1"), 2, 5},
      {Velo::IntfId("Ethernet2"), 0, 0},
  };
  for (std::size_t i = 1; i < std::size(ordered); ++i) EXPECT_LT(ordered[i - 1], ordered[i]) << i;
}

TEST(MrpAttributeTest, PrintsItsFields) {
  std::ostringstream os;
  os << MrpAttribute{Velo::IntfId("Ethernet3"), 4, 77};
  EXPECT_EQ(os.str(), "Value('Mrp::MrpAttribute', ** {'intfId': Ethernet3, 'attributeType': 4, 'attributeKey': 77})");
}

TEST(MrpLeaveAllKeyTest, OrdersByPortThenType) {
  const Mrp::MrpLeaveAllKey a{Velo::IntfId("Ethernet1"), 2};
  const Mrp::MrpLeaveAllKey b{Velo::IntfId("Ethernet1"), 3};
  const Mrp::MrpLeaveAllKey c{Velo::IntfId("Ethernet2"), 1};
  EXPECT_LT(a, b);
  EXPECT_LT(b, c);
  EXPECT_EQ(a, (Mrp::MrpLeaveAllKey{Velo::IntfId("Ethernet1"), 2}));
}

}  // namespace
