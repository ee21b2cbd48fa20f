#include "MrpModel/MrpValueText.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using Mrp::mrpUnsignedFromText;
using Mrp::mrpValueFields;

constexpr std::string_view kNested = "Value('T', ** {'a': Value('U', ** {'x': 1, 'y': 2}), 'b': 'q,}', 'c': 7})";

TEST(MrpValueTextTest, GivesFieldTextsInTheOrderAsked) {
  const auto fields = mrpValueFields("Value('T', ** {'a': 1, 'b': 22})", "T", {"b", "a"});
  ASSERT_TRUE(fields);
  EXPECT_EQ((*fields)[0], "22");
  EXPECT_EQ((*fields)[1], "1");
}

TEST(MrpValueTextTest, NestedValuesAndQuotedCommasStayInOneField) {
  const auto fields = mrpValueFields(kNested, "T", {"a", "b", "c"});
  ASSERT_TRUE(fields);
  EXPECT_EQ((*fields)[0], "Value('U', ** {'x': 1, 'y': 2})");
  EXPECT_EQ((*fields)[1], "'q,}'");
  EXPECT_EQ((*fields)[2], "7");
}

TEST(MrpValueTextTest, ToleratesExtraSpacesBetweenTokens) {
  EXPECT_TRUE(mrpValueFields(" Value( 'T' ,  ** {  'a' :  1 ,'b':2 } ) ", "T", {"a", "b"}));
}

TEST(MrpValueTextTest, RefusesTextThatIsNotExactlyTheFieldsOfTheType) {
  for (std::string_view text : {
           "",
           "Value('T', ** {'a': 1})",                  // missing field
           "Value('T', ** {'a': 1, 'b': 2, 'c': 3})",  // unknown field
           "Value('T', ** {'a': 1, 'a': 2})",          // duplicate field
           "Value('V', ** {'a': 1, 'b': 2})",          // other type
           "Value('T', ** {'a': 1, 'b': 2}) x",        // trailing text
           "Value('T', ** {'a': 1, 'b': })",           // empty value
           "Value('T', ** {'a': 1, 'b': 2)",           // unclosed brace
           "Value('T', ** {'a': 1, 'b': (2})",         // unbalanced bracket
           "Value('T', ** {'a': 1, 'b': 2])})",        // stray closer
           "Value('T', ** {'a': 1 'b': 2})",           // missing comma
           "Value('T', {'a': 1, 'b': 2})",             // missing **
           "Value('T', ** {'a: 1, 'b': 2})",           // broken quote
           "Value('T', ** {'a': 'open, 'b': 2})",      // unterminated quote
       }) {
    EXPECT_FALSE(mrpValueFields(text, "T", {"a", "b"})) << text;
  }
}

TEST(MrpValueTextTest, EveryCutOfAValidTextIsRefused) {
  const std::string text(kNested);
  for (std::size_t n = 0; n < text.size(); ++n) {
    // A copy of exactly n characters, so a read past the cut is a read past
    // the buffer.
    const std::string cut = text.substr(0, n);
    EXPECT_FALSE(mrpValueFields(cut, "T", {"a", "b", "c"})) << cut;
  }
  EXPECT_TRUE(mrpValueFields(text, "T", {"a", "b", "c"}));
}

TEST(MrpValueTextTest, UnsignedIsDecimalWholeTextWithinRange) {
  EXPECT_EQ(mrpUnsignedFromText<std::uint8_t>("255"), 255);
  EXPECT_EQ(mrpUnsignedFromText<std::uint64_t>("18446744073709551615"), UINT64_MAX);
  for (std::string_view text : {"", "256", "-1", "+1", "0x10", "1 ", " 1", "1a"}) {
    EXPECT_FALSE(mrpUnsignedFromText<std::uint8_t>(text)) << text;
  }
}

}  // namespace
