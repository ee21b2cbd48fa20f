#include "MrpModel/VlanId.h"

#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>

namespace {

using Mrp::VlanId;

TEST(VlanIdTest, AcceptsOneToFourThousandNinetyFour) {
  EXPECT_EQ(VlanId(1).value(), 1);
  EXPECT_EQ(VlanId(4094).value(), 4094);
  EXPECT_LT(VlanId(1), VlanId(2));
  std::ostringstream os;
  os << VlanId(100);
  EXPECT_EQ(os.str(), "100");
}

TEST(VlanIdTest, RefusesValuesOutsideTheRangeWithTheRangeError) {
  for (unsigned value : {0u, 4095u, 65535u, 65536u + 5u}) {
    try {
      VlanId vlan(value);
      ADD_FAILURE() << "VlanId(" << value << ") accepted as " << vlan;
    } catch (const std::range_error& e) {
      EXPECT_STREQ(e.what(), "VlanId::value < 1 or > 4094 not allowed") << value;
    }
  }
}

}  // namespace
