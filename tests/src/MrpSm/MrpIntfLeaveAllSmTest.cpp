// The LeaveAll timing of one port: when each attribute type sends its
// LeaveAll, what it sends, and how receptions and configuration move it.

#include "MrpSm/MrpIntfLeaveAllSm.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <set>
#include <stdexcept>
#include <ostream>
#include <string>
#include <vector>

#include "MrpSm/MrpLeaveAllSm.h"
#include "support/EngineScenario.h"
#include "support/FrameBuilder.h"
#include "support/LeaveAllHelpers.h"
#include "support/ScopedEnv.h"
#include "velo/EthHdr.h"

namespace MrpTest {
namespace {

using Mrp::MrpApplication;
using Mrp::MvrpVlanAttribute;
using Types = std::set<std::uint8_t>;

const Types kAllMsrpTypes{1, 2, 3, 4};
constexpr unsigned kSeed = 20240611;
// Time is simulated; this only absorbs the rounding of sums of seconds.
constexpr Quarn::Seconds kEpsilon = 1e-9;
// The engine's timers fire on 0.1 s ticks.
constexpr Quarn::Seconds kTick = 0.1;

class MrpIntfLeaveAllSmTest : public EngineScenario {
 protected:
  static Mrp::MrpIntfLeaveAllSm& machine(const ScenarioEngine& engine, const std::string& port) {
    const Quarn::Ptr<Mrp::MrpIntfLeaveAllSm> found = engine.sm().leaveAllSm()->intfLeaveAllSm(Velo::IntfId(port));
    if (!found) throw std::logic_error("no LeaveAll machine on " + port);
    return *found;
  }
  static Quarn::Seconds expiryOf(const ScenarioEngine& engine, const std::string& port, std::uint8_t type) {
    return machine(engine, port).leaveAllPending(type)->expiryTime();
  }
  // The period the engine's status shows for the port and type.
  static std::optional<Quarn::Seconds> published(const ScenarioEngine& engine, const std::string& port,
                                                 std::uint8_t type) {
    return engine.status().applicationDatabaseIs(engine.application())->leaveAllTime({Velo::IntfId(port), type});
  }
  // The MRPDU of a sent frame (behind its Ethernet header).
  static Bytes mrpduOf(const SentFrame& frame) {
    return Bytes(frame.bytes.begin() + Velo::EthHdr::kSize, frame.bytes.end());
  }
  ScopedEnv fixedPeriod{kDisableLeaveAllRandomization, "1"};
};

// ---- When LeaveAlls go out

TEST_F(MrpIntfLeaveAllSmTest, WithRandomizationDisabledEachTypeSendsItsLeaveAllEveryPeriodAfterTheEnable) {
  ScenarioEngine& e = engineNew("E", MrpApplication::msrp);
  advance(3);
  portUp(e, "p1");
  advance(32);
  const std::vector<SentFrame> frames = leaveAllFramesOf(takeFrames("p1"));
  ASSERT_EQ(frames.size(), 3u);
  for (std::size_t i = 0; i < frames.size(); ++i) {
    EXPECT_NEAR(frames[i].time, 13.0 + 10.0 * i, kEpsilon);
    EXPECT_EQ(frames[i].leaveAll, kAllMsrpTypes);
  }
}

TEST_F(MrpIntfLeaveAllSmTest, RandomPeriodsLieInTheirRangeAndOneDrawServesEveryMsrpTypeOfThePort) {
  ScopedEnv randomized(kDisableLeaveAllRandomization, std::nullopt);
  ScenarioEngine& e = engineNew("E", MrpApplication::msrp);
  std::srand(kSeed);
  portUp(e, "p1");
  advance(120);
  const std::vector<SentFrame> frames = leaveAllFramesOf(takeFrames("p1"));
  ASSERT_GE(frames.size(), 8u) << "at most 15 s apart";

  // The enable drew the first period, each expiry the next one.
  std::srand(kSeed);
  Quarn::Seconds armed = 0;
  Quarn::Seconds period = leaveAllPeriodOf(10, std::rand());
  for (const SentFrame& frame : frames) {
    SCOPED_TRACE("LeaveAll at " + std::to_string(frame.time));
    EXPECT_GE(period, 10.0);
    EXPECT_LT(period, 15.0);
    EXPECT_EQ(frame.leaveAll, kAllMsrpTypes) << "the types expire together";
    EXPECT_GE(frame.time, armed + period - kEpsilon);
    EXPECT_LT(frame.time, armed + period + kTick);
    armed = frame.time;
    period = leaveAllPeriodOf(10, std::rand());
  }
  for (std::uint8_t type : kAllMsrpTypes) {
    EXPECT_EQ(published(e, "p1", type), period) << "type " << unsigned{type};
    EXPECT_EQ(expiryOf(e, "p1", type), armed + period) << "type " << unsigned{type};
  }
}

struct PortPeriodCase {
  const char* name;
  std::optional<Quarn::Seconds> intfLeaveAllTime;
  Quarn::Seconds firstLeaveAll;
};
void PrintTo(const PortPeriodCase& c, std::ostream* os) { *os << c.name; }

class MrpIntfLeaveAllSmPortPeriodTest : public MrpIntfLeaveAllSmTest,
                                        public ::testing::WithParamInterface<PortPeriodCase> {};

TEST_P(MrpIntfLeaveAllSmPortPeriodTest, PerPortPeriodOfZeroFallsBackToLeaveAllTime) {
  ScenarioEngine& e = engineNew("E", MrpApplication::mvrp);
  e.config().leaveAllTimeIs(10);
  if (GetParam().intfLeaveAllTime) e.config().intfLeaveAllTimeIs(Velo::IntfId("p1"), *GetParam().intfLeaveAllTime);
  portUp(e, "p1");
  EXPECT_EQ(Mrp::getLeaveAllTime(e.sm(), Velo::IntfId("p1")), GetParam().firstLeaveAll);
  EXPECT_EQ(published(e, "p1", 1), GetParam().firstLeaveAll);
  advance(GetParam().firstLeaveAll - kTick);
  EXPECT_TRUE(leaveAllFramesOf(takeFrames("p1")).empty());
  advance(kTick);
  const std::vector<Quarn::Seconds> times = leaveAllTimesOf(takeFrames("p1"));
  ASSERT_EQ(times.size(), 1u);
  EXPECT_NEAR(times[0], GetParam().firstLeaveAll, kEpsilon);
}

INSTANTIATE_TEST_SUITE_P(PerPortPeriods, MrpIntfLeaveAllSmPortPeriodTest,
                         ::testing::Values(PortPeriodCase{"None", std::nullopt, 10},
                                           PortPeriodCase{"Zero", 0.0, 10},
                                           PortPeriodCase{"Four", 4.0, 4}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(MrpIntfLeaveAllSmTest, EnablingATypeThatHasATimerNeitherRestartsItNorRewritesItsPeriod) {
  ScenarioEngine& e = engineNew("E", MrpApplication::mvrp);
  portUp(e, "p1");
  advance(4);
  e.sm().leaveAllSm()->mrpEnableLeaveAllPendingAttrType(Velo::IntfId("p1"), 1, 2.0);
  EXPECT_DOUBLE_EQ(expiryOf(e, "p1", 1), 10.0);
  EXPECT_DOUBLE_EQ(machine(e, "p1").leaveAllTimerTime(), 10.0);
  EXPECT_EQ(published(e, "p1", 1), 10.0);
  advance(5.9);
  EXPECT_TRUE(leaveAllFramesOf(takeFrames("p1")).empty()) << "no LeaveAll 2 s after the second enable";
  advance(kTick);
  EXPECT_EQ(leaveAllTimesOf(takeFrames("p1")).size(), 1u);
}

// ---- What goes out

TEST_F(MrpIntfLeaveAllSmTest, ExpiryWithoutRegistrationsSendsOneStandAloneLeaveAllMessage) {
  ScenarioEngine& e = engineNew("E", MrpApplication::mvrp);
  portUp(e, "p1");
  advance(10);
  const std::vector<SentFrame> frames = takeFrames("p1");
  ASSERT_EQ(frames.size(), 1u);
  EXPECT_EQ(frames[0].leaveAll, Types{1});
  EXPECT_TRUE(frames[0].values.empty());
  const Bytes pdu = mrpduOf(frames[0]);
  ASSERT_GE(pdu.size(), kMvrpLeaveAllPdu.size());
  EXPECT_EQ(Bytes(pdu.begin(), pdu.begin() + kMvrpLeaveAllPdu.size()), kMvrpLeaveAllPdu);
}

TEST_F(MrpIntfLeaveAllSmTest, ExpiryWithoutRegistrationsSendsOneLeaveAllMessagePerMsrpType) {
  ScenarioEngine& e = engineNew("E", MrpApplication::msrp);
  portUp(e, "p1");
  advance(10);
  const std::vector<SentFrame> frames = takeFrames("p1");
  ASSERT_EQ(frames.size(), 1u);
  EXPECT_EQ(frames[0].leaveAll, kAllMsrpTypes);
  EXPECT_TRUE(frames[0].values.empty());
}

TEST_F(MrpIntfLeaveAllSmTest, ExpiryWithADeclarationCarriesTheLeaveAllInTheDeclarationsVector) {
  ScenarioEngine& e = engineNew("E", MrpApplication::mvrp);
  portUp(e, "p1");
  declare(e, "p1", MvrpVlanAttribute(10), kJoinIn);
  advance(9.9);
  takeFrames("p1");
  advance(kTick);
  const std::vector<SentFrame> frames = takeFrames("p1");
  ASSERT_EQ(frames.size(), 1u);
  const Bytes expected{
      0x00,                    // ProtocolVersion
      0x01, 0x02,              // AttributeType VLAN, AttributeLength 2
      0x20, 0x01, 0x00, 0x0a,  // VectorHeader: LeaveAll, 1 value; FirstValue VLAN 10
      0x6c,                    // JoinMt (3 x 36): nothing registered for it
      0x00, 0x00,              // the list's EndMark
      0x00, 0x00,              // the PDU's EndMark
  };
  const Bytes pdu = mrpduOf(frames[0]);
  ASSERT_GE(pdu.size(), expected.size());
  EXPECT_EQ(Bytes(pdu.begin(), pdu.begin() + expected.size()), expected) << "no LeaveAll-only vector besides";
}

TEST_F(MrpIntfLeaveAllSmTest, ExpiryStartsLeaveTimingOfTheRegistrationsOfTheType) {
  ScenarioEngine& e = engineNew("E", MrpApplication::mvrp);
  portUp(e, "p1");
  inject("p1", frameOf(e, mvrpPduOf(e.lib(), {20}, kJoinIn)));
  advance(10);
  EXPECT_EQ(e.attribute("p1", 1, 20)->registrarState(), Mrp::MrpRegistrarState::lv);
  const std::vector<SentFrame> frames = takeFrames("p1");
  ASSERT_EQ(frames.size(), 1u);
  EXPECT_EQ(frames[0].leaveAll, Types{1});
  EXPECT_EQ(frames[0].values, (std::vector<SentValue>{{1, 20, kIn, {0x00, 0x14}}})) << "its registered state";
  advance(0.6);
  EXPECT_EQ(takeLeaves(e).size(), 1u) << "nobody answered within the leave time";
}

// ---- What moves the next LeaveAll

TEST_F(MrpIntfLeaveAllSmTest, ReceivedLeaveAllPushesTheNextLeaveAllAFullPeriodAfterTheReception) {
  ScenarioEngine& e = engineNew("E", MrpApplication::mvrp);
  portUp(e, "p1");
  advance(4);
  inject("p1", frameOf(e, kMvrpLeaveAllPdu));
  EXPECT_DOUBLE_EQ(expiryOf(e, "p1", 1), 14.0);
  advance(9.9);
  EXPECT_TRUE(leaveAllFramesOf(takeFrames("p1")).empty()) << "none at 10 s";
  advance(kTick);
  const std::vector<Quarn::Seconds> times = leaveAllTimesOf(takeFrames("p1"));
  ASSERT_EQ(times.size(), 1u);
  EXPECT_NEAR(times[0], 14.0, kEpsilon);
}

TEST_F(MrpIntfLeaveAllSmTest, ReceivedLeaveAllPushesOnlyItsOwnTypesNextLeaveAll) {
  ScenarioEngine& e = engineNew("E", MrpApplication::msrp);
  portUp(e, "p1");
  advance(4);
  FrameBuilder b(e.lib(), MrpApplication::msrp);
  b.message(2).talkerFailed(Mrp::MsrpTalkerFailedAttribute(), 6);
  inject("p1", frameOf(e, b.mrpdu()));
  advance(10);
  const std::vector<SentFrame> frames = leaveAllFramesOf(takeFrames("p1"));
  ASSERT_EQ(frames.size(), 2u);
  EXPECT_NEAR(frames[0].time, 10.0, kEpsilon);
  EXPECT_EQ(frames[0].leaveAll, (Types{1, 3, 4}));
  EXPECT_NEAR(frames[1].time, 14.0, kEpsilon);
  EXPECT_EQ(frames[1].leaveAll, Types{2});
}

TEST_F(MrpIntfLeaveAllSmTest, EveryReceivedLeaveAllRestartsTheTypeWithAFreshPeriod) {
  ScopedEnv randomized(kDisableLeaveAllRandomization, std::nullopt);
  ScenarioEngine& e = engineNew("E", MrpApplication::mvrp);
  std::srand(kSeed);
  portUp(e, "p1");
  std::vector<Quarn::Seconds> received;
  for (int i = 0; i < 3; ++i) {
    advance(4);
    inject("p1", frameOf(e, kMvrpLeaveAllPdu));
    received.push_back(now());
  }
  // The enable drew one period, each reception one more.
  std::srand(kSeed);
  std::rand();
  Quarn::Seconds period = 0;
  for (std::size_t i = 0; i < received.size(); ++i) period = leaveAllPeriodOf(10, std::rand());
  EXPECT_EQ(published(e, "p1", 1), period);
  EXPECT_EQ(expiryOf(e, "p1", 1), received.back() + period);
  advance(period + kTick);
  const std::vector<Quarn::Seconds> times = leaveAllTimesOf(takeFrames("p1"));
  ASSERT_EQ(times.size(), 1u) << "only the last reception counts";
  EXPECT_GE(times[0], received.back() + period - kEpsilon);
  EXPECT_LT(times[0], received.back() + period + kTick);
}

TEST_F(MrpIntfLeaveAllSmTest, LongerConfiguredPeriodLetsTheTimerFireWithNothingDueAndRearmIt) {
  ScenarioEngine& e = engineNew("E", MrpApplication::mvrp);
  portUp(e, "p1");
  advance(3);
  e.config().leaveAllTimeIs(20);
  EXPECT_DOUBLE_EQ(expiryOf(e, "p1", 1), 23.0);
  EXPECT_DOUBLE_EQ(machine(e, "p1").leaveAllTimerTime(), 10.0) << "the port's timer only moves earlier";
  advance(7);
  EXPECT_TRUE(takeFrames("p1").empty()) << "nothing due at 10 s";
  EXPECT_DOUBLE_EQ(machine(e, "p1").leaveAllTimerTime(), 23.0);
  advance(13);
  const std::vector<Quarn::Seconds> times = leaveAllTimesOf(takeFrames("p1"));
  ASSERT_EQ(times.size(), 1u);
  EXPECT_NEAR(times[0], 23.0, kEpsilon);
}

// ---- The expiry handling itself

TEST_F(MrpIntfLeaveAllSmTest, TypesDueWithinATenthOfASecondAreServedEarlyAndTheOthersWait) {
  ScenarioEngine& e = engineNew("E", MrpApplication::msrp);
  portUp(e, "p1");
  advance(5);
  Mrp::MrpIntfLeaveAllSm& m = machine(e, "p1");
  // Binary fractions, so that no rounding decides which side of 0.1 s they fall.
  m.leaveAllPending(1)->expiryTimeIs(now() + 0.0625);
  m.leaveAllPending(2)->expiryTimeIs(now() + 0.125);
  m.handleLeaveAllTimer();
  const std::vector<SentFrame> frames = takeFrames("p1");
  ASSERT_EQ(frames.size(), 1u);
  EXPECT_EQ(frames[0].leaveAll, Types{1});
  EXPECT_DOUBLE_EQ(expiryOf(e, "p1", 1), now() + 10);
  EXPECT_DOUBLE_EQ(expiryOf(e, "p1", 2), now() + 0.125);
  EXPECT_DOUBLE_EQ(expiryOf(e, "p1", 3), 10.0);
  EXPECT_DOUBLE_EQ(m.leaveAllTimerTime(), now() + 0.125) << "the earliest expiry of the types";
}

TEST_F(MrpIntfLeaveAllSmTest, TxLeaveAllOfATypeWithoutTimerSendsNothing) {
  ScenarioEngine& e = engineNew("E", MrpApplication::mvrp);
  portUp(e, "p1");
  advance(10 - kTick);
  machine(e, "p1").handleTxLeaveAll(2, 10);
  e.sm().mrpTransmitTxAttributes(Velo::IntfId("p1"));
  EXPECT_TRUE(takeFrames("p1").empty());
  EXPECT_FALSE(published(e, "p1", 2));
}

TEST_F(MrpIntfLeaveAllSmTest, AnOverdueTypeRearmsTheTimerATenthOfASecondAfterTheExpiry) {
  ScenarioEngine& e = engineNew("E", MrpApplication::mvrp);
  portUp(e, "p1");
  advance(3);
  // A negative period counts as 0: every expiry it sets is due at once.
  e.config().leaveAllTimeIs(-1);
  advance(kTick);
  EXPECT_EQ(leaveAllTimesOf(takeFrames("p1")).size(), 1u);
  EXPECT_EQ(expiryOf(e, "p1", 1), now()) << "due";
  EXPECT_NEAR(machine(e, "p1").leaveAllTimerTime(), now() + kTick, kEpsilon);
  advance(kTick);
  EXPECT_EQ(leaveAllTimesOf(takeFrames("p1")).size(), 1u) << "served again on the next tick";
}

TEST_F(MrpIntfLeaveAllSmTest, APeriodOfZeroSendsALeaveAllEveryTenthOfASecondAndNeverSpins) {
  ScenarioEngine& e = engineNew("E", MrpApplication::mvrp);
  portUp(e, "p1");
  advance(3);
  e.config().leaveAllTimeIs(0);
  advance(1);
  const std::size_t sent = leaveAllTimesOf(takeFrames("p1")).size();
  EXPECT_GE(sent, 9u);
  EXPECT_LE(sent, 11u);
  EXPECT_NEAR(machine(e, "p1").leaveAllTimerTime(), now() + kTick, kTick);
}

// ---- Configuration changes

TEST_F(MrpIntfLeaveAllSmTest, ChangingLeaveAllTimeRestartsEveryPortWithAFreshPeriod) {
  ScopedEnv randomized(kDisableLeaveAllRandomization, std::nullopt);
  ScenarioEngine& e = engineNew("E", MrpApplication::msrp);
  portUp(e, "p1");
  portUp(e, "p2");
  advance(3);
  std::srand(kSeed);
  e.config().leaveAllTimeIs(4);
  std::srand(kSeed);
  const Quarn::Seconds first = leaveAllPeriodOf(4, std::rand());
  const Quarn::Seconds second = leaveAllPeriodOf(4, std::rand());
  // The ports draw in the coordinator's order, one period per port.
  const std::set<Quarn::Seconds> drawn{first, second};
  std::set<Quarn::Seconds> restarted;
  for (const std::string port : {"p1", "p2"}) {
    const Quarn::Seconds period = expiryOf(e, port, 1) - 3;
    restarted.insert(*published(e, port, 1));
    for (std::uint8_t type : kAllMsrpTypes) {
      EXPECT_EQ(expiryOf(e, port, type), expiryOf(e, port, 1)) << port << " type " << unsigned{type};
      EXPECT_EQ(published(e, port, type), published(e, port, 1)) << port << " type " << unsigned{type};
    }
    EXPECT_NEAR(period, *published(e, port, 1), kEpsilon);
  }
  EXPECT_EQ(restarted, drawn);
  const Quarn::Seconds p1Expiry = expiryOf(e, "p1", 1);
  const Quarn::Seconds p2Expiry = expiryOf(e, "p2", 1);
  advance(6);
  for (const auto& [port, expiry] : {std::pair{"p1", p1Expiry}, std::pair{"p2", p2Expiry}}) {
    const std::vector<Quarn::Seconds> times = leaveAllTimesOf(takeFrames(port));
    ASSERT_EQ(times.size(), 1u) << port;
    EXPECT_GE(times[0], expiry - kEpsilon) << port;
    EXPECT_LT(times[0], expiry + kTick) << port;
  }
}

TEST_F(MrpIntfLeaveAllSmTest, ChangingOnePortsLeaveAllTimeRestartsOnlyThatPort) {
  ScenarioEngine& e = engineNew("E", MrpApplication::mvrp);
  portUp(e, "p1");
  portUp(e, "p2");
  advance(3);
  e.config().intfLeaveAllTimeIs(Velo::IntfId("p1"), 4);
  EXPECT_DOUBLE_EQ(expiryOf(e, "p1", 1), 7.0);
  EXPECT_EQ(published(e, "p1", 1), 4.0);
  EXPECT_DOUBLE_EQ(expiryOf(e, "p2", 1), 10.0);
  advance(5);
  e.config().intfLeaveAllTimeDel(Velo::IntfId("p1"));
  EXPECT_DOUBLE_EQ(expiryOf(e, "p1", 1), 18.0) << "back to leaveAllTime, from now";
  EXPECT_EQ(published(e, "p1", 1), 10.0);
  advance(10);
  const std::vector<Quarn::Seconds> p1 = leaveAllTimesOf(takeFrames("p1"));
  ASSERT_EQ(p1.size(), 2u);
  EXPECT_NEAR(p1[0], 7.0, kEpsilon);
  EXPECT_NEAR(p1[1], 18.0, kEpsilon);
  const std::vector<Quarn::Seconds> p2 = leaveAllTimesOf(takeFrames("p2"));
  ASSERT_EQ(p2.size(), 1u);
  EXPECT_NEAR(p2[0], 10.0, kEpsilon);
}

}  // namespace
}  // namespace MrpTest
