#include <gtest/gtest.h>

#include <map>

#include <cstdint>
#include <cstdlib>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "MrpMsrp/MsrpAttrType.h"
#include "quarn/Trace.h"
#include "support/EngineScenario.h"
#include "support/FrameBuilder.h"
#include "support/TxSend.h"

namespace MrpTest {
namespace {

using Mrp::MrpApplicantState;
using Mrp::MrpApplication;
using Mrp::MrpRegistrarState;

const Velo::IntfId kP1("p1"), kP2("p2"), kP3("p3"), kP9("p9");

std::size_t linesWithText(const Quarn::CaptureTraceSink& traces, const std::string& text) {
  std::size_t n = 0;
  for (const auto& line : traces.lines()) n += line.text == text;
  return n;
}

// Sets DISABLE_LEAVE_ALL_RANDOMIZATION for its lifetime, so that the
// LeaveAll period of a port is the same at every draw.
class FixedLeaveAllPeriod {
 public:
  FixedLeaveAllPeriod() {
    if (const char* value = std::getenv(kName)) saved_ = value;
    setenv(kName, "1", 1);
  }
  ~FixedLeaveAllPeriod() { saved_ ? setenv(kName, saved_->c_str(), 1) : unsetenv(kName); }
  FixedLeaveAllPeriod(const FixedLeaveAllPeriod&) = delete;
  FixedLeaveAllPeriod& operator=(const FixedLeaveAllPeriod&) = delete;

 private:
  static constexpr const char* kName = "DISABLE_LEAVE_ALL_RANDOMIZATION";
  std::optional<std::string> saved_;
};

// An MSRP engine with ports p1, p2 and p3 facing the test.
class MrpSendAttributeTest : public EngineScenario {
 protected:
  MrpSendAttributeTest() {
    for (const char* port : {"p1", "p2", "p3"}) portUp(msrp, port);
  }

  // The engine's current attribute lives in its parse context.
  Mrp::MrpParseContext& context() const { return *msrp.sm().parseContext(); }
  void currentIs(const Velo::IntfId& intfId, std::uint8_t type, std::uint64_t key) const {
    context().intfIdIs(intfId);
    context().attributeTypeIs(type);
    context().attributeKeyIs(key);
  }
  void expectCurrent(const Velo::IntfId& intfId, std::uint8_t type, std::uint64_t key) const {
    EXPECT_EQ(context().intfId(), intfId);
    EXPECT_EQ(context().attributeType(), type);
    EXPECT_EQ(context().attributeKey(), key);
  }
  // Both packets of every port with a first packet open.
  void flushAll() const { msrp.sm().mrpTransmitTxAttributes(); }
  // The test's port p1 declares talker 0x10 to the engine.
  void peerDeclaresTalker(std::uint8_t event = kJoinIn) {
    Quarn::Ptr<Mrp::MrpLib> encoder = Mrp::mrpLibFactory();
    FrameBuilder frame(*encoder, MrpApplication::msrp);
    frame.message(1).talker(kTalker, event);
    inject("p1", frame.frame(kTestMac));
  }
  Quarn::Ptr<Mrp::MrpAttrDatabase> talker(const std::string& port = "p1") const {
    return msrp.attribute(port, 1, 0x10);
  }

