#include "MrpModel/ValueQueue.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

namespace {

using Mrp::ValueIndex;
using Mrp::ValueQueue;

void fill(ValueQueue& q, unsigned n) {
  for (unsigned i = 0; i < n; ++i) q.enq(static_cast<std::uint8_t>(i));
}

TEST(ValueQueueTest, TakesSixtyFiveOctetsAndRefusesTheSixtySixth) {
  ValueQueue q;
  fill(q, 65);
  EXPECT_TRUE(q.full());
  try {
    q.enq(0xaa);
    FAIL() << "the 66th octet was accepted";
  } catch (const std::range_error& e) {
    EXPECT_STREQ(e.what(), "ArrayQueue full");
  }
  EXPECT_EQ(q.size(), 65u);
}

TEST(ValueQueueTest, AfterOneRemovalAcceptsOneMoreAtPositionZero) {
  ValueQueue q;
  fill(q, 65);
  EXPECT_EQ(q.deq(), 0);
  EXPECT_EQ(q.tail(), ValueIndex(0)) << "the write position wrapped from 64 to 0";
  q.enq(0xbb);
  EXPECT_EQ(q.at(ValueIndex(0)), 0xbb);
  EXPECT_EQ(q.head(), ValueIndex(1));
  EXPECT_THROW(q.enq(0xcc), std::range_error);
  // Reading on wraps too: 1..64, then the octet at 0.
  for (unsigned i = 1; i <= 64; ++i) EXPECT_EQ(q.deq(), i);
  EXPECT_EQ(q.deq(), 0xbb);
  EXPECT_TRUE(q.empty());
}

TEST(ValueQueueTest, WritesByIndexFromZero) {
  ValueQueue q;
  q.is(ValueIndex(0), 0x12);
  q.is(ValueIndex(1), 0x34);
  q.is(ValueIndex(0), 0x56);
  EXPECT_EQ(q.size(), 2u);
  EXPECT_EQ(q.at(ValueIndex(0)), 0x56);
  EXPECT_EQ(q.at(ValueIndex(1)), 0x34);
  EXPECT_FALSE(q.has(ValueIndex(2)));
  EXPECT_EQ(q.at(ValueIndex(2)), 0);
}

TEST(ValueQueueTest, WritingBehindTheTailFillsTheGapWithZeros) {
  ValueQueue q;
  q.is(ValueIndex(0), 1);
  q.is(ValueIndex(3), 4);
  EXPECT_EQ(q.size(), 4u);
  EXPECT_EQ(q.at(ValueIndex(1)), 0);
  EXPECT_EQ(q.at(ValueIndex(3)), 4);
}

TEST(ValueQueueTest, WritingAtTheWrappedTailFillsTheLastFreePosition) {
  ValueQueue q;
  fill(q, 65);
  q.deq();
  q.is(ValueIndex(0), 9);
  EXPECT_TRUE(q.full());
  EXPECT_EQ(q.at(ValueIndex(0)), 9);
  EXPECT_EQ(q.head(), ValueIndex(1));
}

TEST(ValueQueueTest, DeleteByIndexClosesTheGap) {
  ValueQueue q;
  fill(q, 4);
  q.del(ValueIndex(1));
  EXPECT_EQ(q.size(), 3u);
  EXPECT_EQ(q.deq(), 0);
  EXPECT_EQ(q.deq(), 2);
  EXPECT_EQ(q.deq(), 3);
  q.del(ValueIndex(5));
  EXPECT_TRUE(q.empty()) << "deleting an absent position changes nothing";
}

TEST(ValueQueueTest, DeleteAllRestartsAtZero) {
  ValueQueue q;
  fill(q, 10);
  q.deq();
  q.delAll();
  EXPECT_TRUE(q.empty());
  EXPECT_EQ(q.head(), ValueIndex(0));
  q.enq(7);
  EXPECT_EQ(q.at(ValueIndex(0)), 7);
}

TEST(ValueQueueTest, DequeueOfAnEmptyQueueThrows) {
  ValueQueue q;
  EXPECT_THROW(q.deq(), std::out_of_range);
}

}  // namespace

namespace {

TEST(ValueQueueAssignTest, HoldsTheOctetsFromPositionZeroWhateverWasThere) {
  Mrp::ValueQueue queue;
  for (int i = 0; i < 10; ++i) queue.enq(0xee);
  queue.deq();
  const std::uint8_t octets[] = {1, 2, 3};
  queue.assign(octets);
  ASSERT_EQ(queue.size(), 3u);
  EXPECT_EQ(queue.head(), Mrp::ValueIndex(0));
  EXPECT_EQ(queue.at(Mrp::ValueIndex(2)), 3);
  EXPECT_EQ(queue.at(Mrp::ValueIndex(3)), 0) << "nothing is held behind the octets";
}

TEST(ValueQueueAssignTest, RefusesMoreThanSixtyFiveOctets) {
  Mrp::ValueQueue queue;
  const std::vector<std::uint8_t> tooMany(66, 1);
  EXPECT_THROW(queue.assign(tooMany), std::range_error);
  EXPECT_TRUE(queue.empty());
}

}  // namespace
