// The LeaveAll coordinator: the drawn period, LeaveAll timing per port and
// attribute type, the delivery of LeaveAll-like events to the registrations
// of a port, and the requests that send a LeaveAll on the agent's behalf.

#include "MrpSm/MrpLeaveAllSm.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <optional>
#include <set>
#include <ostream>
#include <string>
#include <vector>

#include "MrpSm/MrpSm.h"
#include "quarn/Trace.h"
#include "support/EngineScenario.h"
#include "support/LeaveAllHelpers.h"
#include "support/ScopedEnv.h"

namespace MrpTest {
namespace {

using Mrp::MrpApplicantEvent;
using Mrp::MrpApplication;
using Mrp::MrpRegistrarEvent;
using Mrp::MrpRegistrarState;
using Mrp::MvrpVlanAttribute;
using Types = std::set<std::uint8_t>;

constexpr unsigned kSeed = 4711;
constexpr Quarn::Seconds kEpsilon = 1e-9;
constexpr Quarn::Seconds kTick = 0.1;
const Velo::IntfId kP1("p1");

class MrpLeaveAllSmTest : public EngineScenario {
 protected:
  static Mrp::MrpLeaveAllSm& coordinator(const ScenarioEngine& engine) { return *engine.sm().leaveAllSm(); }
  // The attribute types with LeaveAll timing on the port; empty without a port machine.
  static Types timedTypes(const ScenarioEngine& engine, const std::string& port) {
    Types types;
    if (const auto machine = coordinator(engine).intfLeaveAllSm(Velo::IntfId(port))) {
      for (const auto& [type, timer] : machine->leaveAllPendings()) types.insert(type);
    }
    return types;
  }
  static std::optional<Quarn::Seconds> published(const ScenarioEngine& engine, const std::string& port,
                                                 std::uint8_t type) {
    return engine.status().applicationDatabaseIs(engine.application())->leaveAllTime({Velo::IntfId(port), type});
  }
  static std::size_t publishedCount(const ScenarioEngine& engine) {
    return engine.status().applicationDatabaseIs(engine.application())->leaveAllTimes().size();
  }
  void registerVlans(ScenarioEngine& engine, const std::string& port, const std::vector<std::uint16_t>& vlans,
                     std::uint8_t event = kJoinIn) {
    inject(port, frameOf(engine, mvrpPduOf(engine.lib(), vlans, event)));
  }

