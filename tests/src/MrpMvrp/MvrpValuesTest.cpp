#include <gtest/gtest.h>

#include <sstream>
#include <vector>

#include "MrpModel/MrpValueBytes.h"
#include "MrpMvrp/MvrpAttrType.h"
#include "MrpMvrp/MvrpVlanAttribute.h"

namespace {

using Mrp::MvrpAttrType;
using Mrp::MvrpVlanAttribute;

template <class Value>
std::string textOf(const Value& value) {
  std::ostringstream os;
  os << value;
  return os.str();
}

TEST(MvrpValuesTest, VlanIsItsWireImage) {
  const MvrpVlanAttribute vlan(4095);
  const auto bytes = Mrp::valueBytes(vlan);
  EXPECT_EQ(std::vector<std::uint8_t>(bytes.begin(), bytes.end()), (std::vector<std::uint8_t>{0x0f, 0xff}));
  const std::uint8_t octets[] = {0x10, 0x00};
  EXPECT_EQ(Mrp::valueFromBytes<MvrpVlanAttribute>(octets), MvrpVlanAttribute(4096));
}

TEST(MvrpValuesTest, VlanPrintsAndReadsBack) {
  const std::string text = "Value('Mrp::MvrpVlanAttribute', ** {'vlanId': 4095})";
  EXPECT_EQ(textOf(MvrpVlanAttribute(4095)), text);
  EXPECT_EQ(MvrpVlanAttribute::fromString(text), MvrpVlanAttribute(4095));
  EXPECT_EQ(MvrpVlanAttribute::fromString("Value('Mrp::MvrpVlanAttribute', ** {'vlanId': 65535})"),
            MvrpVlanAttribute(65535))
      << "the value records carry no range check";
}

TEST(MvrpValuesTest, MalformedVlanTextIsRefused) {
  for (const char* text :
       {"", "Value('Mrp::MvrpVlanAttribute', ** {'vlanId': 65536})", "Value('Mrp::MvrpVlanAttribute', ** {'vlan': 1})",
        "Value('Mrp::MvrpVlanAttribute', ** {'vlanId': 1, 'vlanId': 2})", "Value('Mrp::Tspec', ** {'vlanId': 1})",
        "Value('Mrp::MvrpVlanAttribute', ** {'vlanId': 1}"}) {
    EXPECT_FALSE(MvrpVlanAttribute::fromString(text)) << text;
  }
}

TEST(MvrpValuesTest, VlanEqualityComparesSixteenBits) {
  EXPECT_EQ(MvrpVlanAttribute(0x0102), MvrpVlanAttribute(0x0102));
  EXPECT_NE(MvrpVlanAttribute(0x0102), MvrpVlanAttribute(0x0002));
  EXPECT_NE(MvrpVlanAttribute(0x0102), MvrpVlanAttribute(0x0103));
  MvrpVlanAttribute vlan;
  vlan.vlanIdIs(10);
  EXPECT_EQ(vlan.vlanId(), 10);
}

TEST(MvrpValuesTest, AttrTypeCodesAndNames) {
  EXPECT_EQ(static_cast<unsigned>(MvrpAttrType::invalidAttr), 0u);
  EXPECT_EQ(static_cast<unsigned>(MvrpAttrType::vlanVector), 1u);
  EXPECT_EQ(textOf(MvrpAttrType::invalidAttr), "invalidAttr");
  EXPECT_EQ(textOf(MvrpAttrType::vlanVector), "vlanVector");
  EXPECT_EQ(textOf(static_cast<MvrpAttrType>(2)), "2");
  EXPECT_EQ(Mrp::mvrpAttrTypeFromText("vlanVector"), MvrpAttrType::vlanVector);
  EXPECT_FALSE(Mrp::mvrpAttrTypeFromText("vlan"));
}

}  // namespace
