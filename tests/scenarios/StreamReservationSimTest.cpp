#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "BridgeId.h"
#include "format/Scenario.h"
#include "format/ScenarioReader.h"
#include "report/Timeline.h"
#include "sim/Simulation.h"
#include "support/SimJson.h"

namespace MrpTest {
namespace {

using MrpAgent::AttributeValue;
using MrpCli::Scenario;
using MrpCli::TimelinePlace;
using ::testing::IsEmpty;

constexpr Quarn::Seconds kLeaveTime = 0.6;
constexpr Quarn::Seconds kTransmitCycle = 0.1;
// Sums of tenths of a second are not exact.
constexpr Quarn::Seconds kSlack = 1e-9;
constexpr std::uint32_t kTalkerLatency = 1000;  // ns, as the talkers declare it

// The scenarios' streams: stream n is 00:1b:21:00:00:01:00:0n.
constexpr std::uint64_t stream(unsigned n) { return 0x001b210000010000 + n; }

// Something a run told, when and where ("bridge:port").
template <class What>
struct Told {
  Quarn::Seconds t = 0;
  std::string where;
  What what;
};

std::string whereOf(const TimelinePlace& place) { return place.bridge + ":" + place.port; }

// Keeps what a run tells of its streams.
class StreamRecorder : public MrpCli::Timeline {
 public:
  void requested(const TimelinePlace& place, const AttributeValue& value, bool) override {
    requests.push_back({place.t, whereOf(place), value});
  }
  void indicated(const TimelinePlace& place, const AttributeValue& value, bool join) override {
    if (join) joins.push_back({place.t, whereOf(place), value});
  }
  void forgot(const TimelinePlace&, const AttributeValue&, MrpAgent::Bridge::ForgetCause) override {}
  void transmitted(const TimelinePlace&, Mrp::MrpApplication, const std::vector<std::uint8_t>&,
                   const std::vector<std::uint8_t>&) override {}
  void injected(const TimelinePlace&, const std::vector<std::uint8_t>&) override {}
  void linkChanged(Quarn::Seconds, const std::string&, const std::string&, bool) override {}
  void roleChanged(const TimelinePlace&, Stp::MstiPortStatus::Role, Stp::MstiPortStatus::Role) override {}
  void portChanged(const TimelinePlace&, const std::string&) override {}
  void reservationChanged(const TimelinePlace& place, const MrpAgent::ReservationChange& change) override {
    reservations.push_back({place.t, whereOf(place), change});
  }
  void talkerFailed(const TimelinePlace& place, const Mrp::MsrpTalkerFailedAttribute& declared) override {
    failures.push_back({place.t, whereOf(place), declared});
  }
  void listenerDeclared(const TimelinePlace& place, const Mrp::MsrpListenerAttribute& listener) override {
    listeners.push_back({place.t, whereOf(place), listener});
  }
  void registrations(const TimelinePlace& place, const std::vector<MrpAgent::Registration>& held) override {
    for (const MrpAgent::Registration& registration : held) {
      if (registration.registrar == Mrp::MrpRegistrarState::in) {
        registered.push_back({place.t, place.bridge + ":" + registration.port, registration.value});
      }
    }
  }
  void streams(const TimelinePlace& place, const MrpAgent::StreamTable& table) override {
    tables[place.bridge] = table;
  }

