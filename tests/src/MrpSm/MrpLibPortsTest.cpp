#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "MrpSm/MrpLib.h"
#include "MrpSm/MrpSm.h"
#include "quarn/Trace.h"
#include "support/PamEngineFixture.h"
#include "velo/EthHdr.h"

namespace MrpTest {
namespace {

using Mrp::MrpApplication;

const Velo::IntfId kEth1("Ethernet1");
constexpr std::uint8_t kJoinIn = 1;

// A frame without its Ethernet header.
Bytes mrpduOf(const Bytes& frame) { return Bytes(frame.begin() + Velo::EthHdr::kSize, frame.end()); }

// The MVRP MRPDU that declares one VLAN with JoinIn.
Bytes vlanJoinInMrpdu(std::uint8_t vlan) {
  return {
      0x00,        // ProtocolVersion
      0x01, 0x02,  // VLAN identifier, length 2
      0x00, 0x01,  // VectorHeader: 1 value
      0x00, vlan,  // FirstValue
      0x24,        // JoinIn
      0x00, 0x00,  // EndMark of the list
      0x00, 0x00,  // EndMark of the MRPDU
  };
}

class MrpLibPortsTest : public PamEngineFixture {};

TEST_F(MrpLibPortsTest, EnablingAPortDeclaresItDesiredSoItsSocketOpens) {
  auto engine = engineNew(MrpApplication::mvrp, false);
  wireNew("Ethernet1");
  Quarn::CaptureTraceSink traces;
  Quarn::traceLevelsIs("MrpSm/8");
  mrpLib->mrpInterfaceEnable(kEth1);
  Quarn::traceLevelsClear();
  EXPECT_TRUE(traces.contains("MrpLib::mrpInterfaceEnable( Ethernet1 )"));
  EXPECT_TRUE(engine->desiredIntfDir()->intfDesired(kEth1));
  EXPECT_EQ(engine->pamCollection()->intfPam(kEth1), Quarn::Ptr<Velo::Pam>(enginePam("Ethernet1")));
}

TEST_F(MrpLibPortsTest, AStandbyEngineOpensSocketsToo) {
  auto engine = engineNew(MrpApplication::mvrp, true);
  wireNew("Ethernet1");
  mrpLib->mrpInterfaceEnable(kEth1);
  EXPECT_TRUE(engine->pamCollection()->intfPam(kEth1));
}

TEST_F(MrpLibPortsTest, DisablingAPortSendsWhatItsTransmitPacketsHoldThenDropsThemAndWithdrawsIt) {
  auto engine = engineNew(MrpApplication::mvrp, false);
  const Quarn::Ptr<Velo::MemPam> wire = portUp(*engine, "Ethernet1");
  mrpLib->mvrpVlanVectorTx() = Mrp::MvrpVlanAttribute(20);
  mrpLib->mrpSendAttributeIntf({kEth1, 1, kJoinIn}, kEth1, true);
  mrpLib->mvrpVlanVectorTx() = Mrp::MvrpVlanAttribute(10);
  mrpLib->mrpSendAttributeIntf({kEth1, 1, kJoinIn}, kEth1, false);
  Quarn::CaptureTraceSink traces;
  Quarn::traceLevelsIs("MrpSm/8");
  mrpLib->mrpInterfaceDisable(kEth1);
  Quarn::traceLevelsClear();
  EXPECT_TRUE(traces.contains("MrpLib::mrpInterfaceDisable( Ethernet1 )"));
  EXPECT_FALSE(mrpLib->mrpTxPacketContext(kEth1));
  EXPECT_FALSE(mrpLib->mrpTxSecondPacketContext(kEth1));
  EXPECT_EQ(engine->desiredIntfDir()->intfDesiredCount(), 0u) << "the entry is removed";
  EXPECT_EQ(engine->pamCollection()->intfPam(kEth1), nullptr);
  deliver();
  const std::vector<Bytes> frames = received(*wire);
  ASSERT_EQ(frames.size(), 2u) << "each packet once, and nothing else";
  EXPECT_EQ(mrpduOf(frames[0]), vlanJoinInMrpdu(10)) << "the first packet";
  EXPECT_EQ(mrpduOf(frames[1]), vlanJoinInMrpdu(20)) << "then the second";
}

TEST_F(MrpLibPortsTest, APortThatCannotBeOpenedStaysDesiredWithTheReason) {
  auto engine = engineNew(MrpApplication::mvrp, false);
  mrpLib->mrpInterfaceEnable(kEth1);
  EXPECT_TRUE(engine->desiredIntfDir()->intfDesired(kEth1));
  EXPECT_EQ(engine->pamCollection()->intfPam(kEth1), nullptr);
  EXPECT_EQ(engine->deviceIntfStatusDir()->deviceIntfStatus(kEth1)->pamError(), "MemPamFactory: no port Ethernet1");
}

TEST(MrpLibPortsDeathTest, PortsNeedAnEngine) {
  Quarn::Ptr<Mrp::MrpLib> lib = Mrp::mrpLibFactory();
  EXPECT_DEATH(lib->mrpInterfaceEnable(kEth1), "Assertion failed: mrpSm\\(\\)");
  EXPECT_DEATH(lib->mrpInterfaceDisable(kEth1), "Assertion failed: mrpSm\\(\\)");
}

}  // namespace
}  // namespace MrpTest
