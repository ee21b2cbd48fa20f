#include "quarn/IndexedFifo.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace {

using Fifo = Quarn::IndexedFifo<std::string>;

std::vector<std::pair<std::uint32_t, std::string>> entriesOf(const Fifo& fifo) {
  return {fifo.begin(), fifo.end()};
}

TEST(IndexedFifoTest, ValuesLeaveInArrivalOrderWithTheirPositions) {
  Fifo fifo;
  EXPECT_EQ(fifo.enq("a"), 0u);
  EXPECT_EQ(fifo.enq("b"), 1u);
  EXPECT_EQ(fifo.enq("a"), 2u);  // the same value twice is two entries
  EXPECT_EQ(fifo.size(), 3u);
  EXPECT_EQ(fifo.head(), "a");
  EXPECT_EQ(entriesOf(fifo), (std::vector<std::pair<std::uint32_t, std::string>>{{0, "a"}, {1, "b"}, {2, "a"}}));
  EXPECT_EQ(fifo.deq(), "a");
  EXPECT_EQ(entriesOf(fifo), (std::vector<std::pair<std::uint32_t, std::string>>{{1, "b"}, {2, "a"}}));
  EXPECT_EQ(fifo.enq("c"), 3u);
  EXPECT_EQ(fifo.deq(), "b");
  EXPECT_EQ(fifo.deq(), "a");
  EXPECT_EQ(fifo.deq(), "c");
  EXPECT_TRUE(fifo.empty());
}

TEST(IndexedFifoTest, PositionsStartAgainOnceEmpty) {
  Fifo fifo;
  fifo.enq("a");
  fifo.enq("b");
  fifo.deq();
  fifo.deq();
  EXPECT_EQ(fifo.enq("c"), 0u);
  fifo.delAll();
  EXPECT_TRUE(fifo.empty());
  EXPECT_EQ(fifo.enq("d"), 0u);
}

TEST(IndexedFifoTest, DequeuingAnEmptyQueueThrows) {
  Fifo fifo;
  EXPECT_THROW(fifo.deq(), std::out_of_range);
}

}  // namespace