  std::vector<Told<AttributeValue>> requests;
  std::vector<Told<AttributeValue>> joins;
  std::vector<Told<AttributeValue>> registered;  // at the run's end
  std::vector<Told<MrpAgent::ReservationChange>> reservations;
  std::vector<Told<Mrp::MsrpTalkerFailedAttribute>> failures;
  std::vector<Told<Mrp::MsrpListenerAttribute>> listeners;
  std::map<std::string, MrpAgent::StreamTable> tables;
};

Scenario scenarioOf(const std::string& name) {
  std::ifstream in(scenarioFile(name));
  return MrpCli::scenarioFromJson(std::string(std::istreambuf_iterator<char>(in), {}));
}

StreamRecorder run(const Scenario& scenario, Quarn::Seconds until) {
  StreamRecorder recorder;
  MrpCli::Simulation(scenario, recorder).run(until);
  return recorder;
}

// A stream reserved on a port: "bridge:port" and the stream id.
using Reserved = std::pair<std::string, std::uint64_t>;

// What is reserved at `t`, from the reservations made and released until then.
std::set<Reserved> reservedAt(const StreamRecorder& recorder, Quarn::Seconds t) {
  std::set<Reserved> out;
  for (const auto& told : recorder.reservations) {
    if (told.t > t + kSlack) break;
    if (told.what.reserved) {
      out.insert({told.where, told.what.streamId});
    } else {
      out.erase({told.where, told.what.streamId});
    }
  }
  return out;
}

std::set<Reserved> everyHop(const std::vector<std::string>& hops, unsigned first, unsigned last) {
  std::set<Reserved> out;
  for (const std::string& hop : hops) {
    for (unsigned n = first; n <= last; ++n) out.insert({hop, stream(n)});
  }
  return out;
}

// The value a port registers for a stream's attribute at the run's end.
std::optional<AttributeValue> registeredValue(const StreamRecorder& recorder, const std::string& where,
                                              std::uint8_t type, std::uint64_t streamId) {
  for (const auto& told : recorder.registered) {
    if (told.where == where && told.what.attributeType() == type && told.what.attributeKey() == streamId) {
      return told.what;
    }
  }
  return std::nullopt;
}

std::uint64_t streamIdOf(const AttributeValue& value) { return value.attributeKey(); }

constexpr std::uint8_t kTalkerAdvertise = 1;
constexpr std::uint8_t kTalkerFailed = 2;

// tests/conformance/stream-line/scenario.json: h1 - sw1 - sw2 - sw3 - h2, the
// link sw2:p2 - sw3:p1 at 100 Mb/s, sw1:p2 adding 20 us. h1 declares eight
// class A streams of 100-octet frames (9.088 Mb/s each) at 1 s, a ninth at
// 3 s, and withdraws the first at 10 s; h2 is ready for all nine from 1 s.
// The scenarios' LeaveAll period (60 s) keeps LeaveAll out of the run: the
// engine declares a Listener again with the declaration of the last one
// requested (it stores the stream id alone), which would blur what the
// bridge decides.
class StreamLineTest : public ::testing::Test {
 protected:
  static constexpr Quarn::Seconds kNinth = 3.0;
  static constexpr Quarn::Seconds kWithdrawn = 10.0;
  static constexpr std::uint64_t kSw2 = 0x8000020000000002;  // its configured bridge id
  static constexpr std::uint64_t kSlowLimit = 75'000'000;    // 75% of 100 Mb/s

  static void SetUpTestSuite() { recorder_ = new StreamRecorder(run(scenarioOf("stream-line"), 30)); }
  static void TearDownTestSuite() {
    delete recorder_;
    recorder_ = nullptr;
  }
  const StreamRecorder& recorder() const { return *recorder_; }

  // Where a stream from h1 to h2 is reserved: the talker's own port and
  // each bridge's towards h2.
  const std::vector<std::string> hops = {"h1:e0", "sw1:p2", "sw2:p2", "sw3:p2"};

