#include "MrpSm/MrpPamSm.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "MrpSm/MrpSm.h"
#include "quarn/Trace.h"
#include "support/PamEngineFixture.h"

namespace MrpTest {
namespace {

using Mrp::MrpApplication;

const Velo::IntfId kEth1("Ethernet1");
const Velo::IntfId kEth2("Ethernet2");

// Calls of the LeaveAll entry points, seen through the signature each traces first.
constexpr const char* kEnableLeaveAll = "void Mrp::MrpLeaveAllSm::mrpEnableLeaveAllPending(Velo::IntfId)";
constexpr const char* kDisableLeaveAll = "void Mrp::MrpLeaveAllSm::mrpDisableLeaveAllPending(Velo::IntfId)";

class MrpPamSmTest : public PamEngineFixture {
 protected:
  MrpPamSmTest() { Quarn::traceLevelsIs("MrpSm/0-9"); }
  ~MrpPamSmTest() override { Quarn::traceLevelsClear(); }

  // Trace lines that read `text`.
  std::size_t traced(const std::string& text) const {
    return std::count_if(traces.lines().begin(), traces.lines().end(),
                         [&](const auto& line) { return line.text == text; });
  }
  // Whether the port has LeaveAll timing on the engine.
  static bool leaveAllTimed(const Mrp::MrpSm& engine, const Velo::IntfId& intfId) {
    return engine.leaveAllSm()->intfLeaveAllSm(intfId) != nullptr;
  }

