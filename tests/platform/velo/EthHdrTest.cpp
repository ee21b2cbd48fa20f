#include "velo/EthHdr.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using Velo::EthAddr;
using Velo::EthHdr;

const EthAddr kDst(0x01, 0x80, 0xc2, 0x00, 0x00, 0x21);
const EthAddr kSrc(0x00, 0x11, 0x22, 0x33, 0x44, 0x55);

// An MVRP frame's header followed by two payload bytes.
const std::vector<std::uint8_t> kFrame{
    0x01, 0x80, 0xc2, 0x00, 0x00, 0x21,  // destination
    0x00, 0x11, 0x22, 0x33, 0x44, 0x55,  // source
    0x88, 0xf5,                          // EtherType
    0xaa, 0xbb,                          // payload
};

TEST(EthHdrTest, ReadsFieldsFromWireBytes) {
  const auto hdr = EthHdr::fromBytes(kFrame.data(), kFrame.size());
  ASSERT_TRUE(hdr);
  EXPECT_EQ(hdr->dst(), kDst);
  EXPECT_EQ(hdr->src(), kSrc);
  EXPECT_EQ(hdr->etherType(), 0x88f5);
}

TEST(EthHdrTest, ReadsExactlyTheHeaderSize) {
  // A heap copy of exactly 14 bytes: a sanitizer build catches any over-read.
  const std::vector<std::uint8_t> exact(kFrame.begin(), kFrame.begin() + EthHdr::kSize);
  EXPECT_EQ(EthHdr::fromBytes(exact.data(), exact.size()), EthHdr(kDst, kSrc, 0x88f5));
}

TEST(EthHdrTest, ShortInputIsRejected) {
  const std::vector<std::uint8_t> shortFrame(kFrame.begin(), kFrame.begin() + EthHdr::kSize - 1);
  EXPECT_FALSE(EthHdr::fromBytes(shortFrame.data(), shortFrame.size()));
  EXPECT_FALSE(EthHdr::fromBytes(kFrame.data(), 0));
  EXPECT_FALSE(EthHdr::fromBytes(nullptr, 0));
}

TEST(EthHdrTest, WritesExactlyFourteenWireBytes) {
  std::vector<std::uint8_t> out(EthHdr::kSize + 2, 0xee);
  EthHdr(kDst, kSrc, 0x88f5).toBytes(out.data());
  EXPECT_EQ(std::vector<std::uint8_t>(out.begin(), out.begin() + EthHdr::kSize),
            std::vector<std::uint8_t>(kFrame.begin(), kFrame.begin() + EthHdr::kSize));
  EXPECT_EQ(out[EthHdr::kSize], 0xee);
  EXPECT_EQ(out[EthHdr::kSize + 1], 0xee);
}

TEST(EthHdrTest, RoundTripsThroughBytes) {
  const EthHdr hdr(kSrc, kDst, EthHdr::kVlanEtherType);
  std::vector<std::uint8_t> bytes(EthHdr::kSize);
  hdr.toBytes(bytes.data());
  EXPECT_EQ(bytes[12], 0x81);
  EXPECT_EQ(bytes[13], 0x00);
  EXPECT_EQ(EthHdr::fromBytes(bytes.data(), bytes.size()), hdr);
}

TEST(EthHdrTest, DefaultIsAllZero) {
  const EthHdr hdr;
  EXPECT_TRUE(hdr.dst().isZero());
  EXPECT_TRUE(hdr.src().isZero());
  EXPECT_EQ(hdr.etherType(), 0);
  EXPECT_NE(hdr, EthHdr(kDst, kSrc, 0));
}

TEST(EthHdrTest, Constants) {
  EXPECT_EQ(EthHdr::kSize, 14u);
  EXPECT_EQ(EthHdr::kVlanEtherType, 0x8100);
}

}  // namespace
