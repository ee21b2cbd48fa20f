#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "support/EngineScenario.h"
#include "support/CurrentAttribute.h"
#include "support/FrameBuilder.h"
#include "support/MrpSmParsePeer.h"
#include "support/TxSend.h"

namespace MrpTest {
namespace {

using Mrp::MrpApplicantState;
using Mrp::MrpApplication;
using Mrp::MrpRegistrarState;
using Mrp::MsrpDomainAttribute;
using Mrp::MvrpVlanAttribute;

const Velo::IntfId kV1("v1");
const Velo::IntfId kP1("p1");

// JoinIn for VLANs 10, 20 and 30, one vector each.
const Bytes kJoinInVlans10To30 = {
    0x00,                    // ProtocolVersion
    0x01, 0x02,              // VLAN identifier, AttributeLength 2
    0x00, 0x01, 0x00, 0x0A,  // 1 value from VLAN 10
    0x24,                    // JoinIn
    0x00, 0x01, 0x00, 0x14,  // 1 value from VLAN 20
    0x24,                    // JoinIn
    0x00, 0x01, 0x00, 0x1E,  // 1 value from VLAN 30
    0x24,                    // JoinIn
    0x00, 0x00,              // EndMark of the list
    0x00, 0x00,              // EndMark of the MRPDU
};

// LeaveAll for VLANs, riding on a JoinIn for VLAN 10.
const Bytes kLeaveAllWithJoinInVlan10 = {
    0x00,                    // ProtocolVersion
    0x01, 0x02,              // VLAN identifier, AttributeLength 2
    0x20, 0x01, 0x00, 0x0A,  // LeaveAll, 1 value from VLAN 10
    0x24,                    // JoinIn
    0x00, 0x00,              // EndMark of the list
    0x00, 0x00,              // EndMark of the MRPDU
};

// LeaveAll for VLANs, no values.
const Bytes kLeaveAllVlans = {
    0x00,                    // ProtocolVersion
    0x01, 0x02,              // VLAN identifier, AttributeLength 2
    0x20, 0x00, 0x00, 0x00,  // LeaveAll, no values, FirstValue 0
    0x00, 0x00,              // EndMark of the list
    0x00, 0x00,              // EndMark of the MRPDU
};

std::vector<std::uint64_t> keysOf(const std::vector<Mrp::MrpParameters>& indications) {
  std::vector<std::uint64_t> keys;
  for (const auto& p : indications) keys.push_back(p.attributeKey);
  return keys;
}

// Every counter by name.
std::map<std::string, std::uint64_t> countersOf(const Mrp::MrpCounters& counters) {
  std::map<std::string, std::uint64_t> values;
#define MRP_TEST_COUNTER_VALUE(counter) values[#counter] = counters.counter();
  MRP_COUNTERS(MRP_TEST_COUNTER_VALUE)
#undef MRP_TEST_COUNTER_VALUE
  return values;
}

class MrpSmDispatchTest : public EngineScenario {
 protected:
  MrpSmDispatchTest() { portUp(mvrp, "v1"); }

  Quarn::Ptr<Mrp::MrpAttrDatabase> vlan(std::uint64_t key) const { return mvrp.attribute("v1", 1, key); }

