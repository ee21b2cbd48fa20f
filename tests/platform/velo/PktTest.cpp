#include "velo/Pkt.h"

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>
#include <vector>

namespace {

using Velo::Pkt;

std::vector<std::uint8_t> contents(const Pkt& pkt) { return {pkt.span().begin(), pkt.span().end()}; }

const std::vector<std::uint8_t> kBytes{1, 2, 3, 4, 5, 6, 7, 8};

Quarn::Ptr<Pkt> bytesPkt(std::size_t headRoom = Pkt::kDefaultHeadRoom) {
  return Pkt::pktNew(kBytes.data(), kBytes.size(), headRoom);
}

TEST(PktTest, NewPacketIsZeroFilledWithDefaultHeadRoom) {
  const auto pkt = Pkt::pktNew(6);
  EXPECT_EQ(pkt->bytes(), 6u);
  EXPECT_EQ(pkt->frontBytes(), 6u);
  EXPECT_EQ(pkt->headRoom(), Pkt::kDefaultHeadRoom);
  EXPECT_EQ(pkt->tailRoom(), 0u);
  EXPECT_EQ(contents(*pkt), std::vector<std::uint8_t>(6, 0));
  EXPECT_EQ(pkt->references(), 1u);
}

TEST(PktTest, NewPacketHasTheRequestedRoom) {
  const auto pkt = Pkt::pktNew(4, 2, 3);
  EXPECT_EQ(pkt->headRoom(), 2u);
  EXPECT_EQ(pkt->bytes(), 4u);
  EXPECT_EQ(pkt->tailRoom(), 3u);
}

TEST(PktTest, EmptyPacketIsValid) {
  // A literal 0 would also read as a null source pointer.
  const auto pkt = Pkt::pktNew(std::size_t{0}, 0, 0);
  EXPECT_EQ(pkt->bytes(), 0u);
  EXPECT_TRUE(pkt->span().empty());
  EXPECT_NE(pkt->data(), nullptr);
}

TEST(PktTest, NewFromBytesCopiesThem) {
  std::vector<std::uint8_t> source = kBytes;
  const auto pkt = Pkt::pktNew(source.data(), source.size());
  source[0] = 0xff;
  EXPECT_EQ(contents(*pkt), kBytes);
  EXPECT_EQ(pkt->headRoom(), Pkt::kDefaultHeadRoom);
  EXPECT_EQ(pkt->span().data(), pkt->data());
}

TEST(PktTest, OverflowingSizesAreRejected) {
  constexpr std::size_t kMax = std::numeric_limits<std::size_t>::max();
  EXPECT_THROW(Pkt::pktNew(kMax, 1), std::length_error);
  EXPECT_THROW(Pkt::pktNew(1, kMax - 1, 1), std::length_error);
}

TEST(PktTest, DataIsWritable) {
  const auto pkt = Pkt::pktNew(2);
  pkt->data()[1] = 0x42;
  EXPECT_EQ(contents(*pkt), (std::vector<std::uint8_t>{0, 0x42}));
}

TEST(PktTest, DelSharedHeadDataRemovesFromTheFront) {
  const auto pkt = bytesPkt(4);
  ASSERT_TRUE(pkt->delSharedHeadData(3));
  EXPECT_EQ(contents(*pkt), (std::vector<std::uint8_t>{4, 5, 6, 7, 8}));
  EXPECT_EQ(pkt->headRoom(), 7u);
}

TEST(PktTest, DelSharedHeadDataCanConsumeEverything) {
  const auto pkt = bytesPkt();
  ASSERT_TRUE(pkt->delSharedHeadData(kBytes.size()));
  EXPECT_EQ(pkt->bytes(), 0u);
  EXPECT_TRUE(pkt->span().empty());
  EXPECT_EQ(pkt->tailRoom(), 0u);
  EXPECT_TRUE(pkt->delSharedHeadData(0));
  EXPECT_FALSE(pkt->delSharedHeadData(1));
}

TEST(PktTest, DelSharedHeadDataBeyondTheDataChangesNothing) {
  const auto pkt = bytesPkt(4);
  EXPECT_FALSE(pkt->delSharedHeadData(kBytes.size() + 1));
  EXPECT_EQ(contents(*pkt), kBytes);
  EXPECT_EQ(pkt->headRoom(), 4u);
}

TEST(PktTest, PrependGrowsIntoTheHeadRoom) {
  const auto pkt = bytesPkt(4);
  std::uint8_t* front = pkt->prepend(2);
  ASSERT_NE(front, nullptr);
  EXPECT_EQ(front, pkt->data());
  front[0] = 0xa0;
  front[1] = 0xa1;
  EXPECT_EQ(contents(*pkt), (std::vector<std::uint8_t>{0xa0, 0xa1, 1, 2, 3, 4, 5, 6, 7, 8}));
  EXPECT_EQ(pkt->headRoom(), 2u);
}

TEST(PktTest, PrependCanUseExactlyTheHeadRoom) {
  const auto pkt = bytesPkt(4);
  ASSERT_NE(pkt->prepend(4), nullptr);
  EXPECT_EQ(pkt->headRoom(), 0u);
  EXPECT_EQ(pkt->bytes(), kBytes.size() + 4);
  EXPECT_EQ(pkt->prepend(1), nullptr);
}

TEST(PktTest, PrependBeyondTheHeadRoomChangesNothing) {
  const auto pkt = bytesPkt(4);
  EXPECT_EQ(pkt->prepend(5), nullptr);
  EXPECT_EQ(contents(*pkt), kBytes);
  EXPECT_EQ(pkt->headRoom(), 4u);
}

TEST(PktTest, PrependReusesRoomFreedAtTheFront) {
  const auto pkt = bytesPkt(0);
  ASSERT_TRUE(pkt->delSharedHeadData(3));
  ASSERT_NE(pkt->prepend(3), nullptr);
  EXPECT_EQ(pkt->bytes(), kBytes.size());
  EXPECT_EQ(pkt->prepend(1), nullptr);
}

TEST(PktTest, TrimShortensTheData) {
  const auto pkt = bytesPkt();
  ASSERT_TRUE(pkt->trim(3));
  EXPECT_EQ(contents(*pkt), (std::vector<std::uint8_t>{1, 2, 3}));
  EXPECT_EQ(pkt->tailRoom(), kBytes.size() - 3);
  EXPECT_TRUE(pkt->trim(3));
  EXPECT_TRUE(pkt->trim(0));
  EXPECT_EQ(pkt->bytes(), 0u);
}

TEST(PktTest, TrimToALongerLengthChangesNothing) {
  const auto pkt = bytesPkt();
  EXPECT_FALSE(pkt->trim(kBytes.size() + 1));
  EXPECT_EQ(contents(*pkt), kBytes);
  EXPECT_EQ(pkt->tailRoom(), 0u);
}

TEST(PktTest, AppendGrowsIntoTheTailRoomWithZeros) {
  const auto pkt = Pkt::pktNew(2, 0, 3);
  pkt->data()[0] = 9;
  std::uint8_t* added = pkt->append(3);
  ASSERT_NE(added, nullptr);
  EXPECT_EQ(added, pkt->data() + 2);
  EXPECT_EQ(contents(*pkt), (std::vector<std::uint8_t>{9, 0, 0, 0, 0}));
  EXPECT_EQ(pkt->tailRoom(), 0u);
  EXPECT_EQ(pkt->append(1), nullptr);
}

TEST(PktTest, AppendAfterTrimZeroesTheOldBytes) {
  const auto pkt = bytesPkt();
  ASSERT_TRUE(pkt->trim(2));
  ASSERT_NE(pkt->append(2), nullptr);
  EXPECT_EQ(contents(*pkt), (std::vector<std::uint8_t>{1, 2, 0, 0}));
}

TEST(PktTest, AppendBeyondTheTailRoomChangesNothing) {
  const auto pkt = Pkt::pktNew(2, 0, 3);
  EXPECT_EQ(pkt->append(4), nullptr);
  EXPECT_EQ(pkt->bytes(), 2u);
  EXPECT_EQ(pkt->tailRoom(), 3u);
}

TEST(PktTest, CopyHasTheSameDataAndFreshHeadRoom) {
  const auto pkt = bytesPkt(4);
  ASSERT_TRUE(pkt->delSharedHeadData(2));
  const auto copy = pkt->copy();
  EXPECT_EQ(contents(*copy), contents(*pkt));
  EXPECT_EQ(copy->headRoom(), Pkt::kDefaultHeadRoom);
  EXPECT_EQ(copy->tailRoom(), 0u);
  EXPECT_EQ(copy->references(), 1u);
  copy->data()[0] = 0xff;
  EXPECT_EQ(pkt->data()[0], 3);
}

}  // namespace
