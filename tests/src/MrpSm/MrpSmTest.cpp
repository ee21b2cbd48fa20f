#include "MrpSm/MrpSm.h"

#include <gtest/gtest.h>

#include <sys/socket.h>
#include <unistd.h>

#include <string>

#include "MrpSm/MrpSmLog.h"
#include "quarn/NboAttrLog.h"
#include "quarn/Trace.h"
#include "support/EngineFixture.h"

namespace MrpTest {
namespace {

using Mrp::MrpApplication;
using Mrp::MrpSm;

class MrpSmTest : public EngineFixture {};

void expectNoMachines(const MrpSm& engine) {
  EXPECT_FALSE(engine.mrpCounters());
  EXPECT_FALSE(engine.parseContext());
  EXPECT_FALSE(engine.timerWheel());
  EXPECT_FALSE(engine.mrpAttrLogSm());
  EXPECT_FALSE(engine.mrpDatabaseDeleteSm());
  EXPECT_FALSE(engine.mrpDatabaseAddSm());
  EXPECT_FALSE(engine.applicantSm());
  EXPECT_FALSE(engine.registrarSm());
  EXPECT_FALSE(engine.leaveAllSm());
  EXPECT_EQ(engine.maxAttrTypes(), 0);
}

void expectMachines(const MrpSm& engine) {
  ASSERT_TRUE(engine.mrpCounters());
  ASSERT_TRUE(engine.parseContext());
  ASSERT_TRUE(engine.timerWheel());
  ASSERT_TRUE(engine.mrpAttrLogSm());
  ASSERT_TRUE(engine.mrpDatabaseDeleteSm());
  ASSERT_TRUE(engine.mrpDatabaseAddSm());
  ASSERT_TRUE(engine.applicantSm());
  ASSERT_TRUE(engine.registrarSm());
  ASSERT_TRUE(engine.leaveAllSm());
  EXPECT_TRUE(engine.applicantSm()->initialized());
  EXPECT_TRUE(engine.registrarSm()->initialized());
  EXPECT_TRUE(engine.leaveAllSm()->initialized());
  EXPECT_TRUE(engine.mrpDatabaseAddSm()->initialized());
  EXPECT_TRUE(engine.mrpDatabaseDeleteSm()->initialized());
  EXPECT_TRUE(engine.mrpAttrLogSm()->initialized());
}

TEST_F(MrpSmTest, StandbyEngineHasNoCountersParseContextOrMachines) {
  auto engine = engineNew(MrpApplication::msrp, true);
  EXPECT_TRUE(engine->initialized());
  expectNoMachines(*engine);
  ASSERT_TRUE(engine->mrpPamSm());
  EXPECT_TRUE(engine->mrpPamSm()->standbyMode());
  EXPECT_EQ(clock->scheduledCount(), 0u) << "a standby engine opens no timers";
}

TEST_F(MrpSmTest, ActiveEngineCreatesEverything) {
  auto engine = engineNew(MrpApplication::mvrp, false);
  expectMachines(*engine);
  EXPECT_FALSE(engine->mrpPamSm()->standbyMode());
  EXPECT_EQ(engine->parseContext()->name(), Quarn::Name("MrpParseContext"));
  EXPECT_EQ(engine->mrpCounters()->name(), Quarn::Name("MrpCounters"));
  EXPECT_EQ(engine->parseContext()->eventsCounter(), 0u);
}

TEST_F(MrpSmTest, InitializationRecordsApplicationAndAttachesToServiceObject) {
  auto engine = engineNew(MrpApplication::mvrp, true);
  EXPECT_EQ(records.mrpStatus->application(), MrpApplication::mvrp);
  EXPECT_EQ(mrpLib->mrpSm(), engine.ptr());
}

TEST_F(MrpSmTest, TimerWheelTicksEveryHundredMillisecondsOnTheProcessClock) {
  auto engine = engineNew(MrpApplication::msrp, false);
  const auto& wheel = engine->timerWheel();
  EXPECT_EQ(wheel->clock(), Quarn::Ptr<Quarn::Clock>(clock));
  EXPECT_EQ(wheel->tickMsecs(), 100u);
  EXPECT_EQ(wheel->initialMaxTicks(), 60000u);
  EXPECT_TRUE(wheel->preserveOrder());
  EXPECT_EQ(wheel->defaultBucketSize(), 1024u);
}

struct MaxAttrTypesCase {
  unsigned application;
  unsigned maxAttrTypes;
};

class MaxAttrTypesTest : public EngineFixture, public ::testing::WithParamInterface<MaxAttrTypesCase> {};

TEST_P(MaxAttrTypesTest, FollowsTheApplication) {
  auto engine = engineNew(static_cast<MrpApplication>(GetParam().application), false);
  EXPECT_EQ(engine->maxAttrTypes(), GetParam().maxAttrTypes);
}

INSTANTIATE_TEST_SUITE_P(Applications, MaxAttrTypesTest,
                         ::testing::Values(MaxAttrTypesCase{1, 4}, MaxAttrTypesCase{2, 1}, MaxAttrTypesCase{0, 0},
                                           MaxAttrTypesCase{3, 0}, MaxAttrTypesCase{255, 0}),
                         [](const auto& info) { return "application" + std::to_string(info.param.application); });

TEST_F(MrpSmTest, SwitchToActiveIndexesExactlyTheStoredPortsAndTypesWithTheirKeys) {
  auto db = records.mrpStatus->applicationDatabaseIs(MrpApplication::msrp);
  const Velo::IntfId eth1("Ethernet1"), eth2("Ethernet2");
  for (std::uint64_t key : {30u, 10u, 20u}) db->attrDatabaseIs(eth1)->intfTypeApplicantIs(1)->mrpAttributeIs(key);
  db->attrDatabaseIs(eth1)->intfTypeApplicantIs(3)->mrpAttributeIs(7);
  db->attrDatabaseIs(eth2)->intfTypeApplicantIs(4)->mrpAttributeIs(0xffffffffffffffffULL);
  // Another application's registrations are not this engine's.
  records.mrpStatus->applicationDatabaseIs(MrpApplication::mvrp)->attrDatabaseIs(eth2)->intfTypeApplicantIs(1)->mrpAttributeIs(5);

  auto engine = engineNew(MrpApplication::msrp, true);
  EXPECT_TRUE(engine->attributeStore().mrpAttrIters().empty()) << "a standby engine keeps no index";
  engine->standbyModeIs(false);
  engine->handleStandbyMode();

  std::map<Mrp::MrpAttrIter::Key, std::vector<std::uint64_t>> index;
  for (const auto& [key, iter] : engine->attributeStore().mrpAttrIters()) {
    index[key].assign(iter->attributeKeys().begin(), iter->attributeKeys().end());
  }
  const std::map<Mrp::MrpAttrIter::Key, std::vector<std::uint64_t>> expected{
      {{eth1, 1}, {10, 20, 30}}, {{eth1, 3}, {7}}, {{eth2, 4}, {0xffffffffffffffffULL}}};
  EXPECT_EQ(index, expected);
}

TEST_F(MrpSmTest, SwitchToActiveWithEmptyStoreCreatesNoIndexOrDatabase) {
  auto engine = engineNew(MrpApplication::mvrp, true);
  engine->standbyModeIs(false);
  engine->handleStandbyMode();
  EXPECT_TRUE(engine->attributeStore().mrpAttrIters().empty());
  EXPECT_FALSE(records.mrpStatus->applicationDatabase(MrpApplication::mvrp));
}

TEST_F(MrpSmTest, StandbyPropagatesToPacketAccessOnActivation) {
  auto engine = engineNew(MrpApplication::msrp, true);
  EXPECT_TRUE(engine->mrpPamSm()->standbyMode());
  engine->handleStandbyMode();
  EXPECT_TRUE(engine->mrpPamSm()->standbyMode()) << "still standby: nothing changes";
  expectNoMachines(*engine);
  engine->standbyModeIs(false);
  engine->handleStandbyMode();
  EXPECT_FALSE(engine->mrpPamSm()->standbyMode());
}

TEST_F(MrpSmTest, StandbyOnAnActiveEngineChangesNothing) {
  auto engine = engineNew(MrpApplication::mvrp, false);
  const auto counters = engine->mrpCounters();
  const auto applicant = engine->applicantSm();
  engine->standbyModeIs(true);
  engine->handleStandbyMode();
  EXPECT_TRUE(engine->standbyMode());
  EXPECT_EQ(engine->mrpCounters(), counters);
  EXPECT_EQ(engine->applicantSm(), applicant);
  EXPECT_FALSE(engine->mrpPamSm()->standbyMode());
}

TEST_F(MrpSmTest, SecondActivationKeepsTheMachines) {
  auto engine = engineNew(MrpApplication::mvrp, false);
  engine->mrpCounters()->numOfPktsProcessedInc();
  const auto wheel = engine->timerWheel();
  engine->handleStandbyMode();
  EXPECT_EQ(engine->timerWheel(), wheel);
  EXPECT_EQ(engine->mrpCounters()->numOfPktsProcessed(), 1u);
}

TEST_F(MrpSmTest, HandlersTraceTheirSignatures) {
  Quarn::CaptureTraceSink traces;
  Quarn::traceLevelsIs("MrpSm/0-9");
  auto engine = engineNew(MrpApplication::mvrp, false);
  Quarn::traceLevelsClear();
  EXPECT_TRUE(traces.contains("void Mrp::MrpSm::handleInitialized()"));
  EXPECT_TRUE(traces.contains("void Mrp::MrpSm::handleStandbyMode()"));
  EXPECT_TRUE(traces.contains("void Mrp::MrpApplicantSm::handleInitialized()"));
  EXPECT_TRUE(traces.contains("MrpDatabaseAddSm::handleInitialized()"));
  EXPECT_TRUE(traces.contains("MrpDatabaseDeleteSm::handleInitialized()"));
}

using MrpSmDeathTest = MrpSmTest;

TEST_F(MrpSmDeathTest, SecondHandleInitializedAborts) {
  auto engine = engineNew(MrpApplication::mvrp, false);
  EXPECT_DEATH(engine->handleInitialized(), "!initialized\\(\\)");
}

TEST_F(MrpSmDeathTest, MachinesAbortOnSecondHandleInitialized) {
  auto engine = engineNew(MrpApplication::msrp, false);
  EXPECT_DEATH(engine->applicantSm()->handleInitialized(), "!initialized\\(\\)");
  EXPECT_DEATH(engine->registrarSm()->handleInitialized(), "!initialized\\(\\)");
  EXPECT_DEATH(engine->leaveAllSm()->handleInitialized(), "!initialized\\(\\)");
  EXPECT_DEATH(engine->mrpDatabaseAddSm()->handleInitialized(), "!initialized\\(\\)");
  EXPECT_DEATH(engine->mrpDatabaseDeleteSm()->handleInitialized(), "!initialized\\(\\)");
  EXPECT_DEATH(engine->mrpAttrLogSm()->handleInitialized(), "!initialized\\(\\)");
  EXPECT_DEATH(engine->mrpPamSm()->handleInitialized(), "!initialized\\(\\)");
}

TEST_F(MrpSmTest, AttributeLogWatchdogWatchesTheOutputNamedAfterTheEntityManager) {
  int fds[2];
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, fds), 0);
  Quarn::Ptr<Quarn::NboAttrLog::SocketOutSm> other = new Quarn::NboAttrLog::SocketOutSm("other", fds[1]);
  Quarn::Ptr<Quarn::NboAttrLog::SocketOutSm> mine = new Quarn::NboAttrLog::SocketOutSm("mrp", fds[0]);
  Quarn::NboAttrLog::outputIs(other);
  Quarn::NboAttrLog::outputIs(mine);
  auto engine = engineNew(MrpApplication::msrp, false);
  EXPECT_EQ(engine->mrpAttrLogSm()->socketOutput(), mine);
  Quarn::NboAttrLog::outputDelAll();
  close(fds[0]);
  close(fds[1]);
}

