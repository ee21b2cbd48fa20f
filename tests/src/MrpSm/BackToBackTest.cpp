#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "MrpModel/MrpValueBytes.h"
#include "support/EngineScenario.h"

namespace MrpTest {
namespace {

using Mrp::MrpApplication;
using Mrp::MrpRegistrarState;
using Mrp::MsrpDomainAttribute;
using Mrp::MsrpListenerAttribute;
using Mrp::MsrpListenerEvent;
using Mrp::MsrpTalkerAdvertiseAttribute;
using Mrp::MsrpTalkerFailedAttribute;
using Mrp::MvrpVlanAttribute;

constexpr std::uint8_t kVlanType = 1;
constexpr std::uint8_t kTalkerAdvertiseType = 1, kTalkerFailedType = 2, kListenerType = 3, kDomainType = 4;

// The registrar's transmit cycle.
constexpr Quarn::Seconds kTransmitCycle = 0.1;
// Far below the timer wheel's 0.1 s tick, so a timer cannot fire inside it.
constexpr Quarn::Seconds kMargin = 0.001;

// When the first frame in `frames` that carries `value` was sent; frames
// arrive at the other end of a wire at the instant they are sent.
std::optional<Quarn::Seconds> sentAt(const std::vector<SentFrame>& frames, const SentValue& value) {
  for (const SentFrame& frame : frames) {
    for (const SentValue& sent : frame.values) {
      if (sent == value) return frame.time;
    }
  }
  return std::nullopt;
}

// (attribute type, key) of attributes.
using Attributes = std::vector<std::pair<std::uint8_t, std::uint64_t>>;

// The attribute of each indication, in order.
Attributes attributesOf(const std::vector<Mrp::MrpParameters>& indications) {
  Attributes out;
  for (const Mrp::MrpParameters& p : indications) out.emplace_back(p.attributeType, p.attributeKey);
  return out;
}

// The attribute of each value of a frame, in frame order.
Attributes attributesOf(const SentFrame& frame) {
  Attributes out;
  for (const SentValue& v : frame.values) out.emplace_back(v.attributeType, v.attributeKey);
  return out;
}

// The value `engine` stores for the attribute, read as a record of its type.
template <class Value>
std::optional<Value> storedValue(const ScenarioEngine& engine, const std::string& port, std::uint64_t key) {
  const Quarn::Ptr<Mrp::MrpAttrDatabase> entry = engine.attribute(port, TxSlot<Value>::kType, key);
  if (!entry) return std::nullopt;
  return Mrp::valueFromBytes<Value>(entry->attributeValues());
}

std::optional<MrpRegistrarState> registrarState(const ScenarioEngine& engine, const std::string& port,
                                                std::uint8_t type, std::uint64_t key) {
  const Quarn::Ptr<Mrp::MrpAttrDatabase> entry = engine.attribute(port, type, key);
  if (!entry) return std::nullopt;
  return entry->registrarState();
}

// ---- MVRP: two engines, a1 of A wired to b1 of B.

class BackToBackTest : public EngineScenario {
 protected:
  BackToBackTest() { link(a, "a1", b, "b1"); }

  // Runs the clock to `time`.
  void advanceTo(Quarn::Seconds time) { advance(time - now()); }

