#include <gtest/gtest.h>

#include "BridgeId.h"

namespace MrpTest {
namespace {

TEST(BridgeIdTest, TheTextIsEightColonSeparatedOctetsAndReadsBack) {
  EXPECT_EQ(MrpAgent::bridgeIdText(0x8000020000000001ULL), "80:00:02:00:00:00:00:01");
  EXPECT_EQ(MrpAgent::bridgeIdFromText("80:00:02:00:00:00:00:01"), 0x8000020000000001ULL);
  EXPECT_EQ(MrpAgent::bridgeIdFromText("FF:ff:00:00:00:00:00:0a"), 0xffff00000000000aULL);
}

TEST(BridgeIdTest, AnythingButEightHexOctetsIsRefused) {
  for (const char* text : {"", "80:00:02:00:00:00:00", "80:00:02:00:00:00:00:01:02", "80-00-02-00-00-00-00-01",
                           "80:00:02:00:00:00:00:0g", "8:000:02:00:00:00:00:01", "80:00:02:00:00:00:00:1 "}) {
    EXPECT_EQ(MrpAgent::bridgeIdFromText(text), std::nullopt) << text;
  }
}

TEST(BridgeIdTest, ANamesIdentifierIsStableUnicastLocallyAdministeredAndDiffersByName) {
  const std::uint64_t sw1 = MrpAgent::bridgeIdOfName("sw1");
  EXPECT_EQ(sw1, MrpAgent::bridgeIdOfName("sw1"));
  EXPECT_NE(sw1, MrpAgent::bridgeIdOfName("sw2"));
  EXPECT_EQ(sw1 >> 48, 0x8000u);
  const unsigned firstOctet = (sw1 >> 40) & 0xff;
  EXPECT_EQ(firstOctet & 0x03, 0x02u) << "locally administered, unicast";
}

}  // namespace
}  // namespace MrpTest