  ScenarioEngine& mvrp = engineNew("V", MrpApplication::mvrp);
};

TEST_F(MrpSmDispatchTest, LeaveAllWithAJoinInKeepsThatVlanAndMovesTheOthersToLeaving) {
  inject("v1", frameOf(mvrp, kJoinInVlans10To30));
  declare(mvrp, "v1", MvrpVlanAttribute(10), kJoinIn);
  declare(mvrp, "v1", MvrpVlanAttribute(30), kJoinIn);
  advance(0.1);
  takeFrames("v1");
  ASSERT_EQ(vlan(10)->applicantState(), MrpApplicantState::qa);
  ASSERT_EQ(vlan(20)->applicantState(), MrpApplicantState::ao);
  ASSERT_EQ(vlan(30)->applicantState(), MrpApplicantState::qa);
  for (std::uint64_t key : {10, 20, 30}) ASSERT_EQ(vlan(key)->registrarState(), MrpRegistrarState::in);

  inject("v1", frameOf(mvrp, kLeaveAllWithJoinInVlan10));

  const auto frames = takeFrames("v1");
  ASSERT_EQ(frames.size(), 2u) << "the answers to the LeaveAll, sent at once";
  // VLAN 10 is declared by the frame, so its Join is JoinIn; VLAN 30 is
  // declared by the port only, so its Join is JoinMt; VLAN 20, declared by
  // nobody, answers with its registered state as the frame leaves it: Mt.
  EXPECT_EQ(frames[0].values, (std::vector<SentValue>{{1, 10, kJoinIn, {0x00, 0x0A}},
                                                      {1, 20, kMt, {0x00, 0x14}},
                                                      {1, 30, kJoinMt, {0x00, 0x1E}}}));
  EXPECT_EQ(frames[1].values, (std::vector<SentValue>{{1, 10, kJoinIn, {0x00, 0x0A}},
                                                      {1, 30, kJoinMt, {0x00, 0x1E}}}));
  EXPECT_EQ(vlan(10)->registrarState(), MrpRegistrarState::in) << "the frame's JoinIn brought it back";
  EXPECT_EQ(vlan(20)->registrarState(), MrpRegistrarState::lv);
  EXPECT_EQ(vlan(30)->registrarState(), MrpRegistrarState::lv);
  const Quarn::Ptr<Mrp::MrpLeaveSm> leaving = mvrp.sm().registrarSm()->leaveSm({kV1, 1, 0});
  ASSERT_TRUE(leaving);
  EXPECT_FALSE(leaving->leavePending(10)) << "its leave was cancelled";
  EXPECT_TRUE(leaving->leavePending(20));
  EXPECT_TRUE(leaving->leavePending(30));
  EXPECT_EQ(takeJoins(mvrp).size(), 3u) << "only the first frame's three registrations";

  advance(0.7);
  EXPECT_EQ(keysOf(takeLeaves(mvrp)), (std::vector<std::uint64_t>{20, 30}));
  EXPECT_EQ(vlan(10)->registrarState(), MrpRegistrarState::in);
}

// LeaveAll for VLANs, riding on a JoinMt for VLAN 10.
const Bytes kLeaveAllWithJoinMtVlan10 = {
    0x00,                    // ProtocolVersion
    0x01, 0x02,              // VLAN identifier, AttributeLength 2
    0x20, 0x01, 0x00, 0x0A,  // LeaveAll, 1 value from VLAN 10
    0x6C,                    // JoinMt
    0x00, 0x00,              // EndMark of the list
    0x00, 0x00,              // EndMark of the MRPDU
};

// The Joins that answer the LeaveAll leave in packets of their own; the
// Join that answers the frame's JoinMt starts a new first packet instead of
// joining theirs.
TEST_F(MrpSmDispatchTest, AnswersToALeaveAllAreSentBeforeTheFramesDeclarationsAreApplied) {
  inject("v1", frameOf(mvrp, kJoinInVlans10To30));
  declare(mvrp, "v1", MvrpVlanAttribute(10), kJoinIn);
  advance(0.1);
  takeFrames("v1");
  // Only VLAN 10 is of interest: 20 and 30 are no longer registered.
  mvrp.lib().mrpCleanUpIntfDatabaseAttribute(kV1, 1, 20);
  mvrp.lib().mrpCleanUpIntfDatabaseAttribute(kV1, 1, 30);
  advance(2);
  takeFrames("v1");
  ASSERT_FALSE(vlan(20));
  ASSERT_EQ(vlan(10)->applicantState(), MrpApplicantState::qa);

  inject("v1", frameOf(mvrp, kLeaveAllWithJoinMtVlan10));

  const auto frames = takeFrames("v1");
  const SentValue joinIn{1, 10, kJoinIn, {0x00, 0x0A}};
  ASSERT_EQ(frames.size(), 3u);
  EXPECT_EQ(frames[0].values, std::vector<SentValue>{joinIn}) << "the LeaveAll's answer, first packet";
  EXPECT_EQ(frames[1].values, std::vector<SentValue>{joinIn}) << "the LeaveAll's answer, second packet";
  // The applicant runs before the registrar, which the LeaveAll left in LV.
  EXPECT_EQ(frames[2].values, (std::vector<SentValue>{{1, 10, kJoinMt, {0x00, 0x0A}}})) << "the answer to the JoinMt";
}

// A registration the port declares (applicant QA) whose registrar is MT or
// LV, and a frame with a LeaveAll and a JoinIn for it: the applicant answers
// the LeaveAll as if the JoinIn had registered it already, while the
// registrar handles the LeaveAll from its stored state.
struct LookAheadRow {
  bool collectedByRuns;
  MrpRegistrarState stored;
  // Restored before the registrar's turn, MT indicates the frame's JoinIn.
  std::size_t joinsIndicated;
};

TEST_F(MrpSmDispatchTest, LeaveAllIsAnsweredWithJoinInForAnMtOrLvRegistrationTheSameFrameDeclares) {
  // clang-format off
  const LookAheadRow rows[] = {
    // Runs   Stored registrar        Joins indicated
    {true,  MrpRegistrarState::mt,  1},
    {false, MrpRegistrarState::mt,  1},
    {true,  MrpRegistrarState::lv,  0},
    {false, MrpRegistrarState::lv,  0},
  };
  // clang-format on
  int engines = 0;
  for (const LookAheadRow& row : rows) {
    SCOPED_TRACE(::testing::Message() << (row.collectedByRuns ? "runs" : "value by value") << ", stored "
                                      << row.stored);
    // Appended, not "l" + ...: GCC 12 at -O3 misreads that as an overlapping copy.
    const std::string number = std::to_string(engines++);
    const std::string port = std::string("l").append(number);
    ScenarioEngine& engine = engineNew(std::string("L").append(number), MrpApplication::mvrp);
    portUp(engine, port);
    Mrp::MrpSmParsePeer::parsedRunsEnabledIs(engine.sm(), row.collectedByRuns);
    engine.lib().mvrpVlanVectorTx() = MvrpVlanAttribute(10);
    const Quarn::Ptr<Mrp::MrpAttrDatabase> entry =
        currentAttributeIs(engine.sm(), {Velo::IntfId(port), 1, 10}, MrpApplicantState::qa, row.stored);
    inject(port, frameOf(engine, kLeaveAllWithJoinInVlan10));

    const auto frames = takeFrames(port);
    // Without the look-ahead a registrar MT or LV makes the Join a JoinMt.
    const SentValue joinIn{1, 10, kJoinIn, {0x00, 0x0A}};
    ASSERT_EQ(frames.size(), 2u) << "the answers to the LeaveAll, in both packets";
    EXPECT_EQ(frames[0].values, std::vector<SentValue>{joinIn});
    EXPECT_EQ(frames[1].values, std::vector<SentValue>{joinIn});
    EXPECT_EQ(entry->registrarState(), MrpRegistrarState::in) << "the frame's JoinIn registered it";
    EXPECT_EQ(takeJoins(engine).size(), row.joinsIndicated);
    EXPECT_EQ(engine.counters().numOfJoinIndications(), row.joinsIndicated);
  }
}

TEST_F(MrpSmDispatchTest, LeaveAllDropsAnIndexedAttributeThatHasNoDatabaseEntry) {
  inject("v1", frameOf(mvrp, kJoinInVlans10To30));
  advance(2);
  mvrp.sm().addToAttrIter(kV1, 1, 99);
  ASSERT_TRUE(mvrp.sm().attributeStore().mrpAttrIter({kV1, 1})->attributeKey(99));

  inject("v1", frameOf(mvrp, kLeaveAllVlans));

  const Quarn::Ptr<Mrp::MrpAttrIter> index = mvrp.sm().attributeStore().mrpAttrIter({kV1, 1});
  ASSERT_TRUE(index);
  EXPECT_EQ(std::vector<std::uint64_t>(index->attributeKeys().begin(), index->attributeKeys().end()),
            (std::vector<std::uint64_t>{10, 20, 30}));
  EXPECT_FALSE(vlan(99)) << "no entry is made for it";
  for (std::uint64_t key : {10, 20, 30}) EXPECT_EQ(vlan(key)->registrarState(), MrpRegistrarState::lv);
}

// A Talker Advertise and a Domain, in either order in the frame.
class MrpSmDispatchOrderTest : public EngineScenario, public ::testing::WithParamInterface<bool> {
 protected:
  MrpSmDispatchOrderTest() { portUp(msrp, "p1"); }
  ScenarioEngine& msrp = engineNew("S", MrpApplication::msrp);
};

TEST_P(MrpSmDispatchOrderTest, DomainDeclarationsApplyBeforeTalkerDeclarationsWhateverTheirOrderInTheFrame) {
  const bool talkerFirst = GetParam();
  Quarn::Ptr<Mrp::MrpLib> encoder = Mrp::mrpLibFactory();
  FrameBuilder frame(*encoder, MrpApplication::msrp);
  if (talkerFirst) frame.message(1).talker(talkerAdvertise(0x10, 0x00), kJoinIn);
  frame.message(4).domain(MsrpDomainAttribute(6, 3, 2), kJoinIn);
  if (!talkerFirst) frame.message(1).talker(talkerAdvertise(0x10, 0x00), kJoinIn);

  inject("p1", frame.frame(kTestMac));

  const auto joins = takeJoins(msrp);
  ASSERT_EQ(joins.size(), 2u);
  EXPECT_EQ(joins[0].attributeType, 4) << "the Domain first";
  EXPECT_EQ(joins[1].attributeType, 1);
}

INSTANTIATE_TEST_SUITE_P(FrameOrders, MrpSmDispatchOrderTest, ::testing::Values(true, false),
                         [](const auto& info) { return info.param ? "TalkerFirst" : "DomainFirst"; });

class MrpSmDispatchMsrpTest : public EngineScenario {
 protected:
  MrpSmDispatchMsrpTest() { portUp(msrp, "p1"); }
  ScenarioEngine& msrp = engineNew("S", MrpApplication::msrp);
};

// The port answers a received Domain with the domain it stores, not the
// one it received.
TEST_F(MrpSmDispatchMsrpTest, ReceivedDomainIsAnsweredWithTheStoredDomain) {
  declare(msrp, "p1", MsrpDomainAttribute(6, 3, 2), kNew);
  advance(0.1);
  takeFrames("p1");
  Quarn::Ptr<Mrp::MrpLib> encoder = Mrp::mrpLibFactory();
  FrameBuilder frame(*encoder, MrpApplication::msrp);
  frame.message(4).domain(MsrpDomainAttribute(6, 3, 5), kJoinMt);

  inject("p1", frame.frame(kTestMac));

  EXPECT_EQ(msrp.lib().msrpDomainVectorRx(), MsrpDomainAttribute(6, 3, 5));
  EXPECT_EQ(msrp.lib().msrpDomainVectorTx(), MsrpDomainAttribute(6, 3, 2));
  const auto frames = takeFrames("p1");
  ASSERT_EQ(frames.size(), 1u) << "QA answers a JoinMt with one Join";
  ASSERT_EQ(frames[0].values.size(), 1u);
  EXPECT_EQ(frames[0].values[0].value, (Bytes{0x06, 0x03, 0x00, 0x02}));
}

// LeaveAll for Listeners, no values.
const Bytes kLeaveAllListeners = {
    0x00,                    // ProtocolVersion
    0x03, 0x08, 0x00, 0x0C,  // Listener, AttributeLength 8, list length 10 + 2
    0x20, 0x00,              // LeaveAll, no values
    0x00, 0x00, 0x00, 0x00,  // FirstValue: StreamID 0
    0x00, 0x00, 0x00, 0x00,  //
    0x00, 0x00,              // EndMark of the list
    0x00, 0x00,              // EndMark of the MRPDU
};

TEST_F(MrpSmDispatchMsrpTest, LeaveAllOfATypeWithoutRegistrationsChangesNothingElse) {
  Quarn::Ptr<Mrp::MrpLib> encoder = Mrp::mrpLibFactory();
  FrameBuilder talker(*encoder, MrpApplication::msrp);
  talker.message(1).talker(talkerAdvertise(0x10, 0x00), kJoinIn);
  inject("p1", talker.frame(kTestMac));
  advance(2);
  takeFrames("p1");
  takeJoins(msrp);
  const std::map<std::string, std::uint64_t> before = countersOf(msrp.counters());
  const Quarn::Ptr<Mrp::MrpAttrDatabase> registered = msrp.attribute("p1", 1, 0x10);
  ASSERT_TRUE(registered);
  const MrpApplicantState applicant = registered->applicantState();
  const MrpRegistrarState registrar = registered->registrarState();

  inject("p1", frameOf(msrp, kLeaveAllListeners));
  advance(1);

  EXPECT_TRUE(takeFrames("p1").empty());
  EXPECT_TRUE(takeJoins(msrp).empty());
  EXPECT_TRUE(takeLeaves(msrp).empty());
  EXPECT_TRUE(msrp.sm().receivedFrame().mrpRxLeaveAll().empty());
  EXPECT_FALSE(msrp.sm().attributeStore().mrpAttrIter({kP1, 3})) << "no index is made for the type";
  EXPECT_TRUE(msrp.sm().registrarSm()->leaveSms().empty());
  EXPECT_TRUE(msrp.sm().registrarSm()->explicitLeaveSms().empty());
  EXPECT_EQ(msrp.attribute("p1", 1, 0x10), registered);
  EXPECT_EQ(registered->applicantState(), applicant);
  EXPECT_EQ(registered->registrarState(), registrar);
  std::map<std::string, std::uint64_t> expected = before;
  ++expected["numOfPktsProcessed"];
  EXPECT_EQ(countersOf(msrp.counters()), expected);
}

}  // namespace
}  // namespace MrpTest
