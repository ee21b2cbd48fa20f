#include "velo/IntfId.h"

#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <unordered_set>

namespace {

using Velo::IntfId;

TEST(IntfIdTest, DefaultIsEmpty) {
  EXPECT_TRUE(IntfId().empty());
  EXPECT_EQ(IntfId().name(), "");
  EXPECT_EQ(IntfId(), IntfId(""));
}

TEST(IntfIdTest, TextFormIsTheName) {
  const IntfId id("Ethernet1");
  EXPECT_FALSE(id.empty());
  EXPECT_EQ(id.name(), "Ethernet1");
  EXPECT_EQ(id.stringValue(), "Ethernet1");
  std::ostringstream os;
  os << id;
  EXPECT_EQ(os.str(), "Ethernet1");
}

TEST(IntfIdTest, EqualityIsByName) {
  EXPECT_EQ(IntfId("Ethernet1"), IntfId("Ethernet1"));
  EXPECT_NE(IntfId("Ethernet1"), IntfId("Ethernet2"));
  EXPECT_NE(IntfId("Ethernet1"), IntfId());
}

TEST(IntfIdTest, OrdersByNameText) {
  EXPECT_LT(IntfId(), IntfId("Ethernet1"));
  EXPECT_LT(IntfId("Ethernet1"), IntfId("Ethernet2"));
  // Plain text order: "Ethernet10" sorts before "Ethernet2".
  const std::set<IntfId> ids{IntfId("Ethernet2"), IntfId("Ethernet10"), IntfId("Ethernet1")};
  const std::vector<IntfId> expected{IntfId("Ethernet1"), IntfId("Ethernet10"), IntfId("Ethernet2")};
  EXPECT_EQ(std::vector<IntfId>(ids.begin(), ids.end()), expected);
}

TEST(IntfIdTest, HashMatchesEquality) {
  EXPECT_EQ(std::hash<IntfId>{}(IntfId("Ethernet1")), std::hash<IntfId>{}(IntfId("Ethernet1")));
  const std::unordered_set<IntfId> ids{IntfId("Ethernet1"), IntfId("Ethernet2"), IntfId("Ethernet1")};
  EXPECT_EQ(ids.size(), 2u);
  EXPECT_EQ(ids.count(IntfId("Ethernet2")), 1u);
  EXPECT_EQ(ids.count(IntfId("Ethernet3")), 0u);
}

}  // namespace