  ScenarioEngine& a = engineNew("A", MrpApplication::mvrp);
  ScenarioEngine& b = engineNew("B", MrpApplication::mvrp);
};

// Where in its transmit cycle A declares: on a tick, just after one, half
// way, just before the next one.
class BackToBackDeclarationPhaseTest : public BackToBackTest, public ::testing::WithParamInterface<Quarn::Seconds> {};

TEST_P(BackToBackDeclarationPhaseTest, DeclaredVlanIsRegisteredWithinOneTransmitCycle) {
  advance(1 + GetParam());
  const Quarn::Seconds declared = now();
  declare(a, "a1", MvrpVlanAttribute(10), kNew);
  advance(0);
  // The packets wait for the transmit timer: nothing has left A yet.
  EXPECT_TRUE(takeJoins(b).empty());
  advanceTo(declared + kTransmitCycle);

  // New goes into A's first and second packet; both are sent on the same
  // tick, and B indicates each (MT -> IN, then IN on a New again).
  const std::vector<SentFrame> frames = takeFrames("a1");
  ASSERT_EQ(frames.size(), 2u);
  for (const SentFrame& frame : frames) {
    EXPECT_EQ(frame.values, (std::vector<SentValue>{{kVlanType, 10, kNew, {0x00, 0x0a}}}));
    EXPECT_GT(frame.time, declared);
    EXPECT_LE(frame.time, declared + kTransmitCycle);
  }
  const std::vector<Mrp::MrpParameters> joins = takeJoins(b);
  EXPECT_EQ(attributesOf(joins), (Attributes{{kVlanType, 10}, {kVlanType, 10}}));
  for (const Mrp::MrpParameters& join : joins) EXPECT_EQ(join.intfId, Velo::IntfId("b1"));
  EXPECT_EQ(b.counters().numOfJoinIndications(), 2u);
  EXPECT_EQ(registrarState(b, "b1", kVlanType, 10), MrpRegistrarState::in);
}

INSTANTIATE_TEST_SUITE_P(Phases, BackToBackDeclarationPhaseTest, ::testing::Values(0.0, 0.001, 0.05, 0.099));

// Which leave time B's port b1 runs: B's configured leave time, and the
// port's own (none when the port has no entry).
struct LeaveTimeCase {
  std::string name;
  Quarn::Seconds leaveTime;
  std::optional<std::pair<std::string, Quarn::Seconds>> intfLeaveTime;
  Quarn::Seconds expected;
};
void PrintTo(const LeaveTimeCase& c, std::ostream* os) { *os << c.name; }

class BackToBackLeaveTimeTest : public BackToBackTest, public ::testing::WithParamInterface<LeaveTimeCase> {};

TEST_P(BackToBackLeaveTimeTest, WithdrawnVlanLeavesOneLeaveTimeAfterTheLeaveArrivesAndNotBefore) {
  const LeaveTimeCase& c = GetParam();
  b.config().leaveTimeIs(c.leaveTime);
  if (c.intfLeaveTime) b.config().intfLeaveTimeIs(Velo::IntfId(c.intfLeaveTime->first), c.intfLeaveTime->second);
  declare(a, "a1", MvrpVlanAttribute(10), kNew);
  advance(1);
  ASSERT_EQ(registrarState(b, "b1", kVlanType, 10), MrpRegistrarState::in);
  takeFrames("a1");

  withdraw(a, "a1", MvrpVlanAttribute(10));
  advance(kTransmitCycle);
  const std::optional<Quarn::Seconds> leaveArrived = sentAt(takeFrames("a1"), {kVlanType, 10, kLv, {0x00, 0x0a}});
  ASSERT_TRUE(leaveArrived) << "A sent no Lv for VLAN 10";

  advanceTo(*leaveArrived + c.expected - kMargin);
  EXPECT_TRUE(takeLeaves(b).empty()) << "left before its leave time";
  EXPECT_EQ(registrarState(b, "b1", kVlanType, 10), MrpRegistrarState::lv);

  advanceTo(*leaveArrived + c.expected + kMargin);
  const std::vector<Mrp::MrpParameters> leaves = takeLeaves(b);
  ASSERT_EQ(leaves.size(), 1u) << "no leave at its leave time";
  EXPECT_EQ(leaves[0].intfId, Velo::IntfId("b1"));
  EXPECT_EQ(leaves[0].attributeType, kVlanType);
  EXPECT_EQ(leaves[0].attributeKey, 10u);
  EXPECT_EQ(b.counters().numOfLeaveIndications(), 1u);
  // B's applicant only observed VLAN 10, so the registration is gone.
  EXPECT_EQ(registrarState(b, "b1", kVlanType, 10), std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(
    LeaveTimes, BackToBackLeaveTimeTest,
    ::testing::Values(LeaveTimeCase{"ConfiguredLeaveTime", 0.6, std::nullopt, 0.6},
                      LeaveTimeCase{"LongerConfiguredLeaveTime", 1.3, std::nullopt, 1.3},
                      LeaveTimeCase{"PortLeaveTimeOverridesConfigured", 0.6, std::pair{"b1", 1.5}, 1.5},
                      LeaveTimeCase{"ShorterPortLeaveTime", 0.9, std::pair{"b1", 0.3}, 0.3},
                      LeaveTimeCase{"PortLeaveTimeZeroUsesConfigured", 0.8, std::pair{"b1", 0.0}, 0.8},
                      LeaveTimeCase{"OtherPortsLeaveTimeDoesNotApply", 0.6, std::pair{"b2", 2.0}, 0.6}),
    [](const ::testing::TestParamInfo<LeaveTimeCase>& info) { return info.param.name; });

TEST_F(BackToBackTest, AllVlansDeclaredWithJoinAreRegisteredFromTwoFrames) {
  constexpr std::uint16_t kAllVlans = 4094;
  for (std::uint16_t vlan = 1; vlan <= kAllVlans; ++vlan) declare(a, "a1", MvrpVlanAttribute(vlan), kJoinIn);
  advance(kTransmitCycle);

  // Consecutive VLANs extend one vector: 2 octets of VectorHeader, 2 of
  // FirstValue and ceil(4094 / 3) = 1365 of three-packed events, behind the
  // message's 2 octets of type and length: 1371 packed octets. With the
  // 64 octets of head-room that is 1435, under the 1500-byte bound, so the
  // first packet never fills and holds all 4094 Joins; the applicant sends
  // each Join a second time into the second packet, which holds them all
  // again. The transmit timer sends the first packet, then the second: two
  // frames of 14 (Ethernet) + 1 (ProtocolVersion) + 1371 + 2 (the list's
  // EndMark) + 2 (the PDU's EndMark) = 1390 octets. A's registrar is MT for
  // every VLAN, so each Join is a JoinMt.
  const std::vector<SentFrame> frames = takeFrames("a1");
  ASSERT_EQ(frames.size(), 2u);
  for (const SentFrame& frame : frames) {
    EXPECT_EQ(frame.bytes.size(), 1390u);
    ASSERT_EQ(frame.values.size(), kAllVlans);
    for (std::uint16_t vlan = 1; vlan <= kAllVlans; ++vlan) {
      const SentValue expected{
          kVlanType, vlan, kJoinMt, {static_cast<std::uint8_t>(vlan >> 8), static_cast<std::uint8_t>(vlan)}};
      if (frame.values[vlan - 1] != expected) {
        ADD_FAILURE() << "value " << vlan << " is " << frame.values[vlan - 1] << ", not " << expected;
        break;
      }
    }
  }

  // The first frame registers each VLAN once; the second repeats unchanged
  // values, which B counts without indicating them again.
  const std::vector<Mrp::MrpParameters> joins = takeJoins(b);
  ASSERT_EQ(joins.size(), kAllVlans);
  for (std::uint16_t vlan = 1; vlan <= kAllVlans; ++vlan) {
    ASSERT_EQ(joins[vlan - 1].attributeKey, vlan);
    ASSERT_EQ(registrarState(b, "b1", kVlanType, vlan), MrpRegistrarState::in) << "VLAN " << vlan;
  }
  EXPECT_EQ(b.counters().numOfJoinIndications(), 2u * kAllVlans);
}

// ---- MSRP: the same wiring, both engines MSRP.

class MsrpBackToBackTest : public EngineScenario {
 protected:
  MsrpBackToBackTest() { link(a, "a1", b, "b1"); }

  ScenarioEngine& a = engineNew("A", MrpApplication::msrp);
  ScenarioEngine& b = engineNew("B", MrpApplication::msrp);
};

MsrpTalkerAdvertiseAttribute talkerAdvertise(std::uint64_t streamId, std::uint32_t accumulatedLatency) {
  return MsrpTalkerAdvertiseAttribute(streamId,
                                      Mrp::DataFrameParameters(Velo::EthAddr(0x91, 0xe0, 0xf0, 0x00, 0xfe, 0x01), 2),
                                      Mrp::Tspec(1500, 1), Mrp::PriorityAndRank(3, 1), accumulatedLatency);
}

constexpr std::uint64_t kStream = 0x0011223344550001;
const MsrpDomainAttribute kDomain(6, 3, 2);

TEST_F(MsrpBackToBackTest, DomainTalkerAdvertiseAndListenerAreRegisteredWithTheirValues) {
  const MsrpTalkerAdvertiseAttribute talker = talkerAdvertise(kStream, 0x1000);
  const MsrpListenerAttribute listener(kStream + 7, MsrpListenerEvent::ready);
  declare(a, "a1", kDomain);
  declare(a, "a1", talker);
  declare(a, "a1", listener);
  advance(kTransmitCycle);

  // The Domain opened both packets; the Talker Advertise, of a lower type,
  // sends each of them at once and opens a new one, which the Listener
  // joins. B indicates the Domain from both Domain frames (a Domain join is
  // indicated without comparing values) and the others once, since their
  // second frame repeats an unchanged value.
  const std::vector<SentFrame> frames = takeFrames("a1");
  ASSERT_EQ(frames.size(), 4u);
  EXPECT_EQ(attributesOf(frames[0]), (Attributes{{kDomainType, 6}}));
  EXPECT_EQ(attributesOf(frames[1]), (Attributes{{kDomainType, 6}}));
  EXPECT_EQ(attributesOf(frames[2]), (Attributes{{kTalkerAdvertiseType, kStream}, {kListenerType, kStream + 7}}));
  EXPECT_EQ(attributesOf(frames[3]), (Attributes{{kTalkerAdvertiseType, kStream}, {kListenerType, kStream + 7}}));
  EXPECT_EQ(attributesOf(takeJoins(b)), (Attributes{
                                            {kDomainType, 6},
                                            {kDomainType, 6},
                                            {kTalkerAdvertiseType, kStream},
                                            {kListenerType, kStream + 7},
                                        }));
  EXPECT_EQ(b.lib().msrpDomainVectorRx(), kDomain);
  EXPECT_EQ(b.lib().msrpTalkerAdvertiseRx(), talker);
  EXPECT_EQ(b.lib().msrpListenerVectorRx(), listener);
  EXPECT_EQ(storedValue<MsrpDomainAttribute>(b, "b1", 6), kDomain);
  EXPECT_EQ(storedValue<MsrpTalkerAdvertiseAttribute>(b, "b1", kStream), talker);
  EXPECT_EQ(storedValue<MsrpListenerAttribute>(b, "b1", kStream + 7)->streamId(), listener.streamId())
      << "a Listener is stored as its stream; the declaration travels in the events";
  for (const auto& [type, key] :
       Attributes{{kDomainType, 6}, {kTalkerAdvertiseType, kStream}, {kListenerType, kStream + 7}}) {
    EXPECT_EQ(registrarState(b, "b1", type, key), MrpRegistrarState::in) << "type " << unsigned{type};
  }
}

TEST_F(MsrpBackToBackTest, ChangedTalkerAdvertiseIsIndicatedAgainAndAnUnchangedOneIsNot) {
  const MsrpTalkerAdvertiseAttribute talker = talkerAdvertise(kStream, 0x1000);
  declare(a, "a1", talker);
  advance(kTransmitCycle);
  ASSERT_EQ(takeJoins(b).size(), 1u);
  const std::uint64_t joinsCounted = b.counters().numOfJoinIndications();

  // The same value again: counted twice (one per packet), indicated never.
  declare(a, "a1", talker);
  advance(kTransmitCycle);
  EXPECT_TRUE(takeJoins(b).empty());
  EXPECT_EQ(b.counters().numOfJoinIndications(), joinsCounted + 2);

  // New stream parameters under the same stream id: one indication, from
  // the first packet; the second packet repeats the now stored value.
  const MsrpTalkerAdvertiseAttribute changed = talkerAdvertise(kStream, 0x2345);
  declare(a, "a1", changed);
  advance(kTransmitCycle);
  EXPECT_EQ(attributesOf(takeJoins(b)), (Attributes{{kTalkerAdvertiseType, kStream}}));
  EXPECT_EQ(b.lib().msrpTalkerAdvertiseRx(), changed);
  EXPECT_EQ(storedValue<MsrpTalkerAdvertiseAttribute>(b, "b1", kStream), changed);
  EXPECT_EQ(registrarState(b, "b1", kTalkerAdvertiseType, kStream), MrpRegistrarState::in);
}

TEST_F(MsrpBackToBackTest, TalkerFailedTravelsIntact) {
  const MsrpTalkerFailedAttribute failed(talkerAdvertise(kStream, 0x00abcdef),
                                         Mrp::FailureInformation(0x80001c7300000001, 5));
  declare(a, "a1", failed);
  advance(kTransmitCycle);

  EXPECT_EQ(attributesOf(takeJoins(b)), (Attributes{{kTalkerFailedType, kStream}}));
  EXPECT_EQ(b.lib().msrpTalkerFailedRx(), failed);
  EXPECT_EQ(storedValue<MsrpTalkerFailedAttribute>(b, "b1", kStream), failed);
  EXPECT_EQ(registrarState(b, "b1", kTalkerFailedType, kStream), MrpRegistrarState::in);
}

class MsrpBackToBackListenerTest : public MsrpBackToBackTest,
                                   public ::testing::WithParamInterface<MsrpListenerEvent> {};

TEST_P(MsrpBackToBackListenerTest, ListenerTravelsWithItsDeclaration) {
  const MsrpListenerAttribute listener(kStream, GetParam());
  declare(a, "a1", listener);
  advance(kTransmitCycle);

  EXPECT_EQ(attributesOf(takeJoins(b)), (Attributes{{kListenerType, kStream}}));
  EXPECT_EQ(b.lib().msrpListenerVectorRx(), listener);
  EXPECT_EQ(storedValue<MsrpListenerAttribute>(b, "b1", kStream)->streamId(), listener.streamId())
      << "a Listener is stored as its stream; the declaration travels in the events";
  EXPECT_EQ(registrarState(b, "b1", kListenerType, kStream), MrpRegistrarState::in);
}

INSTANTIATE_TEST_SUITE_P(Declarations, MsrpBackToBackListenerTest,
                         ::testing::Values(MsrpListenerEvent::ignore, MsrpListenerEvent::askingFailed,
                                           MsrpListenerEvent::ready, MsrpListenerEvent::readyFailed),
                         [](const ::testing::TestParamInfo<MsrpListenerEvent>& info) {
                           std::ostringstream name;
                           name << info.param;
                           return name.str();
                         });

TEST_F(MsrpBackToBackTest, ListenersOfConsecutiveStreamsShareAVectorAndKeepTheirDeclarations) {
  const std::vector<MsrpListenerAttribute> listeners = {
      {kStream, MsrpListenerEvent::readyFailed}, {kStream + 1, MsrpListenerEvent::ignore},
      {kStream + 2, MsrpListenerEvent::ready},   {kStream + 3, MsrpListenerEvent::askingFailed},
      {kStream + 4, MsrpListenerEvent::ready},
  };
  for (const MsrpListenerAttribute& listener : listeners) declare(a, "a1", listener);
  advance(kTransmitCycle);

  // One vector of five values: two three-packed and two four-packed octets.
  const std::vector<SentFrame> frames = takeFrames("a1");
  ASSERT_EQ(frames.size(), 2u);
  EXPECT_EQ(frames[0].values.size(), listeners.size());
  constexpr std::size_t kListenerMessageOctets = 4 + 2 + 8 + 2 + 2 + 2;  // header, vector, list EndMark
  EXPECT_EQ(frames[0].bytes.size(), 14 + 1 + kListenerMessageOctets + 2);
  EXPECT_EQ(takeJoins(b).size(), listeners.size());
  for (std::size_t i = 0; i < listeners.size(); ++i) {
    // The declarations travel in the four-packed events; the store keeps the stream.
    const auto octets = Mrp::valueBytes(listeners[i]);
    EXPECT_EQ(frames[0].values[i].value, Bytes(octets.begin(), octets.end()));
    EXPECT_EQ(storedValue<MsrpListenerAttribute>(b, "b1", listeners[i].streamId())->streamId(), listeners[i].streamId());
  }
}

}  // namespace
}  // namespace MrpTest