 private:
  static StreamRecorder* recorder_;
};

StreamRecorder* StreamLineTest::recorder_ = nullptr;

TEST_F(StreamLineTest, EightStreamsFitTheSlowLinksSeventyFiveMegabitsAndAreReservedOnEveryHop) {
  EXPECT_EQ(reservedAt(recorder(), kNinth - kTransmitCycle), everyHop(hops, 1, 8));
  const auto last = std::find_if(recorder().reservations.rbegin(), recorder().reservations.rend(),
                                 [](const auto& told) { return told.where == "sw2:p2" && told.t < kNinth; });
  ASSERT_NE(last, recorder().reservations.rend());
  EXPECT_EQ(last->what.total, 8 * 9'088'000u);
  EXPECT_EQ(last->what.limit, kSlowLimit);
}

TEST_F(StreamLineTest, TheNinthIsRefusedForBandwidthByTheBridgeBeforeTheSlowLinkAlone) {
  ASSERT_EQ(recorder().failures.size(), 1u);
  const auto& failure = recorder().failures.front();
  EXPECT_EQ(failure.where, "sw2:p2");
  EXPECT_EQ(failure.what.talkerAdvertiseAttribute().streamId(), stream(9));
  EXPECT_EQ(failure.what.failureInformation(), Mrp::FailureInformation(kSw2, 1));
  EXPECT_GT(failure.t, kNinth);
  EXPECT_LE(failure.t, kNinth + 2 * kTransmitCycle + kSlack) << "two hops from h1";
  // h2 hears of the refusal, and the stream is reserved nowhere.
  const auto heard = std::find_if(recorder().joins.begin(), recorder().joins.end(), [](const auto& told) {
    return told.where == "h2:e0" && told.what.attributeType() == kTalkerFailed && streamIdOf(told.what) == stream(9);
  });
  ASSERT_NE(heard, recorder().joins.end());
  EXPECT_EQ(std::get<Mrp::MsrpTalkerFailedAttribute>(heard->what.record()).failureInformation(),
            Mrp::FailureInformation(kSw2, 1));
  EXPECT_LE(heard->t, kNinth + 3 * kTransmitCycle + kSlack);
  EXPECT_EQ(reservedAt(recorder(), kWithdrawn - kTransmitCycle), everyHop(hops, 1, 8));
}

// The withdrawal leaves each bridge a leave time after its neighbour; once
// sw2 releases stream 1, stream 9 is admitted there and its Listener Ready
// goes back to h1 hop by hop.
TEST_F(StreamLineTest, AWithdrawnTalkersBandwidthGoesToTheRefusedStreamWithNothingElseDeclaredAgain) {
  const Quarn::Seconds bound =
      kWithdrawn + 2 * (kLeaveTime + kTransmitCycle) + static_cast<double>(hops.size()) * kTransmitCycle;
  const std::set<Reserved> reserved = reservedAt(recorder(), bound);
  for (const Reserved& ninth : everyHop(hops, 9, 9)) EXPECT_TRUE(reserved.count(ninth)) << ninth.first;
  EXPECT_EQ(reservedAt(recorder(), 30), everyHop(hops, 2, 9));
  const auto after = [](const auto& told) { return told.t >= kWithdrawn; };
  for (const auto& told : recorder().requests) {
    if (!after(told)) continue;
    EXPECT_EQ(streamIdOf(told.what), stream(1)) << told.where << " at " << told.t;
  }
  for (const auto& told : recorder().joins) {
    if (!after(told)) continue;
    EXPECT_EQ(streamIdOf(told.what), stream(9)) << told.where << " at " << told.t;
  }
  for (const auto& told : recorder().listeners) {
    if (!after(told)) continue;
    EXPECT_EQ(told.what.streamId(), stream(9)) << told.where << " at " << told.t;
  }
  for (const auto& told : recorder().reservations) {
    if (!after(told)) continue;
    EXPECT_EQ(told.what.streamId, told.what.reserved ? stream(9) : stream(1)) << told.where << " at " << told.t;
  }
}

// The talker's latency, then one port latency per bridge: sw1:p2's
// configured 20 us, then a 1542-octet frame at each port's speed.
TEST_F(StreamLineTest, AccumulatedLatencyGrowsByEachBridgesPortLatency) {
  constexpr std::uint32_t kSw1p2 = 20'000;
  constexpr std::uint32_t kFrameAt100Mbps = 1542 * 8 * 10;
  constexpr std::uint32_t kFrameAtAGigabit = 1542 * 8;
  const std::vector<std::pair<std::string, std::uint32_t>> heard = {
      {"sw1:p1", kTalkerLatency},
      {"sw2:p1", kTalkerLatency + kSw1p2},
      {"sw3:p1", kTalkerLatency + kSw1p2 + kFrameAt100Mbps},
      {"h2:e0", kTalkerLatency + kSw1p2 + kFrameAt100Mbps + kFrameAtAGigabit},
  };
  for (const auto& [where, latency] : heard) {
    const std::optional<AttributeValue> talker = registeredValue(recorder(), where, kTalkerAdvertise, stream(2));
    ASSERT_TRUE(talker) << where;
    EXPECT_EQ(std::get<Mrp::MsrpTalkerAdvertiseAttribute>(talker->record()).accumulatedLatency(), latency) << where;
  }
  EXPECT_EQ(recorder().tables.at("h2").streams.size(), 9u) << "stream 1's listener is still declared";
}

// tests/conformance/stream-refusals/scenario.json: the line of stream-line
// at 1 Gb/s, where sw3 runs class A at priority 4. h1 declares stream 1,
// class A at priority 3, and stream 3 at priority 5, which no one runs an
// SR class at; h2 is ready for both.
struct Refusal {
  std::string name;
  unsigned stream;
  std::uint8_t code;
  std::string where;   // the port of the Talker Failed
  std::string bridge;  // whose identifier it carries
};

class StreamRefusalTest : public ::testing::TestWithParam<Refusal> {
 protected:
  static void SetUpTestSuite() { recorder_ = new StreamRecorder(run(scenarioOf("stream-refusals"), 5)); }
  static void TearDownTestSuite() {
    delete recorder_;
    recorder_ = nullptr;
  }
  const StreamRecorder& recorder() const { return *recorder_; }

