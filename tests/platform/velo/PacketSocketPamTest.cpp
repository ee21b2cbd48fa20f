#include "velo/PacketSocketPam.h"

#include <gtest/gtest.h>
#include <poll.h>

#include <cstdint>
#include <functional>
#include <string>
#include <system_error>
#include <vector>

#include "support/NetNamespace.h"
#include "support/PamEngineFixture.h"
#include "support/RawSocket.h"

namespace MrpTest {
namespace {

const Velo::EthAddr kGroup(0x01, 0x80, 0xc2, 0x00, 0x00, 0x21);
const Velo::EthAddr kPortMac(0x02, 0x00, 0x00, 0x00, 0x00, 0xe1);
constexpr std::uint16_t kEtherType = 0x88f5;

// A frame to `dst` with `etherType` whose payload ends in `marker`.
Bytes frameOf(const Velo::EthAddr& dst, std::uint16_t etherType, std::uint8_t marker, std::size_t bytes = 60) {
  Bytes frame(bytes, 0);
  std::copy(dst.octets().begin(), dst.octets().end(), frame.begin());
  frame[6] = 0x02;
  frame[11] = 0x99;
  frame[12] = static_cast<std::uint8_t>(etherType >> 8);
  frame[13] = static_cast<std::uint8_t>(etherType);
  frame.back() = marker;
  return frame;
}

// Takes every announced frame.
class Taker : public Velo::Pam::Notifiee {
 public:
  explicit Taker(Velo::Pam* pam) { notifierIs(pam); }
  void onReadableCount() override {
    if (Quarn::Ptr<Velo::Pkt> pkt = notifier()->rxPkt()) frames.push_back(bytesOf(*pkt));
  }
  void onClosed() override { ++closed; }
  std::vector<Bytes> frames;
  int closed = 0;
};

// A socket on e1, whose veth peer p1 the test drives.
class PacketSocketPamTest : public ::testing::Test {
 protected:
  void SetUp() override {
    MRP_REQUIRE_NET_NAMESPACE(ns);
    ASSERT_TRUE(ns.vethAdd("e1", "p1")) << ns.error();
    ASSERT_TRUE(ns.ip("link set e1 address " + kPortMac.toString())) << ns.error();
    peer = std::make_unique<RawSocket>("p1");
  }

  Quarn::Ptr<Velo::PacketSocketPam> pamNew(Velo::PamConfig config) {
    return new Velo::PacketSocketPam(Velo::IntfId("e1"), config, loop);
  }
  static Velo::PamConfig allFrames() {
    Velo::PamConfig config;
    config.ethProtocol = 3;
    config.maxRxPktData = 10000;
    return config;
  }
  // Runs the loop, each wait bounded, until `done` or about five seconds.
  bool runUntil(const std::function<bool()>& done) {
    for (int i = 0; i < 100 && !done(); ++i) loop->runOnce(0.05);
    return done();
  }

