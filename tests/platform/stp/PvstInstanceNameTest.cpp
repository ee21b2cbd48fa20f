#include "stp/PvstInstanceName.h"

#include <gtest/gtest.h>

namespace {

TEST(PvstInstanceNameTest, IsVlPlusTheVlanNumber) {
  struct Case {
    std::uint16_t vlanId;
    const char* name;
  };
  for (const Case& c : {Case{1, "Vl1"}, Case{10, "Vl10"}, Case{4094, "Vl4094"}, Case{65535, "Vl65535"}}) {
    EXPECT_EQ(Stp::pvstInstanceName(c.vlanId), c.name) << c.vlanId;
  }
}

}  // namespace
