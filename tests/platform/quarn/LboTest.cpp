#include "quarn/Lbo.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>

namespace {

TEST(LboTest, KeepsTheLeastSignificantOctetFirst) {
  const Quarn::LboU32 v(0x01020304);
  EXPECT_EQ(v.bytes(), (std::array<std::uint8_t, 4>{0x04, 0x03, 0x02, 0x01}));
  std::uint8_t image[4];
  std::memcpy(image, &v, sizeof v);
  EXPECT_EQ(image[0], 0x04) << "the object is its octets";
  EXPECT_EQ(v.value(), 0x01020304u);
}

TEST(LboTest, ReadsBackEveryWidth) {
  EXPECT_EQ(Quarn::LboU16(0xabcd).value(), 0xabcd);
  EXPECT_EQ(Quarn::LboU64(0x0011223344556677ULL).value(), 0x0011223344556677ULL);
  EXPECT_EQ(Quarn::LboU64(0x0011223344556677ULL).bytes()[7], 0x00);
  Quarn::LboU16 v;
  EXPECT_EQ(v.value(), 0);
  v.valueIs(0xffff);
  EXPECT_EQ(v, Quarn::LboU16(0xffff));
  EXPECT_NE(v, Quarn::LboU16(0xfffe));
}

}  // namespace