  ScopedEnv fixedPeriod{kDisableLeaveAllRandomization, "1"};
};

// ---- The drawn period

TEST_F(MrpLeaveAllSmTest, DrawnPeriodIsBaseTimesOnePlusRandTimesTwoToTheMinus32ToTheLastBit) {
  ScopedEnv randomized(kDisableLeaveAllRandomization, std::nullopt);
  ScenarioEngine& e = engineNew("E", MrpApplication::mvrp);
  e.config().leaveAllTimeIs(7.3);
  std::vector<Quarn::Seconds> drawn;
  std::srand(kSeed);
  for (int i = 0; i < 1000; ++i) drawn.push_back(Mrp::getLeaveAllTime(e.sm(), kP1));
  std::srand(kSeed);
  for (Quarn::Seconds period : drawn) ASSERT_EQ(period, leaveAllPeriodOf(7.3, std::rand()));
}

TEST_F(MrpLeaveAllSmTest, DrawnPeriodsLieFromTheBaseUpToOneAndAHalfTimesIt) {
  ScopedEnv randomized(kDisableLeaveAllRandomization, std::nullopt);
  ScenarioEngine& e = engineNew("E", MrpApplication::mvrp);
  std::srand(kSeed);
  Quarn::Seconds lowest = Quarn::kInfinity;
  Quarn::Seconds highest = 0;
  for (int i = 0; i < 100000; ++i) {
    const Quarn::Seconds period = Mrp::getLeaveAllTime(e.sm(), kP1);
    lowest = std::min(lowest, period);
    highest = std::max(highest, period);
  }
  EXPECT_GE(lowest, 10.0);
  EXPECT_LT(lowest, 10.01) << "the whole range is drawn from";
  EXPECT_LT(highest, 15.0);
  EXPECT_GT(highest, 14.99);
  // The largest factor rand() can give.
  EXPECT_LT(leaveAllPeriodOf(10, RAND_MAX), 15.0);
}

TEST_F(MrpLeaveAllSmTest, AnyValueOfTheVariableGivesTheBasePeriodWithoutADraw) {
  ScenarioEngine& e = engineNew("E", MrpApplication::mvrp);
  e.config().intfLeaveAllTimeIs(kP1, 3.7);
  for (const char* value : {"", "0", "no"}) {
    ScopedEnv set(kDisableLeaveAllRandomization, value);
    std::srand(kSeed);
    EXPECT_EQ(Mrp::getLeaveAllTime(e.sm(), kP1), 3.7) << '"' << value << '"';
    const int next = std::rand();
    std::srand(kSeed);
    EXPECT_EQ(next, std::rand()) << "rand() was not called";
  }
}

struct InvalidLeaveAllTimeRow {
  Quarn::Seconds leaveAllTime;
  std::optional<Quarn::Seconds> intfLeaveAllTime;
  Quarn::Seconds period;
  const char* trace;
};

TEST_F(MrpLeaveAllSmTest, ALeaveAllTimeThatIsNotATimeIsTracedAndTakenAsZero) {
  constexpr Quarn::Seconds kNaN = std::numeric_limits<Quarn::Seconds>::quiet_NaN();
  constexpr Quarn::Seconds kInf = std::numeric_limits<Quarn::Seconds>::infinity();
  // clang-format off
  const InvalidLeaveAllTimeRow rows[] = {
    // leaveAllTime  intfLeaveAllTime  period  trace
    {kNaN,           std::nullopt,     0.0,    "Invalid leaveAllTime nan, taken as 0"},
    {-3.0,           std::nullopt,     0.0,    "Invalid leaveAllTime -3, taken as 0"},
    {kInf,           std::nullopt,     0.0,    "Invalid leaveAllTime inf, taken as 0"},
    {4.0,            kNaN,             4.0,    "Invalid intfLeaveAllTime nan on p1, taken as 0"},
    {4.0,            -2.0,             4.0,    "Invalid intfLeaveAllTime -2 on p1, taken as 0"},
  };
  // clang-format on
  ScenarioEngine& e = engineNew("E", MrpApplication::mvrp);
  portUp(e, "p1");
  for (const InvalidLeaveAllTimeRow& row : rows) {
    SCOPED_TRACE(row.trace);
    e.config().leaveAllTimeIs(row.leaveAllTime);
    if (row.intfLeaveAllTime) {
      e.config().intfLeaveAllTimeIs(kP1, *row.intfLeaveAllTime);
    } else {
      e.config().intfLeaveAllTimeDel(kP1);
    }
    Quarn::CaptureTraceSink traces;
    ASSERT_TRUE(Quarn::traceLevelsIs("MrpSm/4"));
    EXPECT_EQ(Mrp::getLeaveAllTime(e.sm(), kP1), row.period);
    coordinator(e).mrpDisableLeaveAllPending(kP1);
    coordinator(e).mrpEnableLeaveAllPending(kP1);
    Quarn::traceLevelsClear();
    EXPECT_TRUE(traces.contains(row.trace));
    EXPECT_EQ(published(e, "p1", 1), row.period) << "the period the port's LeaveAll timing runs on";
  }
}

// ---- Timing per port and type

struct ApplicationTypes {
  const char* name;
  MrpApplication application;
  Types types;
};
void PrintTo(const ApplicationTypes& a, std::ostream* os) { *os << a.name; }

class MrpLeaveAllSmApplicationTest : public MrpLeaveAllSmTest,
                                     public ::testing::WithParamInterface<ApplicationTypes> {};

TEST_P(MrpLeaveAllSmApplicationTest, EnableTimesEachAttributeTypeOfTheApplicationAndPublishesItsPeriod) {
  ScenarioEngine& e = engineNew("E", GetParam().application);
  advance(2);
  portUp(e, "p1");
  EXPECT_EQ(timedTypes(e, "p1"), GetParam().types);
  const auto machine = coordinator(e).intfLeaveAllSm(kP1);
  for (std::uint8_t type : GetParam().types) {
    EXPECT_DOUBLE_EQ(machine->leaveAllPending(type)->expiryTime(), 12.0) << unsigned{type};
    EXPECT_EQ(published(e, "p1", type), 10.0) << unsigned{type};
  }
  EXPECT_EQ(publishedCount(e), GetParam().types.size());
  EXPECT_DOUBLE_EQ(machine->leaveAllTimerTime(), 12.0);
}

TEST_P(MrpLeaveAllSmApplicationTest, DisableRemovesThePortMachineAndEveryPublishedPeriod) {
  ScenarioEngine& e = engineNew("E", GetParam().application);
  portUp(e, "p1");
  portUp(e, "p2");
  coordinator(e).mrpDisableLeaveAllPending(kP1);
  EXPECT_EQ(coordinator(e).intfLeaveAllSm(kP1), nullptr);
  for (std::uint8_t type : GetParam().types) EXPECT_FALSE(published(e, "p1", type)) << unsigned{type};
  EXPECT_EQ(timedTypes(e, "p2"), GetParam().types);
  EXPECT_EQ(publishedCount(e), GetParam().types.size()) << "p2's";
  advance(10);
  EXPECT_TRUE(takeFrames("p1").empty()) << "no LeaveAll after the disable";
  EXPECT_EQ(leaveAllTimesOf(takeFrames("p2")).size(), 1u);
}

INSTANTIATE_TEST_SUITE_P(Applications, MrpLeaveAllSmApplicationTest,
                         ::testing::Values(ApplicationTypes{"Msrp", MrpApplication::msrp, {1, 2, 3, 4}},
                                           ApplicationTypes{"Mvrp", MrpApplication::mvrp, {1}}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(MrpLeaveAllSmTest, PortMachineGoesWithItsLastTimedType) {
  ScenarioEngine& e = engineNew("E", MrpApplication::msrp);
  portUp(e, "p1");
  for (std::uint8_t type : {3, 1, 4}) {
    coordinator(e).mrpDisableLeaveAllPendingAttrType(kP1, type);
    EXPECT_FALSE(published(e, "p1", type)) << unsigned{type};
  }
  EXPECT_EQ(timedTypes(e, "p1"), Types{2});
  EXPECT_EQ(published(e, "p1", 2), 10.0);
  coordinator(e).mrpDisableLeaveAllPendingAttrType(kP1, 2);
  EXPECT_EQ(coordinator(e).intfLeaveAllSm(kP1), nullptr);
  EXPECT_EQ(publishedCount(e), 0u);
}

TEST_F(MrpLeaveAllSmTest, ATypeEnabledAgainAfterItsDisableStartsAFreshPeriod) {
  ScenarioEngine& e = engineNew("E", MrpApplication::msrp);
  portUp(e, "p1");
  advance(4);
  coordinator(e).mrpDisableLeaveAllPendingAttrType(kP1, 2);
  coordinator(e).mrpEnableLeaveAllPendingAttrType(kP1, 2, 3.0);
  EXPECT_DOUBLE_EQ(coordinator(e).intfLeaveAllSm(kP1)->leaveAllPending(2)->expiryTime(), 7.0);
  EXPECT_EQ(published(e, "p1", 2), 3.0);
  advance(3);
  const std::vector<SentFrame> frames = leaveAllFramesOf(takeFrames("p1"));
  ASSERT_EQ(frames.size(), 1u);
  EXPECT_NEAR(frames[0].time, 7.0, kEpsilon);
  EXPECT_EQ(frames[0].leaveAll, Types{2});
}

// ---- Posting to every registration of a port and type

using MrpLeaveAllSmDeathTest = MrpLeaveAllSmTest;

TEST_F(MrpLeaveAllSmDeathTest, PostingAReceivedLeaveAllToTheApplicantStopsTheProcess) {
  ScenarioEngine& e = engineNew("E", MrpApplication::mvrp);
  EXPECT_DEATH(coordinator(e).mrpPostLeaveAllToSm(kP1, 1, MrpApplicantEvent::rxLvAll_, MrpRegistrarEvent::txLvAll),
               "applicantEvent != rxLvAll_ && registrarEvent != regLvAll_");
}

TEST_F(MrpLeaveAllSmDeathTest, PostingAReceivedLeaveAllToTheRegistrarStopsTheProcess) {
  ScenarioEngine& e = engineNew("E", MrpApplication::mvrp);
  EXPECT_DEATH(coordinator(e).mrpPostLeaveAllToSm(kP1, 1, MrpApplicantEvent::txLvAll, MrpRegistrarEvent::regLvAll_),
               "applicantEvent != rxLvAll_ && registrarEvent != regLvAll_");
}

TEST_F(MrpLeaveAllSmTest, PostingVisitsEveryAttributeOfThePortAndTypeInKeyOrderApplicantFirst) {
  ScenarioEngine& e = engineNew("E", MrpApplication::mvrp);
  portUp(e, "p1");
  portUp(e, "p2");
  registerVlans(e, "p1", {30, 10, 20});
  registerVlans(e, "p2", {15});
  Quarn::CaptureTraceSink traces;
  Quarn::traceLevelsIs("MrpSm/7-8");
  coordinator(e).mrpPostLeaveAllToSm(kP1, 1, MrpApplicantEvent::redeclare, MrpRegistrarEvent::redeclare);
  Quarn::traceLevelsClear();

  // Each visit: the walk's line, then the applicant's, then the registrar's.
  std::vector<std::string> visits;
  for (const auto& line : traces.lines()) {
    if (line.text.rfind("PostLeaveAllToSm: attributeKey = ", 0) == 0) visits.push_back(line.text);
    if (line.text == "void Mrp::MrpApplicantSm::handleApplicantEvent()") visits.back() += " A";
    if (line.text == "void Mrp::MrpRegistrarSm::handleRegistrarEvent()") visits.back() += " R";
  }
  EXPECT_EQ(visits, (std::vector<std::string>{
                        "PostLeaveAllToSm: attributeKey = 0xa Type= 1interface = p1 A R",
                        "PostLeaveAllToSm: attributeKey = 0x14 Type= 1interface = p1 A R",
                        "PostLeaveAllToSm: attributeKey = 0x1e Type= 1interface = p1 A R",
                    }));
  for (std::uint16_t vlan : {10, 20, 30}) {
    EXPECT_EQ(e.attribute("p1", 1, vlan)->registrarState(), MrpRegistrarState::lv) << vlan;
  }
  EXPECT_EQ(e.attribute("p2", 1, 15)->registrarState(), MrpRegistrarState::in) << "another port";
}

TEST_F(MrpLeaveAllSmTest, WalkGoesOnWhenTheAttributeItHandlesIsDeleted) {
  ScenarioEngine& e = engineNew("E", MrpApplication::mvrp);
  portUp(e, "p1");
  // Registered by New, their applicants stay VO; not yet committed, so a
  // Flush! deletes each from the index as it is handled.
  registerVlans(e, "p1", {10, 11, 12}, kNew);
  ASSERT_EQ(e.sm().attributeStore().addPendingAttrs().size(), 3u);
  coordinator(e).mrpPostLeaveAllToSm(kP1, 1, MrpApplicantEvent::flush, MrpRegistrarEvent::flush);
  for (std::uint16_t vlan : {10, 11, 12}) EXPECT_EQ(e.attribute("p1", 1, vlan), nullptr) << vlan;
  EXPECT_EQ(e.sm().attributeStore().mrpAttrIter({kP1, 1}), nullptr);
  EXPECT_TRUE(takeLeaves(e).empty()) << "Flush! forgets registrations without a leave indication";
}

// ---- The agent's LeaveAll request

TEST_F(MrpLeaveAllSmTest, LeaveAllRequestWithThreePortsQueuedSendsOnEachAndRestartsEachPortsTimer) {
  ScenarioEngine& e = engineNew("E", MrpApplication::msrp);
  const std::vector<std::string> ports{"p1", "p2", "p3"};
  for (const std::string& port : ports) portUp(e, port);
  portUp(e, "p4");
  advance(4);
  // The request sends a Talker Advertise LeaveAll but restarts the type the
  // engine's context held before it (here Listener), deliberately.
  e.sm().parseContext()->attributeTypeIs(3);
  Mrp::MrpLib& lib = e.lib();
  for (const std::string& port : ports) lib.mrpOutIntfQueueEnq(Velo::IntfId(port));
  lib.mrpSendAttribute({kP1, 1, kLeaveAll});
  EXPECT_EQ(e.sm().parseContext()->attributeType(), 3) << "the context is restored";
  for (const std::string& port : ports) {
    ASSERT_NE(lib.mrpTxPacketContext(Velo::IntfId(port)), nullptr) << port;
    const auto machine = coordinator(e).intfLeaveAllSm(Velo::IntfId(port));
    EXPECT_DOUBLE_EQ(machine->leaveAllPending(3)->expiryTime(), 14.0) << port;
    EXPECT_DOUBLE_EQ(machine->leaveAllPending(1)->expiryTime(), 10.0) << port;
    EXPECT_EQ(published(e, port, 3), 10.0) << port;
  }
  EXPECT_EQ(lib.mrpTxPacketContext(Velo::IntfId("p4")), nullptr);
  advance(kTick);
  for (const std::string& port : ports) {
    const std::vector<SentFrame> frames = takeFrames(port);
    ASSERT_EQ(frames.size(), 1u) << port;
    EXPECT_EQ(frames[0].leaveAll, Types{1}) << port;
  }
  advance(10 - 4 - kTick);
  for (const std::string& port : ports) {
    const std::vector<SentFrame> frames = leaveAllFramesOf(takeFrames(port));
    ASSERT_EQ(frames.size(), 1u) << port;
    EXPECT_EQ(frames[0].leaveAll, (Types{1, 2, 4})) << port << ": the Listener's LeaveAll waits";
  }
  EXPECT_EQ(leaveAllFramesOf(takeFrames("p4")).at(0).leaveAll, (Types{1, 2, 3, 4})) << "p4 was not queued";
  advance(4);
  for (const std::string& port : ports) {
    const std::vector<SentFrame> frames = leaveAllFramesOf(takeFrames(port));
    ASSERT_EQ(frames.size(), 1u) << port;
    EXPECT_EQ(frames[0].leaveAll, Types{3}) << port;
  }
}

// ---- LeaveAll on every type of a port, on management's request

TEST_F(MrpLeaveAllSmTest, TransmitAllLeaveAllSendsNowRunsTheApplicantsAndRestartsTheTimers) {
  ScenarioEngine& e = engineNew("E", MrpApplication::mvrp);
  portUp(e, "p1");
  registerVlans(e, "p1", {20});
  advance(4);
  e.sm().mrpPamSm()->transmitAllLeaveAll(kP1);
  const std::vector<SentFrame> frames = takeFrames("p1");
  ASSERT_EQ(frames.size(), 1u);
  EXPECT_EQ(frames[0].leaveAll, Types{1});
  EXPECT_EQ(frames[0].values, (std::vector<SentValue>{{1, 20, kIn, {0x00, 0x14}}}));
  EXPECT_EQ(e.attribute("p1", 1, 20)->applicantState(), Mrp::MrpApplicantState::vo);
  EXPECT_EQ(e.attribute("p1", 1, 20)->registrarState(), MrpRegistrarState::in) << "only the applicants run";
  EXPECT_DOUBLE_EQ(coordinator(e).intfLeaveAllSm(kP1)->leaveAllPending(1)->expiryTime(), 14.0);
  advance(9.9);
  EXPECT_TRUE(leaveAllFramesOf(takeFrames("p1")).empty()) << "none at 10 s";
  advance(kTick);
  EXPECT_EQ(leaveAllTimesOf(takeFrames("p1")).size(), 1u);
}

TEST_F(MrpLeaveAllSmTest, TransmitAllLeaveAllCoversEveryMsrpType) {
  ScenarioEngine& e = engineNew("E", MrpApplication::msrp);
  portUp(e, "p1");
  advance(4);
  e.sm().mrpPamSm()->transmitAllLeaveAll(kP1);
  const std::vector<SentFrame> frames = takeFrames("p1");
  ASSERT_EQ(frames.size(), 1u);
  EXPECT_EQ(frames[0].leaveAll, (Types{1, 2, 3, 4}));
  for (std::uint8_t type = 1; type <= 4; ++type) {
    EXPECT_DOUBLE_EQ(coordinator(e).intfLeaveAllSm(kP1)->leaveAllPending(type)->expiryTime(), 14.0) << unsigned{type};
  }
}

TEST_F(MrpLeaveAllSmTest, TransmitAllLeaveAllDoesNothingForAPortWithoutSocketOrInStandby) {
  ScenarioEngine& e = engineNew("E", MrpApplication::mvrp);
  portUp(e, "p1");
  e.sm().mrpPamSm()->transmitAllLeaveAll(Velo::IntfId("p9"));
  e.sm().mrpPamSm()->standbyModeIs(true);
  e.sm().mrpPamSm()->transmitAllLeaveAll(kP1);
  EXPECT_TRUE(takeFrames("p1").empty());
  EXPECT_DOUBLE_EQ(coordinator(e).intfLeaveAllSm(kP1)->leaveAllPending(1)->expiryTime(), 10.0);
}

}  // namespace
}  // namespace MrpTest
