#include "MrpModel/ValueIndex.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using Mrp::ValueIndex;

constexpr const char* kRangeError = "ValueIndex::value < ValueIndex::min or > ValueIndex::max not allowed";

void expectRangeError(unsigned value) {
  try {
    ValueIndex index(value);
    FAIL() << "ValueIndex(" << value << ") accepted";
  } catch (const std::range_error& e) {
    EXPECT_STREQ(e.what(), kRangeError);
  }
}

TEST(ValueIndexTest, AcceptsZeroToSixtyFour) {
  EXPECT_EQ(ValueIndex(0).value(), 0);
  EXPECT_EQ(ValueIndex(64).value(), 64);
  EXPECT_EQ(ValueIndex::min, 0);
  EXPECT_EQ(ValueIndex::max, 64);
}

TEST(ValueIndexTest, RefusesValuesOutsideTheRangeWithTheRangeError) {
  expectRangeError(65);
  expectRangeError(255);
  expectRangeError(static_cast<unsigned>(-1));
}

TEST(ValueIndexTest, IncrementPastMaxRaisesTheRangeError) {
  ValueIndex index(63);
  EXPECT_EQ((++index).value(), 64);
  try {
    ++index;
    FAIL() << "incremented past 64";
  } catch (const std::range_error& e) {
    EXPECT_STREQ(e.what(), kRangeError);
  }
  EXPECT_EQ(index.value(), 64) << "a failed increment changes nothing";
}

}  // namespace
