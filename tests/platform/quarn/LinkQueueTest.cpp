#include "quarn/LinkQueue.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <stdexcept>

namespace Quarn {
namespace {

// 256 indices, so the end of the index space is a few steps away.
using SmallQueue = LinkQueue<char, std::uint8_t>;

// Enqueues and dequeues one entry at a time until every index was handed out once.
void useEveryIndex(SmallQueue& queue) {
  for (int i = 0; i <= 255; ++i) {
    ASSERT_EQ(queue.enq('x'), i);
    queue.deq();
  }
}

TEST(LinkQueueTest, AnEmptiedQueueNumbersAgainFromZeroOnceItsIndicesAreUsedUp) {
  SmallQueue queue;
  useEveryIndex(queue);
  EXPECT_EQ(queue.enq('a'), 0);
  EXPECT_EQ(queue.enq('b'), 1);
  EXPECT_EQ(queue.deq(), 'a');
  EXPECT_EQ(queue.deq(), 'b');
}

TEST(LinkQueueTest, AQueueNumbersOnBehindItsTailOnceItsIndicesAreUsedUp) {
  SmallQueue queue;
  queue.is(10, 'a');
  queue.is(254, 'y');
  ASSERT_EQ(queue.enq('z'), 255);
  queue.del(254);
  queue.del(255);
  EXPECT_EQ(queue.enq('b'), 11);
  EXPECT_EQ(queue.deq(), 'a');
  EXPECT_EQ(queue.deq(), 'b');
}

TEST(LinkQueueTest, AQueueWhoseTailHoldsTheLastIndexIsFull) {
  SmallQueue queue;
  queue.is(3, 'a');
  queue.is(255, 'z');
  try {
    queue.enq('b');
    FAIL() << "no index is left behind the tail";
  } catch (const std::range_error& error) {
    EXPECT_STREQ(error.what(), "linkqueue index space full");
  }
  EXPECT_EQ(queue.size(), 2u);
}

}  // namespace
}  // namespace Quarn
