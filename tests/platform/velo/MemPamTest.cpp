#include "velo/MemPam.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <stdexcept>
#include <vector>

#include "support/PamEngineFixture.h"
#include "velo/PamFactory.h"
#include "velo/PamFactoryScope.h"

namespace {

using MrpTest::Bytes;
using MrpTest::bytesOf;

const Velo::EthAddr kMacA(0x02, 0, 0, 0, 0, 0x0a);
const Velo::EthAddr kMacB(0x02, 0, 0, 0, 0, 0x0b);

Quarn::Ptr<Velo::Pkt> frameOf(std::size_t bytes, std::uint8_t fill) {
  Quarn::Ptr<Velo::Pkt> pkt = Velo::Pkt::pktNew(bytes);
  for (std::size_t i = 0; i < bytes; ++i) pkt->data()[i] = fill;
  return pkt;
}

// Records each announcement and, if told to, takes the frame.
class Taker : public Velo::Pam::Notifiee {
 public:
  explicit Taker(Velo::Pam* pam, bool take = true) : take_(take) { notifierIs(pam); }
  void onReadableCount() override {
    ++announced;
    if (!take_) return;
    if (Quarn::Ptr<Velo::Pkt> pkt = notifier()->rxPkt()) frames.push_back(bytesOf(*pkt));
  }
  void onClosed() override { ++closed; }
  int announced = 0;
  int closed = 0;
  std::vector<Bytes> frames;

