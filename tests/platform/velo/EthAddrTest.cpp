#include "velo/EthAddr.h"

#include <gtest/gtest.h>

#include <array>
#include <sstream>
#include <unordered_set>

namespace {

using Velo::EthAddr;

constexpr EthAddr kMvrpAddr(0x01, 0x80, 0xc2, 0x00, 0x00, 0x21);

TEST(EthAddrTest, DefaultIsZero) {
  EXPECT_TRUE(EthAddr().isZero());
  EXPECT_EQ(EthAddr().toString(), "00:00:00:00:00:00");
  EXPECT_FALSE(kMvrpAddr.isZero());
  EXPECT_FALSE(EthAddr(0, 0, 0, 0, 0, 1).isZero());
}

TEST(EthAddrTest, OctetsAreInWireOrder) {
  EXPECT_EQ(kMvrpAddr[0], 0x01);
  EXPECT_EQ(kMvrpAddr[5], 0x21);
  EXPECT_EQ(kMvrpAddr.data()[2], 0xc2);
  EXPECT_EQ(EthAddr(std::array<std::uint8_t, EthAddr::kSize>{0x01, 0x80, 0xc2, 0x00, 0x00, 0x21}), kMvrpAddr);
}

TEST(EthAddrTest, TextFormIsLowerCaseWithColons) {
  EXPECT_EQ(kMvrpAddr.toString(), "01:80:c2:00:00:21");
  EXPECT_EQ(EthAddr(0xff, 0xee, 0xdd, 0xcc, 0xbb, 0xaa).toString(), "ff:ee:dd:cc:bb:aa");
  std::ostringstream os;
  os << kMvrpAddr;
  EXPECT_EQ(os.str(), "01:80:c2:00:00:21");
}

TEST(EthAddrTest, FromStringRoundTrips) {
  for (const char* text : {"01:80:c2:00:00:21", "00:00:00:00:00:00", "ff:ff:ff:ff:ff:ff", "0a:1b:2c:3d:4e:5f"}) {
    const auto addr = EthAddr::fromString(text);
    ASSERT_TRUE(addr) << text;
    EXPECT_EQ(addr->toString(), text);
  }
  EXPECT_EQ(EthAddr::fromString("01:80:c2:00:00:21"), kMvrpAddr);
}

TEST(EthAddrTest, FromStringAcceptsUpperCase) {
  EXPECT_EQ(EthAddr::fromString("01:80:C2:00:00:21"), kMvrpAddr);
  EXPECT_EQ(EthAddr::fromString("AA:bB:Cc:dd:EE:ff"), EthAddr(0xaa, 0xbb, 0xcc, 0xdd, 0xee, 0xff));
}

TEST(EthAddrTest, FromStringRejectsMalformedText) {
  const char* malformed[] = {
      "",                      // empty
      "01:80:c2:00:00",        // too short
      "01:80:c2:00:00:2",      // one digit short
      "01:80:c2:00:00:21:",    // trailing colon
      "01:80:c2:00:00:21:00",  // seven octets
      "0180c2000021",          // no colons
      "01-80-c2-00-00-21",     // wrong separator
      "01:80:c2:00:00021",     // right length, colon missing
      "01:80:c2:00::0:21",     // right length, colon misplaced
      "01:80:g2:00:00:21",     // non-hex digit
      "01:80:c2:00:00:2x",     // non-hex last digit
      " 1:80:c2:00:00:21",     // space
      "+1:80:c2:00:00:21",     // sign
  };
  for (const char* text : malformed) EXPECT_FALSE(EthAddr::fromString(text)) << '"' << text << '"';
}

TEST(EthAddrTest, OrdersOctetByOctet) {
  EXPECT_LT(EthAddr(0, 0, 0, 0, 0, 0xff), EthAddr(0, 0, 0, 0, 1, 0));
  EXPECT_LT(kMvrpAddr, EthAddr(0x01, 0x80, 0xc2, 0x00, 0x00, 0x22));
  EXPECT_GT(EthAddr(0x02, 0, 0, 0, 0, 0), kMvrpAddr);
}

TEST(EthAddrTest, HashMatchesEquality) {
  EXPECT_EQ(std::hash<EthAddr>{}(kMvrpAddr), std::hash<EthAddr>{}(*EthAddr::fromString("01:80:c2:00:00:21")));
  const std::unordered_set<EthAddr> addrs{kMvrpAddr, EthAddr(), kMvrpAddr};
  EXPECT_EQ(addrs.size(), 2u);
  EXPECT_EQ(addrs.count(EthAddr()), 1u);
}

}  // namespace