 private:
  static StreamRecorder* recorder_;
};

StreamRecorder* StreamRefusalTest::recorder_ = nullptr;

TEST_P(StreamRefusalTest, IsMadeOnceWhereTheStreamCannotGoAndReachesTheListener) {
  const Refusal& refusal = GetParam();
  const Mrp::FailureInformation failure(MrpAgent::bridgeIdOfName(refusal.bridge), refusal.code);
  std::vector<std::string> refusedAt;
  for (const auto& told : recorder().failures) {
    if (told.what.talkerAdvertiseAttribute().streamId() != stream(refusal.stream)) continue;
    refusedAt.push_back(told.where);
    EXPECT_EQ(told.what.failureInformation(), failure);
  }
  EXPECT_EQ(refusedAt, std::vector<std::string>{refusal.where});
  const std::optional<AttributeValue> atListener =
      registeredValue(recorder(), "h2:e0", kTalkerFailed, stream(refusal.stream));
  ASSERT_TRUE(atListener);
  EXPECT_EQ(std::get<Mrp::MsrpTalkerFailedAttribute>(atListener->record()).failureInformation(), failure);
  EXPECT_THAT(recorder().reservations, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Refusals, StreamRefusalTest,
                         ::testing::Values(Refusal{"BoundaryPort", 1, 8, "sw2:p2", "sw2"},
                                           Refusal{"PriorityNotAnSrClass", 3, 13, "h1:e0", "h1"}),
                         [](const ::testing::TestParamInfo<Refusal>& info) { return info.param.name; });

// tests/conformance/stream-listener-ready/scenario.json: the line at 1 Gb/s; h1
// declares stream 1 at 1 s, h2 asks for it (AskingFailed) and becomes
// Ready at 5 s.
TEST(StreamListenerTest, AListenerThatBecomesReadyIsHeardHopByHopWithinATransmitCyclePerHop) {
  constexpr Quarn::Seconds kReady = 5.0;
  const StreamRecorder recorder = run(scenarioOf("stream-listener-ready"), 8);
  const std::vector<std::string> towardsTheTalker = {"sw3:p2", "sw2:p2", "sw1:p2", "h1:e0"};
  for (std::size_t hop = 0; hop < towardsTheTalker.size(); ++hop) {
    const auto heard = std::find_if(recorder.listeners.begin(), recorder.listeners.end(), [&](const auto& told) {
      return told.where == towardsTheTalker[hop] && told.what.listenerEvent() == Mrp::MsrpListenerEvent::ready;
    });
    ASSERT_NE(heard, recorder.listeners.end()) << towardsTheTalker[hop];
    EXPECT_GE(heard->t, kReady);
    EXPECT_LE(heard->t, kReady + static_cast<double>(hop + 1) * kTransmitCycle + kSlack) << towardsTheTalker[hop];
  }
  EXPECT_EQ(reservedAt(recorder, 8), everyHop({"h1:e0", "sw1:p2", "sw2:p2", "sw3:p2"}, 1, 1));
}

// tests/conformance/stream-scale/scenario.json: the line at 1 Gb/s, every node
// running class A (priority 3) and class B (priority 2). h1 declares 150
// class B streams of 64-octet frames at once (3.392 Mb/s each, 508.8 Mb/s
// of the 750), h2 is ready for each.
constexpr unsigned kScaleStreams = 150;
constexpr Quarn::Seconds kScaleStart = 1.0;
constexpr Quarn::Seconds kScaleGoal = 1.5;

Mrp::MsrpTalkerAdvertiseAttribute classBTalker(unsigned n) {
  return Mrp::MsrpTalkerAdvertiseAttribute(
      stream(n),
      Mrp::DataFrameParameters(
          Velo::EthAddr(0x91, 0xe0, 0xf0, 0, static_cast<std::uint8_t>(n >> 8), static_cast<std::uint8_t>(n)), 2),
      Mrp::Tspec(64, 1), Mrp::PriorityAndRank(2, 1), kTalkerLatency);
}

TEST(StreamScaleTest, OneHundredAndFiftyClassBStreamsAreReservedOnEveryHopWithinOneAndAHalfSeconds) {
  Scenario scenario = scenarioOf("stream-scale");
  for (unsigned n = 1; n <= kScaleStreams; ++n) {
    scenario.events.push_back({kScaleStart, Scenario::Declare{"h1", "e0", AttributeValue(classBTalker(n))}});
    scenario.events.push_back({kScaleStart, Scenario::Declare{"h2", "e0",
                                                              AttributeValue(Mrp::MsrpListenerAttribute(
                                                                  stream(n), Mrp::MsrpListenerEvent::ready))}});
  }
  const StreamRecorder recorder = run(scenario, kScaleStart + kScaleGoal);
  EXPECT_EQ(reservedAt(recorder, kScaleStart + kScaleGoal),
            everyHop({"h1:e0", "sw1:p2", "sw2:p2", "sw3:p2"}, 1, kScaleStreams));
  EXPECT_THAT(recorder.failures, IsEmpty());
  const MrpAgent::StreamTable& sw2 = recorder.tables.at("sw2");
  ASSERT_EQ(sw2.classes.size(), 1u);
  EXPECT_EQ(sw2.classes[0].reserved, kScaleStreams * 3'392'000u);
}

}  // namespace
}  // namespace MrpTest