TEST_F(MrpSmTest, MissingAttributeLogOutputIsTolerated) {
  Quarn::NboAttrLog::outputDelAll();
  auto engine = engineNew(MrpApplication::msrp, false);
  ASSERT_TRUE(engine->mrpAttrLogSm());
  EXPECT_FALSE(engine->mrpAttrLogSm()->socketOutput());
}

TEST_F(MrpSmTest, WatchesEverySpanningTreeInstanceAndFollowsChanges) {
  records.stpStatus->stpiStatusIs("default");
  records.stpStatus->stpiStatusIs("backup");
  auto engine = engineNew(MrpApplication::mvrp, true);
  EXPECT_EQ(engine->portRoles().stpiStatusCount(), 2u);
  ASSERT_NE(engine->stpiStatus("default"), nullptr);
  EXPECT_EQ(engine->stpiStatus("default")->portRoles(), &engine->portRoles());

  records.stpStatus->stpiStatusIs("third");
  EXPECT_NE(engine->stpiStatus("third"), nullptr);
  records.stpStatus->stpiStatusDel("default");
  EXPECT_EQ(engine->stpiStatus("default"), nullptr);
  EXPECT_EQ(engine->portRoles().stpiStatusCount(), 2u);
}

TEST_F(MrpSmTest, AnEngineCreatedWhileAPortAlreadyHasARoleStartsAndJudgesItOnceItCan) {
  records.stpStatus->modeIs(Stp::kModeRstp);
  records.stpStatus->stpiStatusIs("stp")->mstiStatusIs("Cist")->mstiPortStatusIs("p1")->roleIs(
      Stp::MstiPortStatus::Role::root);
  auto engine = engineNew(MrpApplication::mvrp, false);
  EXPECT_TRUE(engine->portRoles().judging());
  EXPECT_TRUE(engine->oldPortRole().empty()) << "judged at the end of initialisation, when no port is wanted yet";
}

