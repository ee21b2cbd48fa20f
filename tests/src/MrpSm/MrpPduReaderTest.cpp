#include "MrpSm/MrpPduReader.h"

#include <gtest/gtest.h>

#include <vector>

namespace MrpTest {
namespace {

using Mrp::MrpPduReader;

Quarn::Ptr<Velo::Pkt> pktOf(const std::vector<std::uint8_t>& bytes) {
  return Velo::Pkt::pktNew(bytes.data(), bytes.size());
}

TEST(MrpPduReaderTest, ReadsBigEndianFieldsAndConsumesThem) {
  Quarn::Ptr<Velo::Pkt> pkt = pktOf({
      0x01,                                            // U8
      0x02, 0x03,                                      // U16
      0x04, 0x05, 0x06, 0x07,                          // U32
      0x08, 0x09, 0x0A, 0x0B, 0x0C, 0x0D, 0x0E, 0x0F,  // U64
      0x91, 0xE0, 0xF0, 0x00, 0xFE, 0x00,              // EthAddr
      0xEE,                                            // left over
  });
  MrpPduReader in(*pkt);
  std::uint8_t u8 = 0;
  std::uint16_t u16 = 0;
  std::uint32_t u32 = 0;
  std::uint64_t u64 = 0;
  Velo::EthAddr addr;
  ASSERT_TRUE(in.readU8(u8));
  ASSERT_TRUE(in.readU16(u16));
  ASSERT_TRUE(in.readU32(u32));
  ASSERT_TRUE(in.readU64(u64));
  ASSERT_TRUE(in.readEthAddr(addr));
  EXPECT_EQ(u8, 0x01);
  EXPECT_EQ(u16, 0x0203);
  EXPECT_EQ(u32, 0x04050607u);
  EXPECT_EQ(u64, 0x08090A0B0C0D0E0FULL);
  EXPECT_EQ(addr, Velo::EthAddr(0x91, 0xE0, 0xF0, 0x00, 0xFE, 0x00));
  EXPECT_EQ(in.bytesLeft(), 1u);
  EXPECT_EQ(pkt->data()[0], 0xEE) << "reads consume the packet in place";
}

TEST(MrpPduReaderTest, ReadPastTheEndFailsAndConsumesNothing) {
  Quarn::Ptr<Velo::Pkt> pkt = pktOf({0xAA, 0xBB, 0xCC});
  MrpPduReader in(*pkt);
  std::uint32_t u32 = 7;
  std::uint64_t u64 = 7;
  Velo::EthAddr addr;
  EXPECT_FALSE(in.readU32(u32));
  EXPECT_FALSE(in.readU64(u64));
  EXPECT_FALSE(in.readEthAddr(addr));
  EXPECT_FALSE(in.skip(4));
  EXPECT_EQ(u32, 7u);
  EXPECT_EQ(in.bytesLeft(), 3u);
  std::uint16_t u16 = 0;
  EXPECT_TRUE(in.readU16(u16));
  EXPECT_FALSE(in.readU16(u16)) << "one octet left";
  std::uint8_t u8 = 0;
  EXPECT_TRUE(in.readU8(u8));
  EXPECT_FALSE(in.readU8(u8));
  EXPECT_EQ(in.bytesLeft(), 0u);
}

TEST(MrpPduReaderTest, LooksAheadWithoutConsuming) {
  Quarn::Ptr<Velo::Pkt> pkt = pktOf({0x00, 0x00, 0x7F});
  MrpPduReader in(*pkt);
  std::uint16_t word = 1;
  std::uint8_t octet = 0;
  std::span<const std::uint8_t> bytes;
  EXPECT_TRUE(in.peekU16(word));
  EXPECT_EQ(word, 0);
  EXPECT_TRUE(in.peekU8(2, octet));
  EXPECT_EQ(octet, 0x7F);
  EXPECT_FALSE(in.peekU8(3, octet));
  EXPECT_TRUE(in.peekBytes(3, bytes));
  EXPECT_EQ(bytes.size(), 3u);
  EXPECT_FALSE(in.peekBytes(4, bytes));
  EXPECT_EQ(in.bytesLeft(), 3u);
  ASSERT_TRUE(in.skip(2));
  EXPECT_FALSE(in.peekU16(word)) << "one octet left";
}

TEST(MrpPduReaderTest, TalkerAdvertiseFirstValueIsReadFieldByField) {
  Quarn::Ptr<Velo::Pkt> pkt = pktOf({
      0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x00, 0x01,  // StreamID
      0x91, 0xE0, 0xF0, 0x00, 0xFE, 0x00,              // Destination_Address
      0x00, 0x02,                                      // VLAN_identifier
      0x00, 0x80,                                      // MaxFrameSize
      0x00, 0x01,                                      // MaxIntervalFrames
      0x7F,                                            // priority 3, rank 1, reserved bits set
      0x00, 0x01, 0x00, 0x00,                          // AccumulatedLatency
      0x24,                                            // first packed octet, not read
  });
  const std::optional<Mrp::MsrpTalkerAdvertiseAttribute> talker = Mrp::parseTalkerAdvertise(pkt);
  ASSERT_TRUE(talker);
  EXPECT_EQ(talker->streamId(), 0x0011223344550001ULL);
  EXPECT_EQ(talker->frame().dmac(), Velo::EthAddr(0x91, 0xE0, 0xF0, 0x00, 0xFE, 0x00));
  EXPECT_EQ(talker->frame().vlanId(), 2);
  EXPECT_EQ(talker->tSpec().maxFrameSize(), 128);
  EXPECT_EQ(talker->tSpec().maxIntervalFrames(), 1);
  EXPECT_EQ(talker->priorityAndRank(), Mrp::PriorityAndRank(3, 1)) << "the reserved nibble is dropped";
  EXPECT_EQ(talker->accumulatedLatency(), 0x10000u);
  EXPECT_EQ(pkt->bytes(), 1u);
}

TEST(MrpPduReaderTest, TalkerAdvertiseCutShortIsNoValue) {
  Quarn::Ptr<Velo::Pkt> pkt = Velo::Pkt::pktNew(24);
  EXPECT_FALSE(Mrp::parseTalkerAdvertise(pkt));
}

}  // namespace
}  // namespace MrpTest
