#include "agent/CountingPam.h"

#include <gtest/gtest.h>

#include <vector>

#include "agent/CountingPamFactory.h"
#include "velo/MemPam.h"

namespace {

using MrpCli::CountingPam;
using MrpCli::PortCounters;

// An MVRP frame: VLAN 10 JoinIn, with or without a LeaveAll of the VLAN type.
std::vector<std::uint8_t> mvrpFrame(bool leaveAll) {
  return {0x01, 0x80, 0xc2, 0x00, 0x00, 0x21,               // destination
          0x00, 0x1b, 0x21, 0xaa, 0xbb, 0x02,               // source
          0x88, 0xf5,                                       // EtherType
          0x00,                                             // ProtocolVersion
          0x01, 0x02,                                       // VLAN message
          static_cast<std::uint8_t>(leaveAll ? 0x20 : 0x00), 0x01,  // LeaveAll, one value
          0x00, 0x0a, 0x24,                                 // VLAN 10, JoinIn
          0x00, 0x00, 0x00, 0x00};                          // EndMarks
}

// Stands in for the engine: takes each announced frame and counts it as
// the engine would count a frame that makes a join indication.
class FakeEngine : public Velo::Pam::Notifiee {
 public:
  explicit FakeEngine(Velo::Pam* pam) { notifierIs(pam); }
  void onReadableCount() override {
    if (notifier()->rxPkt()) {
      counters.numOfPktsProcessedInc();
      counters.numOfJoinIndicationsInc();
      if (malformed) counters.numOfMalformedPktsInc();
    }
  }
  void onClosed() override { closed = true; }

  Mrp::MrpCounters counters{"MrpCounters"};
  bool malformed = false;
  bool closed = false;
};

class CountingPamTest : public ::testing::Test {
 protected:
  Quarn::Ptr<Quarn::SimClock> clock_ = new Quarn::SimClock;
  Quarn::Ptr<Velo::MemWire> wire_ =
      new Velo::MemWire(Velo::IntfId("eth1"), Velo::EthAddr(0x00, 0x1b, 0x21, 0xaa, 0xbb, 0x01), Velo::IntfId("peer"),
                        Velo::EthAddr(0x00, 0x1b, 0x21, 0xaa, 0xbb, 0x02), clock_);
  PortCounters counters_;
  MrpCli::Decoder decoder_;
  const Mrp::MrpCounters* engineCounters_ = nullptr;
  Quarn::Ptr<CountingPam> pam_ = new CountingPam(wire_->a(), counters_, decoder_, [this] { return engineCounters_; });

  void arrive(bool leaveAll) {
    const std::vector<std::uint8_t> frame = mvrpFrame(leaveAll);
    ASSERT_TRUE(wire_->b()->txPkt(*Velo::Pkt::pktNew(frame.data(), frame.size())));
    clock_->advance(0);
  }
};

TEST_F(CountingPamTest, WhatTheEngineCountsWhileItHandlesAFrameIsThePorts) {
  FakeEngine engine(pam_.ptr());
  engineCounters_ = &engine.counters;
  engine.counters.numOfPktsProcessedIs(7);  // counted before, elsewhere
  engine.malformed = true;
  arrive(true);
  engine.malformed = false;
  arrive(false);

  EXPECT_EQ(counters_.framesReceived, 2u);
  EXPECT_EQ(counters_.joinIndications, 2u);
  EXPECT_EQ(counters_.droppedMalformed, 1u);
  EXPECT_EQ(counters_.leaveAllsReceived, 1u);
  EXPECT_EQ(pam_->rxPkts(), 2u);
}

TEST_F(CountingPamTest, AnEngineWithoutCountersLeavesTheEngineCountsAlone) {
  FakeEngine engine(pam_.ptr());
  arrive(true);
  EXPECT_EQ(pam_->rxPkts(), 1u) << "the frame is still handed on";
  EXPECT_EQ(counters_.framesReceived, 0u);
  EXPECT_EQ(counters_.leaveAllsReceived, 1u);
}

TEST_F(CountingPamTest, SentFramesAndTheirLeaveAllsAreCountedAndReachThePeer) {
  for (bool leaveAll : {true, false, true}) {
    const std::vector<std::uint8_t> frame = mvrpFrame(leaveAll);
    ASSERT_TRUE(pam_->txPkt(*Velo::Pkt::pktNew(frame.data(), frame.size())));
  }
  clock_->advance(0);
  EXPECT_EQ(counters_.framesSent, 3u);
  EXPECT_EQ(counters_.leaveAllsSent, 2u);
  EXPECT_EQ(wire_->b()->rxQueueLength(), 3u);
}

TEST_F(CountingPamTest, AFrameTheSocketRefusesIsNotCounted) {
  const std::uint8_t runt[4] = {1, 2, 3, 4};
  EXPECT_FALSE(pam_->txPkt(*Velo::Pkt::pktNew(runt, sizeof runt)));
  EXPECT_EQ(counters_.framesSent, 0u);
  EXPECT_EQ(pam_->txErrors(), 1u);
}

TEST_F(CountingPamTest, ItClosesWithItsSocket) {
  FakeEngine engine(pam_.ptr());
  wire_->a()->close();
  EXPECT_TRUE(pam_->closed());
  EXPECT_TRUE(engine.closed);
}

TEST(CountingPamFactoryTest, APortCountsOnAcrossItsSockets) {
  Quarn::Ptr<Quarn::SimClock> clock = new Quarn::SimClock;
  Quarn::Ptr<Velo::MemPamFactory> sockets = new Velo::MemPamFactory;
  MrpCli::CountingPamFactory factory(sockets, [] { return nullptr; });
  const std::vector<std::uint8_t> frame = mvrpFrame(true);
  for (int opened = 0; opened < 2; ++opened) {
    Quarn::Ptr<Velo::MemWire> wire = new Velo::MemWire(Velo::IntfId("eth1"), Velo::EthAddr(0x00, 0x1b, 0x21, 0xaa, 0xbb, 0x01),
                                                       Velo::IntfId("peer"), Velo::EthAddr(0x00, 0x1b, 0x21, 0xaa, 0xbb, 0x02), clock);
    sockets->pamIs(wire->a());
    Quarn::Ptr<Velo::Pam> pam = factory.pamNew(Velo::IntfId("eth1"), Velo::PamConfig{});
    ASSERT_TRUE(pam->txPkt(*Velo::Pkt::pktNew(frame.data(), frame.size())));
    sockets->pamDel(Velo::IntfId("eth1"));
  }
  EXPECT_EQ(factory.portCounters().at("eth1").framesSent, 2u);
  EXPECT_EQ(factory.portCounters().at("eth1").leaveAllsSent, 2u);
}

}  // namespace
