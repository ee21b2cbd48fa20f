#include "MrpSm/MrpTxPacketContext.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>

namespace MrpTest {
namespace {

using Mrp::MrpTxPacketContext;

TEST(MrpTxPacketContextTest, StartsWithoutMessageVectorOrType) {
  Quarn::Ptr<MrpTxPacketContext> ctx = new MrpTxPacketContext(Velo::IntfId("Ethernet1"), Velo::Pkt::pktNew(1500));
  EXPECT_EQ(ctx->intfId(), Velo::IntfId("Ethernet1"));
  EXPECT_FALSE(ctx->curMessage().has_value());
  EXPECT_FALSE(ctx->curVector().has_value());
  EXPECT_EQ(ctx->currentAttrType(), 0);
  EXPECT_EQ(ctx->capacity(), 1500u);
}

TEST(MrpTxPacketContextTest, CurVectorOrThrowRefusesAContextWithoutVector) {
  Quarn::Ptr<MrpTxPacketContext> ctx = new MrpTxPacketContext(Velo::IntfId("Ethernet1"), Velo::Pkt::pktNew(64));
  try {
    ctx->curVectorOrThrow();
    FAIL();
  } catch (const std::logic_error& e) {
    EXPECT_STREQ(e.what(), "MrpTxPacketContext without a current vector");
  }
  ctx->curVectorIs(6);
  EXPECT_EQ(ctx->curVectorOrThrow(), 6);
}

TEST(MrpTxPacketContextTest, ClearsThePacketItIsGiven) {
  auto pkt = Velo::Pkt::pktNew(64);
  std::fill_n(pkt->data(), pkt->bytes(), std::uint8_t{0xAA});
  Quarn::Ptr<MrpTxPacketContext> ctx = new MrpTxPacketContext(Velo::IntfId("Ethernet1"), pkt);
  EXPECT_TRUE(std::all_of(pkt->data(), pkt->data() + pkt->bytes(), [](std::uint8_t o) { return o == 0; }));
}

TEST(MrpTxPacketContextTest, SixteenBitFieldsAreBigEndian) {
  auto pkt = Velo::Pkt::pktNew(8);
  Quarn::Ptr<MrpTxPacketContext> ctx = new MrpTxPacketContext(Velo::IntfId("Ethernet1"), pkt);
  ctx->u16AtIs(3, 0x2A05);
  EXPECT_EQ(pkt->data()[3], 0x2A);
  EXPECT_EQ(pkt->data()[4], 0x05);
  EXPECT_EQ(ctx->u16At(3), 0x2A05);
}

TEST(MrpTxPacketContextTest, RefusesOctetsOutsideThePacket) {
  auto pkt = Velo::Pkt::pktNew(8);
  Quarn::Ptr<MrpTxPacketContext> ctx = new MrpTxPacketContext(Velo::IntfId("Ethernet1"), pkt);
  EXPECT_EQ(ctx->octets(6, 2).size(), 2u);
  EXPECT_EQ(ctx->octets(8, 0).size(), 0u);
  EXPECT_THROW(ctx->octets(7, 2), std::out_of_range);
  EXPECT_THROW(ctx->octets(9, 0), std::out_of_range);
  EXPECT_THROW(ctx->octets(1, SIZE_MAX), std::out_of_range) << "no wrap-around of offset + n";
  EXPECT_THROW(ctx->u16AtIs(7, 1), std::out_of_range);
  EXPECT_THROW(ctx->u16At(7), std::out_of_range);
  try {
    ctx->octets(8, 1);
    FAIL();
  } catch (const std::out_of_range& e) {
    EXPECT_STREQ(e.what(), "MrpTxPacketContext octets past the end of the packet not allowed");
  }
}

TEST(MrpTxPacketContextTest, WithoutPacketEveryOctetIsRefused) {
  Quarn::Ptr<MrpTxPacketContext> ctx = new MrpTxPacketContext(Velo::IntfId("Ethernet1"), nullptr);
  EXPECT_EQ(ctx->capacity(), 0u);
  EXPECT_THROW(ctx->octets(0, 0), std::out_of_range);
}

TEST(MrpTxPacketContextTest, UsesAtMostTheFirst65535Octets) {
  Quarn::Ptr<MrpTxPacketContext> ctx =
      new MrpTxPacketContext(Velo::IntfId("Ethernet1"), Velo::Pkt::pktNew(70000));
  EXPECT_EQ(ctx->capacity(), 65535u);
  EXPECT_THROW(ctx->octets(65535, 1), std::out_of_range);
}

}  // namespace
}  // namespace MrpTest