TEST_F(MrpSmTest, ARoleChangeOnAPortWhoseNativeVlanIsOutOfRangeStaysWithTheEngine) {
  records.stpStatus->modeIs(Stp::kModePvst);
  records.brConfig->switchIntfConfigIs(Velo::IntfId("p1"))->nativeVlanIs(4095);
  auto engine = engineNew(MrpApplication::mvrp, false);
  const auto port = records.stpStatus->stpiStatusIs("stp")->mstiStatusIs("Vl4095")->mstiPortStatusIs("p1");
  EXPECT_NO_THROW(port->roleIs(Stp::MstiPortStatus::Role::root));
  EXPECT_TRUE(engine->oldPortRole().empty());
}

TEST_F(MrpSmTest, TeardownDetachesFromServiceObjectAndSpanningTree) {
  records.stpStatus->stpiStatusIs("default");
  {
    auto engine = engineNew(MrpApplication::mvrp, false);
    ASSERT_EQ(mrpLib->mrpSm(), engine.ptr());
  }
  EXPECT_EQ(mrpLib->mrpSm(), nullptr);
  // Changes after the engine has gone reach no one.
  records.stpStatus->stpiStatusIs("later");
  records.stpStatus->stpiStatusDel("default");
  EXPECT_EQ(records.stpStatus->stpiStatusCount(), 1u);
}