  Quarn::CaptureTraceSink traces;
};

TEST_F(MrpPamSmTest, CoordinatorWatchesTheEnginesSocketCollection) {
  auto engine = engineNew(MrpApplication::mvrp, false);
  const Mrp::MrpPamSm& pamSm = *engine->mrpPamSm();
  EXPECT_TRUE(pamSm.initialized());
  EXPECT_EQ(pamSm.pamCollection(), engine->pamCollection());
  EXPECT_EQ(pamSm.mrpSm(), engine.ptr());
  EXPECT_TRUE(pamSm.mrpIntfPamSms().empty());
}

TEST_F(MrpPamSmTest, APortObjectExistsExactlyWhileThePortHasASocket) {
  auto engine = engineNew(MrpApplication::mvrp, false);
  Mrp::MrpPamSm& pamSm = *engine->mrpPamSm();
  portUp(*engine, "Ethernet1");
  ASSERT_TRUE(pamSm.mrpIntfPamSmHas(kEth1));
  auto port = pamSm.mrpIntfPamSm(kEth1);
  EXPECT_EQ(port->pam(), engine->pamCollection()->intfPam(kEth1));
  EXPECT_EQ(port->intfId(), kEth1);
  EXPECT_EQ(port->mrpPamSm(), &pamSm);
  EXPECT_TRUE(port->initialized());
  EXPECT_TRUE(traces.contains("MrpPamSm::handlePam( Ethernet1 )"));

  mrpLib->mrpInterfaceDisable(kEth1);
  EXPECT_FALSE(pamSm.mrpIntfPamSmHas(kEth1));
  EXPECT_EQ(engine->pamCollection()->intfPamCount(), 0u);
}

TEST_F(MrpPamSmTest, AnActivePortStartsItsLeaveAllTimersWhenItAppears) {
  auto engine = engineNew(MrpApplication::msrp, false);
  portUp(*engine, "Ethernet1");
  EXPECT_EQ(traced(kEnableLeaveAll), 1u);
  EXPECT_EQ(engine->leaveAllSm()->intfLeaveAllSm(kEth1)->leaveAllPendings().size(), 4u) << "MSRP types 1 to 4";
  EXPECT_FALSE(engine->mrpPamSm()->mrpIntfPamSm(kEth1)->standbyMode());
}

TEST_F(MrpPamSmTest, RemovingAPortClosesItAndStopsItsLeaveAllTimers) {
  auto engine = engineNew(MrpApplication::mvrp, false);
  portUp(*engine, "Ethernet1");
  portUp(*engine, "Ethernet2");
  traces.clear();
  mrpLib->mrpInterfaceDisable(kEth1);
  EXPECT_TRUE(traces.contains("void Mrp::MrpIntfPamSm::doClose()"));
  EXPECT_EQ(traced(kDisableLeaveAll), 1u);
  EXPECT_FALSE(leaveAllTimed(*engine, kEth1));
  EXPECT_TRUE(leaveAllTimed(*engine, kEth2));
  EXPECT_TRUE(engine->mrpPamSm()->mrpIntfPamSmHas(kEth2));
}

TEST_F(MrpPamSmTest, RemovingAPortInStandbyLeavesLeaveAllTimersAlone) {
  auto engine = engineNew(MrpApplication::mvrp, true);
  portUp(*engine, "Ethernet1");
  mrpLib->mrpInterfaceDisable(kEth1);
  EXPECT_FALSE(engine->mrpPamSm()->mrpIntfPamSmHas(kEth1));
  EXPECT_EQ(traced(kEnableLeaveAll), 0u);
  EXPECT_EQ(traced(kDisableLeaveAll), 0u);
}

TEST_F(MrpPamSmTest, ASocketThatDisappearsClosesItsPortObjectAndTheEngineKeepsRunning) {
  auto engine = engineNew(MrpApplication::mvrp, false);
  portUp(*engine, "Ethernet1");
  Quarn::Ptr<Velo::MemPam> eth2 = portUp(*engine, "Ethernet2");
  enginePam("Ethernet1")->close();
  EXPECT_FALSE(engine->mrpPamSm()->mrpIntfPamSmHas(kEth1));
  EXPECT_EQ(engine->pamCollection()->intfPam(kEth1), nullptr);
  EXPECT_EQ(traced(kDisableLeaveAll), 1u);
  EXPECT_FALSE(leaveAllTimed(*engine, kEth1));

  inject(*eth2, withDmac(withEtherType(Bytes(60, 0), 0x88f5), mrpLib->applicationMacAddr()));
  EXPECT_EQ(engine->mrpCounters()->numOfPktsProcessed(), 1u) << "the other port still receives";
}

TEST_F(MrpPamSmTest, PortObjectsOfAStandbyEngineStartNoLeaveAllTimersUntilItIsActive) {
  auto engine = engineNew(MrpApplication::msrp, true);
  portUp(*engine, "Ethernet1");
  portUp(*engine, "Ethernet2");
  EXPECT_TRUE(engine->mrpPamSm()->mrpIntfPamSm(kEth1)->standbyMode());
  EXPECT_EQ(traced(kEnableLeaveAll), 0u);
  EXPECT_EQ(clock->scheduledCount(), 0u);

  engine->standbyModeIs(false);
  engine->handleStandbyMode();
  EXPECT_FALSE(engine->mrpPamSm()->mrpIntfPamSm(kEth1)->standbyMode());
  EXPECT_FALSE(engine->mrpPamSm()->mrpIntfPamSm(kEth2)->standbyMode());
  EXPECT_EQ(traced(kEnableLeaveAll), 2u) << "once per port";
  EXPECT_TRUE(leaveAllTimed(*engine, kEth1));
  EXPECT_TRUE(leaveAllTimed(*engine, kEth2));

  engine->mrpPamSm()->handleStandbyMode();
  EXPECT_EQ(traced(kEnableLeaveAll), 2u) << "only a change is passed on";
}

TEST_F(MrpPamSmTest, ACoordinatorTakesInTheSocketsAlreadyInItsCollection) {
  auto engine = engineNew(MrpApplication::mvrp, false);
  portUp(*engine, "Ethernet1");
  Quarn::Ptr<Mrp::MrpPamSm> other = new Mrp::MrpPamSm(engine->pamCollection(), true, engine.ptr());
  EXPECT_FALSE(other->mrpIntfPamSmHas(kEth1));
  other->handleInitialized();
  ASSERT_TRUE(other->mrpIntfPamSmHas(kEth1));
  EXPECT_TRUE(other->mrpIntfPamSm(kEth1)->standbyMode());
}

TEST_F(MrpPamSmTest, FloodingSendsOnEveryPortButTheOneItCameFrom) {
  auto engine = engineNew(MrpApplication::msrp, false);
  std::vector<Quarn::Ptr<Velo::MemPam>> ends;
  for (const char* name : {"Ethernet1", "Ethernet2", "Ethernet3"}) ends.push_back(portUp(*engine, name));
  const Bytes frame = withEtherType(Bytes(64, 0x5a), 0x22ea);
  engine->mrpPamSm()->floodMsrpdu(kEth2, pktOf(frame));
  deliver();
  EXPECT_EQ(received(*ends[0]), std::vector<Bytes>{frame});
  EXPECT_TRUE(received(*ends[1]).empty());
  EXPECT_EQ(received(*ends[2]), std::vector<Bytes>{frame});
}

TEST_F(MrpPamSmTest, TransmitAllLeaveAllCoversEveryAttributeTypeOfAnActivePort) {
  auto engine = engineNew(MrpApplication::msrp, false);
  portUp(*engine, "Ethernet1");
  engine->mrpPamSm()->transmitAllLeaveAll(kEth1);
  EXPECT_TRUE(traces.contains("MrpPamSm::transmitAllLeaveAll( Ethernet1 )"));
  EXPECT_TRUE(traces.contains("MrpIntfPamSm::transmitAllLeaveAll( Ethernet1 )"));
  for (int type = 1; type <= 4; ++type) {
    EXPECT_EQ(traced("MrpIntfPamSm::mrpAllLeaveAllSm( " + std::to_string(type) + " )"), 1u) << type;
  }
  EXPECT_EQ(traced("MrpIntfPamSm::mrpAllLeaveAllSm( 5 )"), 0u);
}

TEST_F(MrpPamSmTest, TransmitAllLeaveAllNeedsAnActiveCoordinatorAndAPortObject) {
  auto standby = engineNew(MrpApplication::mvrp, true);
  portUp(*standby, "Ethernet1");
  standby->mrpPamSm()->transmitAllLeaveAll(kEth1);
  standby->mrpPamSm()->mrpIntfPamSm(kEth1)->transmitAllLeaveAll();
  EXPECT_EQ(traced("MrpIntfPamSm::mrpAllLeaveAllSm"), 0u);

  auto engine = engineNew(MrpApplication::mvrp, false);
  engine->mrpPamSm()->transmitAllLeaveAll(kEth2);
  EXPECT_TRUE(traces.contains("MrpPamSm::transmitAllLeaveAll( Ethernet2 )"));
  EXPECT_FALSE(traces.contains("MrpIntfPamSm::transmitAllLeaveAll( Ethernet2 )"));
}

TEST_F(MrpPamSmTest, AllLeaveAllSkipsAttributesPendingDeletion) {
  auto engine = engineNew(MrpApplication::mvrp, false);
  portUp(*engine, "Ethernet1");
  auto iter = engine->attributeStore().mrpAttrIterIs({kEth1, 1});
  iter->attributeKeyIs(10, true);
  iter->attributeKeyIs(20, true);
  engine->attributeStore().deletePendingAttrIs({kEth1, 1, 20}, true);
  engine->mrpPamSm()->mrpIntfPamSm(kEth1)->mrpAllLeaveAllSm(1);
  // The last attribute made current is the last one not pending deletion.
  EXPECT_EQ(engine->parseContext()->attributeKey(), 10u);
  EXPECT_FALSE(engine->parseContext()->sendTxLvAll());
}

using MrpPamSmDeathTest = MrpPamSmTest;

TEST_F(MrpPamSmDeathTest, ASecondSocketEventForAnOpenPortAborts) {
  auto engine = engineNew(MrpApplication::mvrp, false);
  portUp(*engine, "Ethernet1");
  EXPECT_DEATH(engine->mrpPamSm()->handlePam(kEth1), "Assertion failed: !mrpIntfPamSmHas\\( intfId \\)");
}

TEST_F(MrpPamSmDeathTest, RemovingAPortWithoutPortObjectAborts) {
  auto engine = engineNew(MrpApplication::mvrp, false);
  EXPECT_DEATH(engine->mrpPamSm()->handlePam(kEth1), "Assertion failed: mrpIntfPamSmHas\\( intfId \\)");
}

TEST_F(MrpPamSmDeathTest, SocketEventsAndFloodingBeforeInitialisationAbort) {
  auto engine = engineNew(MrpApplication::mvrp, false);
  Quarn::Ptr<Mrp::MrpPamSm> fresh = new Mrp::MrpPamSm(engine->pamCollection(), false, engine.ptr());
  EXPECT_DEATH(fresh->handlePam(kEth1), "Assertion failed: initialized\\(\\)");
  EXPECT_DEATH(fresh->floodMsrpdu(kEth1, pktOf(Bytes(60, 0))), "Assertion failed: initialized\\(\\)");
}

TEST_F(MrpPamSmDeathTest, ASecondInitialisationAborts) {
  auto engine = engineNew(MrpApplication::mvrp, false);
  EXPECT_DEATH(engine->mrpPamSm()->handleInitialized(), "Assertion failed: !initialized\\(\\)");
}

}  // namespace
}  // namespace MrpTest
