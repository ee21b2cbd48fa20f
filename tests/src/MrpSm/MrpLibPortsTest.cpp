#include <gtest/gtest.h>

#include "MrpSm/MrpLib.h"
#include "MrpSm/MrpSm.h"
#include "quarn/Trace.h"
#include "support/PamEngineFixture.h"

namespace MrpTest {
namespace {

using Mrp::MrpApplication;

const Velo::IntfId kEth1("Ethernet1");

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

TEST_F(MrpLibPortsTest, DisablingAPortDropsItsTransmitPacketsAndWithdrawsIt) {
  auto engine = engineNew(MrpApplication::mvrp, false);
  portUp(*engine, "Ethernet1");
  mrpLib->mrpTxPacketContextIs(kEth1, Velo::Pkt::pktNew(1500));
  mrpLib->mrpTxSecondPacketContextIs(kEth1, Velo::Pkt::pktNew(1500));
  Quarn::CaptureTraceSink traces;
  Quarn::traceLevelsIs("MrpSm/8");
  mrpLib->mrpInterfaceDisable(kEth1);
  Quarn::traceLevelsClear();
  EXPECT_TRUE(traces.contains("MrpLib::mrpInterfaceDisable( Ethernet1 )"));
  EXPECT_FALSE(mrpLib->mrpTxPacketContext(kEth1));
  EXPECT_FALSE(mrpLib->mrpTxSecondPacketContext(kEth1));
  EXPECT_EQ(engine->desiredIntfDir()->intfDesiredCount(), 0u) << "the entry is removed";
  EXPECT_EQ(engine->pamCollection()->intfPam(kEth1), nullptr);
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