TEST(MrpSmLogTest, MessagesAreDefinedWithTheirKeysDescriptionsAndFormats) {
  struct Case {
    const Quarn::LogMessage& message;
    const char* key;
    const char* description;
    const char* format;
  };
  const Case cases[] = {
      {Mrp::MRP_ERROR, "MRP_ERROR", "MRP error occurred", "%s"},
      {Mrp::MRP_JOIN, "MRP_JOIN", "MRP Join was received on an interface",
       "MRP Join received on %s, attrType: %s, key: %s, state: %s, event: %s"},
      {Mrp::MRP_LV, "MRP_LV", "MRP Lv was handled on an interface",
       "MRP Lv %s on %s, attrType: %s, key: %s, state: %s, event: %s"},
  };
  for (const Case& c : cases) {
    EXPECT_STREQ(c.message.key, c.key);
    EXPECT_STREQ(c.message.description, c.description);
    EXPECT_STREQ(c.message.format, c.format);
    EXPECT_EQ(c.message.severity, 6);
    EXPECT_STREQ(c.message.recommendedAction, Quarn::kNoActionRequired);
  }
}

TEST(MrpSmLogTest, JoinMessageFormatsItsFields) {
  Quarn::CaptureLogSink logs;
  Quarn::log(Mrp::MRP_JOIN, "Ethernet1", "1", "42", "IN", "rJoinIn!");
  ASSERT_EQ(logs.lines().size(), 1u);
  EXPECT_EQ(logs.lines()[0].key, "MRP_JOIN");
  EXPECT_EQ(logs.lines()[0].text, "MRP Join received on Ethernet1, attrType: 1, key: 42, state: IN, event: rJoinIn!");
}

TEST(MrpSmNamesTest, SpanningTreeNameConstants) {
  EXPECT_STREQ(Mrp::kCistName, "Cist");
  EXPECT_STREQ(Mrp::kMstNameFormat, "Mst%d");
  EXPECT_STREQ(Mrp::kVlanPrefix, "Vl");
  EXPECT_STREQ(Mrp::kNoStpName, "NoStp");
  EXPECT_STREQ(Mrp::kBackupPrefix, "Bkup");
}

}  // namespace
}  // namespace MrpTest