  NetNamespace ns;
  Quarn::Ptr<Quarn::EventLoop> loop = Quarn::EventLoop::realLoopNew();
  std::unique_ptr<RawSocket> peer;
};

TEST_F(PacketSocketPamTest, OpensOnTheInterfaceNamedLikeThePortWithItsAddress) {
  auto pam = pamNew(allFrames());
  EXPECT_EQ(pam->intfId(), Velo::IntfId("e1"));
  EXPECT_EQ(pam->ethAddr(), kPortMac);
  EXPECT_GT(pam->ifindex(), 0);
  EXPECT_GE(pam->fd(), 0);
  EXPECT_EQ(loop->fdCount(), 1u);
  EXPECT_EQ(pam->rxLimit(), Velo::pamRxLimit(allFrames()));
  pam = nullptr;
  EXPECT_EQ(loop->fdCount(), 0u) << "released sockets stop being watched";
}

TEST_F(PacketSocketPamTest, FramesArriveAsTheyWereOnTheWireVlanTagIncluded) {
  auto pam = pamNew(allFrames());
  Taker taker(pam.ptr());
  const Bytes plain = frameOf(kGroup, kEtherType, 1);
  const Bytes withTag = vlanTagged(frameOf(kGroup, kEtherType, 2), 0x6005);
  ASSERT_TRUE(peer->send(plain));
  ASSERT_TRUE(peer->send(withTag));
  ASSERT_TRUE(runUntil([&] { return taker.frames.size() >= 2; }));
  EXPECT_EQ(taker.frames[0], plain);
  EXPECT_EQ(taker.frames[1], withTag) << "the tag the kernel took out is put back";
  EXPECT_EQ(pam->rxPkts(), 2u);
  EXPECT_EQ(pam->readableCount(), 2u);
}

TEST_F(PacketSocketPamTest, TheFilterDecidesWhatReachesTheSocket) {
  Velo::PamConfig config = allFrames();
  // Accept EtherType 0x88f5 only.
  config.filterProgram = {{Velo::PamFilterOp::kLoadHalfAbs, 0, 0, 12},
                          {Velo::PamFilterOp::kJumpIfEqual, 0, 1, kEtherType},
                          {Velo::PamFilterOp::kReturn, 0, 0, 0xffff},
                          {Velo::PamFilterOp::kReturn, 0, 0, 0}};
  auto pam = pamNew(config);
  Taker taker(pam.ptr());
  ASSERT_TRUE(peer->send(frameOf(kGroup, 0x0800, 1)));
  ASSERT_TRUE(peer->send(frameOf(kGroup, kEtherType, 2)));
  ASSERT_TRUE(runUntil([&] { return !taker.frames.empty(); }));
  EXPECT_EQ(taker.frames.back().back(), 2);
  EXPECT_EQ(pam->rxPkts(), 1u) << "the other frame never reached user space";
}

TEST_F(PacketSocketPamTest, SentFramesReachThePeerAndNotTheSenderItself) {
  auto pam = pamNew(allFrames());
  Taker taker(pam.ptr());
  const Bytes frame = frameOf(kGroup, kEtherType, 7);
  ASSERT_TRUE(pam->txPkt(*Velo::Pkt::pktNew(frame.data(), frame.size())));
  EXPECT_TRUE(peer->seen([&](const Bytes& f) { return f == frame; }, 2));
  ASSERT_TRUE(peer->send(frameOf(kGroup, kEtherType, 8)));
  ASSERT_TRUE(runUntil([&] { return !taker.frames.empty(); }));
  ASSERT_EQ(taker.frames.size(), 1u);
  EXPECT_EQ(taker.frames[0].back(), 8) << "its own transmission is not received";
  EXPECT_EQ(pam->txPkts(), 1u);
}

TEST_F(PacketSocketPamTest, FramesLongerThanTheReceiveLimitAreDropped) {
  Velo::PamConfig config = allFrames();
  config.maxRxPktData = 100;
  auto pam = pamNew(config);
  Taker taker(pam.ptr());
  ASSERT_TRUE(peer->send(frameOf(kGroup, kEtherType, 1, 101)));
  ASSERT_TRUE(peer->send(frameOf(kGroup, kEtherType, 2, 100)));
  ASSERT_TRUE(runUntil([&] { return !taker.frames.empty(); }));
  EXPECT_EQ(taker.frames[0].size(), 100u);
  EXPECT_EQ(pam->rxDropped(), 1u);
}

TEST_F(PacketSocketPamTest, AFrameNobodyTakesIsDroppedSoTheLoopGoesIdle) {
  auto pam = pamNew(allFrames());
  ASSERT_TRUE(peer->send(frameOf(kGroup, kEtherType, 1)));
  ASSERT_TRUE(runUntil([&] { return pam->readableCount() == 1; }));
  EXPECT_EQ(pam->rxDropped(), 1u);
  EXPECT_FALSE(pam->hasDataOnSocket());
  EXPECT_FALSE(loop->runOnce(0)) << "nothing left to dispatch";
}

TEST_F(PacketSocketPamTest, RxPktOutsideANotificationReadsTheSocket) {
  auto pam = pamNew(allFrames());
  ASSERT_TRUE(peer->send(frameOf(kGroup, kEtherType, 3)));
  Quarn::Ptr<Velo::Pkt> pkt;
  for (int i = 0; i < 100 && !pkt; ++i) {
    pollfd p{pam->fd(), POLLIN, 0};
    poll(&p, 1, 50);
    pkt = pam->rxPkt();
  }
  ASSERT_TRUE(pkt);
  EXPECT_EQ(pkt->data()[pkt->bytes() - 1], 3);
  EXPECT_FALSE(pam->rxPkt());
}

TEST_F(PacketSocketPamTest, DeletingTheInterfaceClosesTheSocket) {
  auto pam = pamNew(allFrames());
  Taker taker(pam.ptr());
  ASSERT_TRUE(ns.ip("link del e1")) << ns.error();
  ASSERT_TRUE(runUntil([&] { return pam->closed(); }));
  EXPECT_EQ(taker.closed, 1);
  EXPECT_EQ(pam->fd(), -1);
  EXPECT_EQ(loop->fdCount(), 0u);
  EXPECT_FALSE(pam->rxPkt());
  EXPECT_FALSE(pam->txPkt(*Velo::Pkt::pktNew(60)));
}

TEST_F(PacketSocketPamTest, AnInterfaceThatIsOnlyDownKeepsItsSocket) {
  auto pam = pamNew(allFrames());
  Taker taker(pam.ptr());
  ASSERT_TRUE(ns.ip("link set e1 down")) << ns.error();
  EXPECT_TRUE(loop->runOnce(2)) << "the kernel reports the network down";
  EXPECT_FALSE(pam->closed());
  ASSERT_TRUE(ns.ip("link set e1 up")) << ns.error();
  for (std::uint8_t marker = 1; taker.frames.empty() && marker < 20; ++marker) {
    peer->send(frameOf(kGroup, kEtherType, marker));
    runUntil([&] { return !taker.frames.empty(); });
  }
  EXPECT_FALSE(taker.frames.empty()) << "receives again once up";
}

TEST_F(PacketSocketPamTest, OpeningAMissingInterfaceThrows) {
  try {
    Quarn::Ptr<Velo::Pam> pam = new Velo::PacketSocketPam(Velo::IntfId("nosuch0"), allFrames(), loop);
    FAIL() << "opened a missing interface";
  } catch (const std::system_error& e) {
    EXPECT_NE(std::string(e.what()).find("PacketSocketPam nosuch0: interface index"), std::string::npos) << e.what();
  }
  EXPECT_THROW(new Velo::PacketSocketPam(Velo::IntfId(std::string(16, 'x')), allFrames(), loop), std::system_error);
  EXPECT_EQ(loop->fdCount(), 0u);
}

TEST_F(PacketSocketPamTest, TheFactoryOpensPacketSockets) {
  Quarn::Ptr<Velo::PamFactory> factory = new Velo::PacketSocketPamFactory(loop);
  Quarn::Ptr<Velo::Pam> pam = factory->pamNew(Velo::IntfId("e1"), allFrames());
  ASSERT_TRUE(Quarn::ptr_cast<Velo::PacketSocketPam>(pam));
  EXPECT_EQ(pam->ethAddr(), kPortMac);
}

}  // namespace
}  // namespace MrpTest
