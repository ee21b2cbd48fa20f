#include "quarn/Types.h"

#include <gtest/gtest.h>

#include <sstream>
#include <unordered_set>

namespace {

using Quarn::Name;

TEST(NameTest, DefaultIsEmpty) {
  EXPECT_TRUE(Name().empty());
  EXPECT_EQ(Name().string(), "");
}

TEST(NameTest, HoldsItsText) {
  EXPECT_EQ(Name("MrpCounters").string(), "MrpCounters");
  EXPECT_EQ(Name(Quarn::String("Ethernet1")).string(), "Ethernet1");
  EXPECT_FALSE(Name("Ethernet1").empty());
}

TEST(NameTest, ComparesByText) {
  EXPECT_EQ(Name("Ethernet1"), Name(Quarn::String("Ethernet1")));
  EXPECT_NE(Name("Ethernet1"), Name("Ethernet2"));
  EXPECT_LT(Name("Ethernet1"), Name("Ethernet2"));
  EXPECT_LT(Name(), Name("a"));
}

TEST(NameTest, HashMatchesEquality) {
  EXPECT_EQ(std::hash<Name>{}(Name("Ethernet1")), std::hash<Name>{}(Name(Quarn::String("Ethernet1"))));
  std::unordered_set<Name> names{"Ethernet1", "Ethernet2", "Ethernet1"};
  EXPECT_EQ(names.size(), 2u);
  EXPECT_EQ(names.count("Ethernet2"), 1u);
}

TEST(NameTest, StreamsAsItsText) {
  std::ostringstream os;
  os << Name("MrpCounters");
  EXPECT_EQ(os.str(), "MrpCounters");
}

}  // namespace
