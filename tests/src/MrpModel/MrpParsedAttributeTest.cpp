#include "MrpModel/MrpParsedAttribute.h"

#include <gtest/gtest.h>

#include <sstream>
#include <unordered_set>

#include "MrpModel/MrpParseStatus.h"
#include "MrpModel/MrpParsedAttributeKey.h"

namespace MrpTest {
namespace {

using Mrp::MrpParsedAttributeKey;
using Mrp::ValueIndex;

TEST(MrpParsedAttributeKeyTest, OrdersByTypeThenKey) {
  const MrpParsedAttributeKey a{1, 500};
  const MrpParsedAttributeKey b{2, 3};
  const MrpParsedAttributeKey c{2, 4};
  EXPECT_LT(a, b);
  EXPECT_LT(b, c);
  EXPECT_FALSE(c < b);
  EXPECT_EQ(b, (MrpParsedAttributeKey{2, 3}));
  EXPECT_NE(a, (MrpParsedAttributeKey{2, 500})) << "a type and a key of another type are distinct";
}

TEST(MrpParsedAttributeKeyTest, EqualKeysHashAlike) {
  std::unordered_set<MrpParsedAttributeKey> keys{{1, 10}, {1, 10}, {2, 10}, {1, 11}};
  EXPECT_EQ(keys.size(), 3u);
  EXPECT_EQ((MrpParsedAttributeKey{3, 7}).hash(), std::hash<MrpParsedAttributeKey>{}({3, 7}));
}

TEST(MrpParsedAttributeKeyTest, PrintsItsFields) {
  std::ostringstream os;
  os << MrpParsedAttributeKey{4, 6};
  EXPECT_EQ(os.str(), "Value('Mrp::MrpParsedAttributeKey', ** {'attributeType': 4, 'attributeKey': 6})");
}

TEST(MrpParseStatusTest, PrintsItsName) {
  std::ostringstream os;
  os << Mrp::MrpParseStatus::parseContinue << " " << Mrp::MrpParseStatus::parseEndOfPdu << " "
     << Mrp::MrpParseStatus::parseMalformed << " " << static_cast<Mrp::MrpParseStatus>(7);
  EXPECT_EQ(os.str(), "parseContinue parseEndOfPdu parseMalformed 7");
}

TEST(MrpParsedAttributeTest, KeepsItsKeyEventAndValueOctets) {
  Quarn::Ptr<Mrp::MrpParsedAttribute> parsed = new Mrp::MrpParsedAttribute({1, 10});
  EXPECT_EQ(parsed->key(), (MrpParsedAttributeKey{1, 10}));
  parsed->attributeEventIs(5);
  EXPECT_EQ(parsed->attributeEvent(), 5);

  parsed->attributeValueIs(ValueIndex(0), 0x00);
  parsed->attributeValueIs(ValueIndex(1), 0x0A);
  EXPECT_EQ(parsed->attributeValues().size(), 2u);
  EXPECT_EQ(parsed->attributeValue(ValueIndex(1)), 0x0A);
  parsed->attributeValueIs(ValueIndex(1), 0x0B);
  EXPECT_EQ(parsed->attributeValue(ValueIndex(1)), 0x0B) << "a later value overwrites";

  parsed->attributeValueEnq(0x0C);
  parsed->attributeValueDel(ValueIndex(1));
  EXPECT_EQ(parsed->attributeValue(ValueIndex(1)), 0x0C);
  EXPECT_EQ(parsed->attributeValueDeq(), 0x00);
  parsed->attributeValueDelAll();
  EXPECT_TRUE(parsed->attributeValues().empty());
}

}  // namespace
}  // namespace MrpTest