 private:
  bool take_;
};

class MemPamTest : public ::testing::Test {
 protected:
  Quarn::Ptr<Quarn::SimClock> clock = new Quarn::SimClock;
  Quarn::Ptr<Velo::MemWire> wire =
      new Velo::MemWire(Velo::IntfId("Ethernet1"), kMacA, Velo::IntfId("Ethernet2"), kMacB, clock);
  Velo::MemPam& a = *wire->a();
  Velo::MemPam& b = *wire->b();
};

TEST_F(MemPamTest, EndsKnowTheirPortAddressAndPeer) {
  EXPECT_EQ(a.intfId(), Velo::IntfId("Ethernet1"));
  EXPECT_EQ(a.ethAddr(), kMacA);
  EXPECT_EQ(b.ethAddr(), kMacB);
  EXPECT_EQ(a.peer(), &b);
  EXPECT_EQ(b.peer(), &a);
}

TEST_F(MemPamTest, DeliveryGoesThroughTheClockNotThroughTheSender) {
  Taker taker(&b);
  ASSERT_TRUE(a.txPkt(*frameOf(60, 1)));
  EXPECT_EQ(taker.announced, 0) << "nothing arrives inside txPkt";
  EXPECT_TRUE(b.hasDataOnSocket());
  clock->advance(0);
  EXPECT_EQ(taker.announced, 1);
  ASSERT_EQ(taker.frames.size(), 1u);
  EXPECT_EQ(taker.frames[0], bytesOf(*frameOf(60, 1)));
  EXPECT_FALSE(b.hasDataOnSocket());
  EXPECT_EQ(a.txPkts(), 1u);
  EXPECT_EQ(b.rxPkts(), 1u);
  EXPECT_EQ(b.readableCount(), 1u);
}

TEST_F(MemPamTest, EachFrameIsAnnouncedOnceOldestFirst) {
  Taker taker(&b);
  for (std::uint8_t i = 1; i <= 3; ++i) a.txPkt(*frameOf(20, i));
  clock->advance(0);
  EXPECT_EQ(taker.announced, 3);
  ASSERT_EQ(taker.frames.size(), 3u);
  for (std::uint8_t i = 1; i <= 3; ++i) EXPECT_EQ(taker.frames[i - 1][0], i);
}

TEST_F(MemPamTest, SentFramesAreCopies) {
  Quarn::Ptr<Velo::Pkt> frame = frameOf(20, 7);
  a.txPkt(*frame);
  frame->data()[0] = 9;
  Quarn::Ptr<Velo::Pkt> got = b.rxPkt();
  ASSERT_TRUE(got);
  EXPECT_EQ(got->data()[0], 7);
}

TEST_F(MemPamTest, FramesNobodyTakesWaitAndTheNextArrivalAnnouncesAgain) {
  Taker idle(&b, false);
  a.txPkt(*frameOf(20, 1));
  a.txPkt(*frameOf(20, 2));
  clock->advance(0);
  EXPECT_EQ(idle.announced, 1) << "no one takes frames: no further announcements";
  EXPECT_EQ(b.rxQueueLength(), 2u);
  EXPECT_EQ(clock->scheduledCount(), 0u);

  idle.notifierIs(nullptr);
  Taker taker(&b);
  a.txPkt(*frameOf(20, 3));
  clock->advance(0);
  ASSERT_EQ(taker.frames.size(), 3u);
  EXPECT_EQ(taker.frames[0][0], 1);
  EXPECT_EQ(taker.frames[2][0], 3);
}

TEST_F(MemPamTest, FramesShorterThanAnEthernetHeaderAreRefused) {
  EXPECT_FALSE(a.txPkt(*frameOf(13, 1)));
  EXPECT_EQ(a.txErrors(), 1u);
  EXPECT_TRUE(a.txPkt(*frameOf(14, 1)));
  EXPECT_EQ(b.rxQueueLength(), 1u);
}

TEST_F(MemPamTest, FramesLongerThanTheReceiveLimitAreDroppedOnArrival) {
  b.rxLimitIs(100);
  a.txPkt(*frameOf(101, 1));
  a.txPkt(*frameOf(100, 2));
  EXPECT_EQ(b.rxDropped(), 1u);
  ASSERT_EQ(b.rxQueueLength(), 1u);
  EXPECT_EQ(b.rxPkt()->bytes(), 100u);
}

TEST_F(MemPamTest, AnUnpluggedEndSendsNothing) {
  a.peerIs(nullptr);
  EXPECT_EQ(b.peer(), nullptr);
  EXPECT_FALSE(a.txPkt(*frameOf(20, 1)));
}

TEST_F(MemPamTest, AFrameArrivingFromOutsideIsDeliveredAsIfThePeerHadSentIt) {
  Taker taker(&b);
  a.peerIs(nullptr);
  b.pktArrive(*frameOf(20, 5));
  EXPECT_EQ(taker.announced, 0) << "nothing arrives inside pktArrive";
  clock->advance(0);
  ASSERT_EQ(taker.frames.size(), 1u);
  EXPECT_EQ(taker.frames[0], Bytes(20, 5));
  EXPECT_EQ(a.txPkts(), 0u);
}

// Records what its end put on the wire.
class RecordingTap : public Velo::MemPam::Tap {
 public:
  void onFrame(const Velo::MemPam& sender, const Velo::Pkt& frame) override {
    senders.push_back(sender.intfId());
    frames.push_back(bytesOf(frame));
  }
  std::vector<Velo::IntfId> senders;
  std::vector<Bytes> frames;
};

TEST_F(MemPamTest, ATapSeesEveryFrameThatGoesOntoTheWireFromItsEnd) {
  RecordingTap tap;
  a.tapIs(&tap);
  a.txPkt(*frameOf(20, 1));
  b.txPkt(*frameOf(20, 2));  // the other end's frames are not this tap's
  a.txPkt(*frameOf(13, 3));  // refused: not on the wire
  a.peerIs(nullptr);
  a.txPkt(*frameOf(20, 4));  // unplugged: not on the wire
  ASSERT_EQ(tap.frames.size(), 1u);
  EXPECT_EQ(tap.frames[0], Bytes(20, 1));
  EXPECT_EQ(tap.senders[0], Velo::IntfId("Ethernet1"));
}

TEST_F(MemPamTest, AnEndThatGoesAwayUnplugsItsPeer) {
  Quarn::Ptr<Velo::MemPam> lone = new Velo::MemPam(Velo::IntfId("Ethernet3"), kMacA, clock);
  {
    Quarn::Ptr<Velo::MemPam> other = new Velo::MemPam(Velo::IntfId("Ethernet4"), kMacB, clock);
    lone->peerIs(other.ptr());
    EXPECT_EQ(other->peer(), lone.ptr());
  }
  EXPECT_EQ(lone->peer(), nullptr);
  EXPECT_FALSE(lone->txPkt(*frameOf(20, 1)));
}

TEST_F(MemPamTest, CloseDropsQueuedFramesNotifiesAndStopsTraffic) {
  Taker taker(&b, false);
  a.txPkt(*frameOf(20, 1));
  b.close();
  EXPECT_TRUE(b.closed());
  EXPECT_EQ(taker.closed, 1);
  clock->advance(0);
  EXPECT_EQ(taker.announced, 0);
  EXPECT_FALSE(b.hasDataOnSocket());
  EXPECT_FALSE(b.rxPkt());
  EXPECT_FALSE(b.txPkt(*frameOf(20, 2)));
  a.txPkt(*frameOf(20, 3));
  EXPECT_EQ(b.rxQueueLength(), 0u);
  b.close();
  EXPECT_EQ(taker.closed, 1) << "closes once";
}

TEST(MemPamFactoryTest, OpensPluggedPortsWithTheReceiveLimitOfTheConfiguration) {
  Quarn::Ptr<Quarn::SimClock> clock = new Quarn::SimClock;
  Quarn::Ptr<Velo::MemPamFactory> factory = new Velo::MemPamFactory;
  Quarn::Ptr<Velo::MemPam> pam = new Velo::MemPam(Velo::IntfId("Ethernet1"), kMacA, clock);
  factory->pamIs(pam);
  Velo::PamConfig config;
  config.maxRxPktData = 1000;
  EXPECT_EQ(factory->pamNew(Velo::IntfId("Ethernet1"), config), Quarn::Ptr<Velo::Pam>(pam));
  EXPECT_EQ(pam->rxLimit(), 1000u);
  config.maxRxPktData = 100000;
  factory->pamNew(Velo::IntfId("Ethernet1"), config);
  EXPECT_EQ(pam->rxLimit(), Velo::pamMaxRxPktData()) << "held to the process-wide cap";
}

TEST(MemPamFactoryTest, UnknownOrClosedPortsCannotBeOpened) {
  Quarn::Ptr<Quarn::SimClock> clock = new Quarn::SimClock;
  Quarn::Ptr<Velo::MemPamFactory> factory = new Velo::MemPamFactory;
  EXPECT_THROW(factory->pamNew(Velo::IntfId("Ethernet9"), {}), std::runtime_error);
  Quarn::Ptr<Velo::MemPam> pam = new Velo::MemPam(Velo::IntfId("Ethernet1"), kMacA, clock);
  factory->pamIs(pam);
  pam->close();
  EXPECT_THROW(factory->pamNew(Velo::IntfId("Ethernet1"), {}), std::runtime_error);
  factory->pamDel(Velo::IntfId("Ethernet1"));
  EXPECT_EQ(factory->pam(Velo::IntfId("Ethernet1")), nullptr);
}

TEST(PamFactoryTest, ProcessFactoryAndReceiveCap) {
  EXPECT_EQ(Velo::pamFactory(), nullptr);
  Quarn::Ptr<Velo::MemPamFactory> factory = new Velo::MemPamFactory;
  {
    Velo::PamFactoryScope scope(factory);
    EXPECT_EQ(Velo::pamFactory(), Quarn::Ptr<Velo::PamFactory>(factory));
  }

  // A standard VLAN-tagged frame unless an engine raised it.
  EXPECT_EQ(Velo::kDefaultMaxRxPktData, 1518u);
  Velo::pamMaxRxPktDataIs(Velo::kDefaultMaxRxPktData);
  Velo::PamConfig config;
  config.maxRxPktData = 10000;
  EXPECT_EQ(Velo::pamRxLimit(config), Velo::kDefaultMaxRxPktData);
  Velo::pamMaxRxPktDataIs(10000);
  EXPECT_EQ(Velo::pamRxLimit(config), 10000u);
  config.maxRxPktData = 64;
  EXPECT_EQ(Velo::pamRxLimit(config), 64u);
  Velo::pamMaxRxPktDataIs(Velo::kDefaultMaxRxPktData);
}

TEST(PamFilterTest, InstructionsPrintAsKernelTuples) {
  std::ostringstream os;
  os << Velo::PamFilterInstruction{Velo::PamFilterOp::kJumpIfEqual, 3, 0, 0x88f5};
  EXPECT_EQ(os.str(), "{ 0x15, 3, 0, 0x88f5 }");
}

}  // namespace
