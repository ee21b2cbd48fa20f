#include "MrpModel/MrpCounters.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Mrp::MrpCounters;

struct CounterAccess {
  const char* name;
  std::uint64_t (MrpCounters::*read)() const;
  void (MrpCounters::*set)(std::uint64_t);
  void (MrpCounters::*inc)(std::uint64_t);
};

const std::vector<CounterAccess>& counters() {
  static const std::vector<CounterAccess> all{
#define MRP_COUNTER_ACCESS(c) {#c, &MrpCounters::c, &MrpCounters::c##Is, &MrpCounters::c##Inc},
      MRP_COUNTERS(MRP_COUNTER_ACCESS)
#undef MRP_COUNTER_ACCESS
  };
  return all;
}

TEST(MrpCountersTest, HasTheTenCountersInResetOrder) {
  std::vector<std::string> names;
  for (const auto& c : counters()) names.push_back(c.name);
  EXPECT_EQ(names, (std::vector<std::string>{"numOfIncorrectPduVersion", "numOfUnknownAttributeType",
                                              "numOfMalformedPkts", "numOfUnknownApplication", "numOfIncorrectDmac",
                                              "numOfIncorrectEtype", "numOfPktsProcessed", "numOfPktsTransmitted",
                                              "numOfJoinIndications", "numOfLeaveIndications"}));
}

TEST(MrpCountersTest, EachCounterIsSetAndIncrementedOnItsOwn) {
  for (const auto& c : counters()) {
    Quarn::Ptr<MrpCounters> counts = new MrpCounters("MrpCounters");
    EXPECT_EQ((counts.ptr()->*c.read)(), 0u) << c.name;
    (counts.ptr()->*c.set)(0xfffffffffULL);
    (counts.ptr()->*c.inc)(1);
    (counts.ptr()->*c.inc)(2);
    EXPECT_EQ((counts.ptr()->*c.read)(), 0x1000000002ULL) << c.name;
    for (const auto& other : counters()) {
      if (other.name == c.name) continue;
      EXPECT_EQ((counts.ptr()->*other.read)(), 0u) << c.name << " moved " << other.name;
    }
  }
}

TEST(MrpCountersTest, IsCreatedWithItsName) {
  Quarn::Ptr<MrpCounters> counts = new MrpCounters("MrpCounters");
  EXPECT_EQ(counts->name(), Quarn::Name("MrpCounters"));
}

}  // namespace
