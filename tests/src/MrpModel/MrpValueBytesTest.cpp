#include "MrpModel/MrpValueBytes.h"

#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "quarn/Nbo.h"

namespace {

// A small wire image to exercise the generic pair.
struct Pair {
  Quarn::NboU16 a;
  std::uint8_t b = 0;
  friend bool operator==(const Pair&, const Pair&) = default;
};

TEST(MrpValueBytesTest, BytesAreTheObjectOctets) {
  Pair p{Quarn::NboU16(0x0102), 3};
  const auto bytes = Mrp::valueBytes(p);
  static_assert(bytes.size() == 3);
  EXPECT_EQ(std::vector<std::uint8_t>(bytes.begin(), bytes.end()), (std::vector<std::uint8_t>{1, 2, 3}));
  EXPECT_EQ(Mrp::valueFromBytes<Pair>(bytes), p);
}

TEST(MrpValueBytesTest, ShortSpanIsZeroFilledAndLongSpanTruncated) {
  const std::array<std::uint8_t, 5> octets{1, 2, 3, 4, 5};
  EXPECT_EQ(Mrp::valueFromBytes<Pair>(std::span(octets).first(1)), (Pair{Quarn::NboU16(0x0100), 0}));
  EXPECT_EQ(Mrp::valueFromBytes<Pair>({}), Pair{});
  EXPECT_EQ(Mrp::valueFromBytes<Pair>(octets), (Pair{Quarn::NboU16(0x0102), 3}));
}

}  // namespace