  ScenarioEngine& msrp = engineNew("S", MrpApplication::msrp);
  Mrp::MrpLib& lib = msrp.lib();
  const Mrp::MsrpTalkerAdvertiseAttribute kTalker = talkerAdvertise(0x10, 0x00);
};

TEST_F(MrpSendAttributeTest, EmptyQueueOnlyTracesAndLeavesTheParseContext) {
  currentIs(kP9, 3, 0x55);
  lib.msrpTalkerAdvertiseTx() = kTalker;
  Quarn::CaptureTraceSink traces;
  Quarn::traceLevelsIs("MrpSm/0-9");
  lib.mrpSendAttribute({kP1, 1, kNew});
  Quarn::traceLevelsClear();
  ASSERT_EQ(traces.lines().size(), 1u);
  EXPECT_EQ(traces.lines()[0].text, "sendAttribute called");
  EXPECT_EQ(traces.lines()[0].level, 8);
  expectCurrent(kP9, 3, 0x55);
  EXPECT_FALSE(talker());
  EXPECT_TRUE(lib.mrpTxPacketContexts().empty());
}

// Every event but LeaveAll acts on the parameters' port, once per queued
// port: an agent queues exactly one port for it.
TEST_F(MrpSendAttributeTest, NewWithTwoPortsQueuedRunsTheApplicantTwiceOnTheParametersPort) {
  lib.msrpTalkerAdvertiseTx() = kTalker;
  lib.mrpOutIntfQueueEnq(kP2);
  lib.mrpOutIntfQueueEnq(kP3);
  lib.mrpSendAttribute({kP1, 1, kNew});
  EXPECT_TRUE(lib.mrpOutIntfQueue().empty());
  EXPECT_FALSE(talker("p2"));
  EXPECT_FALSE(talker("p3"));
  ASSERT_TRUE(talker());
  EXPECT_EQ(talker()->applicantState(), MrpApplicantState::qa);
  flushAll();
  EXPECT_TRUE(takeFrames("p2").empty());
  EXPECT_TRUE(takeFrames("p3").empty());
  const auto frames = takeFrames("p1");
  ASSERT_EQ(frames.size(), 2u);
  const SentValue sentNew{1, 0x10, kNew, talkerAdvertiseOctets(0x10, 0x00)};
  // Each New! sends New into the first packet and into the second.
  EXPECT_EQ(frames[0].values, (std::vector<SentValue>{sentNew, sentNew}));
  EXPECT_EQ(frames[1].values, (std::vector<SentValue>{sentNew, sentNew}));
}

// The request's event, what the applicant of an attribute nobody else
// declares sends, in both packets.
struct RequestCase {
  std::uint8_t event;
  std::uint8_t sent;
};

class MrpSendAttributeRequestTest : public MrpSendAttributeTest, public ::testing::WithParamInterface<RequestCase> {};

TEST_P(MrpSendAttributeRequestTest, DeclarationDrivesTheApplicantAndStoresTheTransmitValue) {
  lib.msrpTalkerAdvertiseTx() = kTalker;
  lib.mrpOutIntfQueueEnq(kP1);
  lib.mrpSendAttribute({kP1, 1, GetParam().event});
  ASSERT_TRUE(talker());
  EXPECT_EQ(talker()->applicantState(), MrpApplicantState::qa);
  const Bytes octets = talkerAdvertiseOctets(0x10, 0x00);
  EXPECT_EQ(Bytes(talker()->attributeValues().begin(), talker()->attributeValues().begin() + 25), octets);
  flushAll();
  const auto frames = takeFrames("p1");
  ASSERT_EQ(frames.size(), 2u);
  const SentValue sent{1, 0x10, GetParam().sent, octets};
  EXPECT_EQ(frames[0].values, std::vector<SentValue>{sent});
  EXPECT_EQ(frames[1].values, std::vector<SentValue>{sent});
}

INSTANTIATE_TEST_SUITE_P(Events, MrpSendAttributeRequestTest,
                         ::testing::Values(RequestCase{0, 0},    // New: New
                                           RequestCase{1, 3},    // JoinIn: Join!, JoinMt as nothing is registered
                                           RequestCase{3, 3}));  // JoinMt: Join!

TEST_F(MrpSendAttributeTest, LeaveAllGoesIntoTheFirstPacketOfEachQueuedPortUnderThePreviousType) {
  const FixedLeaveAllPeriod fixed;
  // p1's own period tells the request's writes from those of the ports' enabling.
  msrp.config().intfLeaveAllTimeIs(kP1, 42.0);
  const Quarn::Ptr<Mrp::MrpApplicationDatabase> status =
      msrp.status().applicationDatabase(MrpApplication::msrp);
  ASSERT_TRUE(status);
  std::map<Velo::IntfId, std::optional<Quarn::Seconds>> enabled;
  for (const Velo::IntfId& port : {kP2, kP3}) enabled[port] = status->leaveAllTime({port, 1});
  currentIs(kP1, 3, 0x77);
  lib.mrpOutIntfQueueEnq(kP1);
  lib.mrpOutIntfQueueEnq(kP2);
  lib.mrpOutIntfQueueEnq(kP3);
  Quarn::CaptureTraceSink traces;
  Quarn::traceLevelsIs("MrpSm/7");
  lib.mrpSendAttribute({kP1, 1, kLeaveAll});
  Quarn::traceLevelsClear();

  expectCurrent(kP1, 3, 0x77);
  EXPECT_TRUE(lib.mrpOutIntfQueue().empty());
  const Quarn::Seconds period = Mrp::getLeaveAllTime(msrp.sm(), kP1);
  ASSERT_EQ(period, 42.0);
  for (const Velo::IntfId& port : {kP1, kP2, kP3}) {
    SCOPED_TRACE(port.name());
    EXPECT_TRUE(traces.contains("mrpSendAttribute: lvAllEvent_. intfId = " + port.name() + " attrType = 1"));
    EXPECT_TRUE(lib.mrpTxPacketContext(port));
    EXPECT_FALSE(lib.mrpTxSecondPacketContext(port));
    // Under the type the context held before the call, not the request's.
    EXPECT_EQ(status->leaveAllTime({port, 3}), std::optional<Quarn::Seconds>(period));
  }
  for (const Velo::IntfId& port : {kP2, kP3}) {
    ASSERT_TRUE(enabled[port]);
    EXPECT_EQ(status->leaveAllTime({port, 1}), enabled[port]) << port << ": the request's own type is left alone";
  }
  flushAll();
  for (const char* port : {"p1", "p2", "p3"}) {
    const auto frames = takeFrames(port);
    ASSERT_EQ(frames.size(), 1u) << port;
    EXPECT_EQ(frames[0].leaveAll, std::set<std::uint8_t>{1}) << port;
    EXPECT_TRUE(frames[0].values.empty()) << port;
  }
}

class MrpSendAttributeUnhandledTest : public MrpSendAttributeTest,
                                      public ::testing::WithParamInterface<std::uint8_t> {};

TEST_P(MrpSendAttributeUnhandledTest, EventIsTracedForEachQueuedPortAndThePortsAreStillDequeued) {
  const std::uint8_t event = GetParam();
  currentIs(kP9, 4, 0x66);
  lib.msrpTalkerAdvertiseTx() = kTalker;
  lib.mrpOutIntfQueueEnq(kP1);
  lib.mrpOutIntfQueueEnq(kP2);
  Quarn::CaptureTraceSink traces;
  Quarn::traceLevelsIs("MrpSm/4");
  lib.mrpSendAttribute({kP1, 1, event});
  Quarn::traceLevelsClear();
  const std::string expected = std::string("Event = ") + static_cast<char>(event) + " not handled in sendAttributeIntf ";
  EXPECT_EQ(linesWithText(traces, expected), 2u);
  for (const auto& line : traces.lines()) EXPECT_EQ(line.level, 4);
  EXPECT_TRUE(lib.mrpOutIntfQueue().empty());
  EXPECT_FALSE(talker());
  EXPECT_TRUE(lib.mrpTxPacketContexts().empty());
  expectCurrent(kP9, 4, 0x66);
}

INSTANTIATE_TEST_SUITE_P(Events, MrpSendAttributeUnhandledTest, ::testing::Values(2, 4, 8, 0xFF));

TEST_F(MrpSendAttributeTest, WithdrawingAnUnregisteredDeclarationSendsLvAndDeletesIt) {
  declare(msrp, "p1", kTalker, kJoinIn);
  advance(0.1);
  takeFrames("p1");
  withdraw(msrp, "p1", kTalker);
  EXPECT_FALSE(talker()) << "VO and MT: nothing left to keep";
  flushAll();
  const auto frames = takeFrames("p1");
  ASSERT_EQ(frames.size(), 1u);
  EXPECT_EQ(frames[0].values, (std::vector<SentValue>{{1, 0x10, kLv, talkerAdvertiseOctets(0x10, 0x00)}}));
}

TEST_F(MrpSendAttributeTest, WithdrawingARegisteredDeclarationSendsLvAndKeepsTheRegistration) {
  peerDeclaresTalker();
  declare(msrp, "p1", kTalker, kJoinIn);
  advance(0.1);
  takeFrames("p1");
  withdraw(msrp, "p1", kTalker);
  ASSERT_TRUE(talker());
  EXPECT_EQ(talker()->applicantState(), MrpApplicantState::vo);
  EXPECT_EQ(talker()->registrarState(), MrpRegistrarState::in);
  flushAll();
  const auto frames = takeFrames("p1");
  ASSERT_EQ(frames.size(), 1u);
  EXPECT_EQ(frames[0].values, (std::vector<SentValue>{{1, 0x10, kLv, talkerAdvertiseOctets(0x10, 0x00)}}));
}

// Stored states of the current attribute and whether it goes.
struct RestingCase {
  MrpApplicantState applicant;
  MrpRegistrarState registrar;
  bool deleted;
};

class MrpDeleteAttrOnDefaultStatesTest : public MrpSendAttributeTest,
                                         public ::testing::WithParamInterface<RestingCase> {};

TEST_P(MrpDeleteAttrOnDefaultStatesTest, DeletesOnlyAnAttributeWhoseMachinesBothRest) {
  const RestingCase& c = GetParam();
  declare(msrp, "p1", kTalker, kJoinIn);
  advance(2);
  ASSERT_TRUE(talker());
  talker()->applicantStateIs(c.applicant);
  talker()->registrarStateIs(c.registrar);
  msrp.sm().registrarSm()->explicitLeaveSmIs({kP1, 1, 0x10})->leavePendingIs(0x10, true);
  currentIs(kP1, 1, 0x10);
  Quarn::CaptureTraceSink traces;
  Quarn::traceLevelsIs("MrpSm/6");
  lib.mrpDeleteAttrOnDefaultStates();
  Quarn::traceLevelsClear();
  std::ostringstream state;
  state << c.registrar;
  EXPECT_TRUE(traces.contains(" mrpDeleteAttrOnDefaultStates called. reg state= " + state.str()));
  EXPECT_EQ(!talker(), c.deleted);
  const Mrp::MrpExplicitLeaveSm* leave = msrp.sm().registrarSm()->explicitLeaveSm({kP1, 1, 0x10});
  ASSERT_TRUE(leave);
  EXPECT_EQ(leave->leavePending(0x10), !c.deleted) << "a deleted attribute leaves the leave-pending set";
}

INSTANTIATE_TEST_SUITE_P(States, MrpDeleteAttrOnDefaultStatesTest,
                         ::testing::Values(RestingCase{MrpApplicantState::vo, MrpRegistrarState::mt, true},
                                           RestingCase{MrpApplicantState::vo, MrpRegistrarState::in, false},
                                           RestingCase{MrpApplicantState::vo, MrpRegistrarState::lv, false},
                                           RestingCase{MrpApplicantState::qa, MrpRegistrarState::mt, false},
                                           RestingCase{MrpApplicantState::ao, MrpRegistrarState::mt, false}));

TEST_F(MrpSendAttributeTest, InternalLeaveDropsTheAttributeWithoutAWordOrAnIndication) {
  peerDeclaresTalker();
  declare(msrp, "p1", kTalker, kJoinIn);
  peerDeclaresTalker(kLv);
  advance(0.1);
  takeFrames("p1");
  takeJoins(msrp);
  ASSERT_EQ(talker()->registrarState(), MrpRegistrarState::lv);
  ASSERT_TRUE(msrp.sm().registrarSm()->explicitLeaveSm({kP1, 1, 0x10})->leavePending(0x10));
  currentIs(kP9, 2, 0x99);
  Quarn::CaptureTraceSink traces;
  Quarn::traceLevelsIs("MrpSm/8");
  request(msrp, "p1", kTalker, Mrp::MrpParameters::kInternalLeaveEvent);
  Quarn::traceLevelsClear();

  std::ostringstream listener;
  listener << Mrp::MsrpAttrType::listenerVector;
  // The last field names the Listener type, not a stream id.
  EXPECT_TRUE(traces.contains(" Type = \x01 Adv streamId = 10 Failed streamId = 0 Listener Stream Id = " +
                              listener.str()));
  EXPECT_FALSE(talker());
  const Mrp::MrpExplicitLeaveSm* leave = msrp.sm().registrarSm()->explicitLeaveSm({kP1, 1, 0x10});
  EXPECT_FALSE(leave && leave->leavePending(0x10));
  expectCurrent(kP9, 2, 0x99);
  EXPECT_TRUE(lib.mrpTxPacketContexts().empty());
  EXPECT_TRUE(lib.mrpTxSecondPacketContexts().empty());
  advance(1);
  EXPECT_TRUE(takeFrames("p1").empty());
  EXPECT_TRUE(takeLeaves(msrp).empty());
}

}  // namespace
}  // namespace MrpTest
