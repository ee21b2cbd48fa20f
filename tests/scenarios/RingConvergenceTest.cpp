#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <ostream>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "AttributeValue.h"
#include "format/Scenario.h"
#include "format/ScenarioReader.h"
#include "report/Timeline.h"
#include "sim/Simulation.h"
#include "support/SimJson.h"

namespace MrpTest {
namespace {

using Mrp::MrpApplication;
using MrpAgent::AttributeValue;
using ::testing::IsEmpty;

// tests/conformance/ring-failover/scenario.json: sw1 - sw2 - sw3 - sw4 - sw1 in
// a ring, h1 on sw1:p3 and h2 on sw3:p3. sw3:p2 blocks until the failover,
// when it becomes sw3's root port and sw3:p1 blocks. h1 declares VLANs 10
// and 100-110 and a talker, h2 a listener ready.
const std::string kScenario = scenarioFile("ring-failover");
constexpr Quarn::Seconds kFailover = 30.0;
constexpr Quarn::Seconds kLeaveTime = 0.6;
constexpr Quarn::Seconds kTransmitCycle = 0.1;
constexpr Quarn::Seconds kGoal = kLeaveTime + 2 * kTransmitCycle;
// Sums of tenths of a second are not exact.
constexpr Quarn::Seconds kSlack = 1e-9;
constexpr std::uint64_t kStream = 0x001b210000010001;

// A registration: a port ("bridge:port") and an attribute.
struct Held {
  std::string port;
  MrpApplication application{};
  std::uint8_t type = 0;
  std::uint64_t key = 0;
  friend auto operator<=>(const Held&, const Held&) = default;
};

std::ostream& operator<<(std::ostream& out, const Held& held) {
  return out << held.port << " " << held.application << " " << static_cast<unsigned>(held.type) << "/" << held.key;
}

Held heldOf(const std::string& port, const AttributeValue& value) {
  return {port, value.application(), value.attributeType(), value.attributeKey()};
}

// A registration that went after the failover, with or without a leave
// indication.
struct Loss {
  Quarn::Seconds t = 0;
  Held held;
};

std::ostream& operator<<(std::ostream& out, const Loss& loss) { return out << loss.t << " " << loss.held; }

// Keeps what a run loses from the failover on, and what every port
// registers (registrar IN) at its end.
class Recorder : public MrpCli::Timeline {
 public:
  void requested(const MrpCli::TimelinePlace&, const AttributeValue&, bool) override {}
  void indicated(const MrpCli::TimelinePlace& place, const AttributeValue& value, bool join) override {
    if (!join) doLose(place, value);
  }
  void forgot(const MrpCli::TimelinePlace& place, const AttributeValue& value, MrpAgent::Bridge::ForgetCause) override {
    doLose(place, value);
  }
  void transmitted(const MrpCli::TimelinePlace&, MrpApplication, const std::vector<std::uint8_t>&,
                   const std::vector<std::uint8_t>&) override {}
  void injected(const MrpCli::TimelinePlace&, const std::vector<std::uint8_t>&) override {}
  void linkChanged(Quarn::Seconds, const std::string&, const std::string&, bool) override {}
  void roleChanged(const MrpCli::TimelinePlace&, Stp::MstiPortStatus::Role, Stp::MstiPortStatus::Role) override {}
  void portChanged(const MrpCli::TimelinePlace&, const std::string&) override {}
  void reservationChanged(const MrpCli::TimelinePlace&, const MrpAgent::ReservationChange&) override {}
  void talkerFailed(const MrpCli::TimelinePlace&, const Mrp::MsrpTalkerFailedAttribute&) override {}
  void listenerDeclared(const MrpCli::TimelinePlace&, const Mrp::MsrpListenerAttribute&) override {}
  void streams(const MrpCli::TimelinePlace&, const MrpAgent::StreamTable&) override {}
  void registrations(const MrpCli::TimelinePlace& place, const std::vector<MrpAgent::Registration>& held) override {
    for (const MrpAgent::Registration& registration : held) {
      if (registration.registrar != Mrp::MrpRegistrarState::in) continue;
      registered.insert(heldOf(place.bridge + ":" + registration.port, registration.value));
    }
  }

  std::vector<Loss> lost;
  std::set<Held> registered;

 private:
  void doLose(const MrpCli::TimelinePlace& place, const AttributeValue& value) {
    if (place.t >= kFailover) lost.push_back({place.t, heldOf(place.bridge + ":" + place.port, value)});
  }
};

const MrpCli::Scenario& ringScenario() {
  static const MrpCli::Scenario scenario = [] {
    std::ifstream in(kScenario);
    return MrpCli::scenarioFromJson(std::string(std::istreambuf_iterator<char>(in), {}));
  }();
  return scenario;
}

Recorder runUntil(Quarn::Seconds until) {
  Recorder recorder;
  MrpCli::Simulation(ringScenario(), recorder).run(until);
  return recorder;
}

std::vector<AttributeValue> h1Declarations() {
  std::vector<AttributeValue> out = {AttributeValue(Mrp::MvrpVlanAttribute(10))};
  for (std::uint16_t vlan = 100; vlan <= 110; ++vlan) out.emplace_back(Mrp::MvrpVlanAttribute(vlan));
  out.emplace_back(Mrp::MsrpTalkerAdvertiseAttribute(
      kStream, Mrp::DataFrameParameters(Velo::EthAddr(0x91, 0xe0, 0xf0, 0, 0xfe, 1), 2), Mrp::Tspec(100, 1),
      Mrp::PriorityAndRank(3, 1), 1000));
  return out;
}

std::vector<AttributeValue> h2Declarations() {
  return {AttributeValue(Mrp::MsrpListenerAttribute(kStream, Mrp::MsrpListenerEvent::ready))};
}

// The SR class domain every bridge declares on every port.
const AttributeValue kDomain(Mrp::MsrpDomainAttribute(6, 3, 2));

// Whose declarations a port of the tree after the failover registers,
// besides its neighbour's domain: the end station behind it.
enum class Behind { neither, h1, h2 };

// The tree after the failover: h1 - sw1:p3, sw1:p2 - sw2:p1, sw1:p1 - sw4:p2,
// sw4:p1 - sw3:p2, sw3:p3 - h2, and sw2:p2 facing the blocked sw3:p1.
const std::vector<std::pair<std::string, Behind>> kNewTree = {
    {"h1:e0", Behind::h2},  {"sw1:p3", Behind::h1},      {"sw1:p1", Behind::h2}, {"sw1:p2", Behind::neither},
    {"sw2:p1", Behind::h1}, {"sw2:p2", Behind::neither}, {"sw4:p2", Behind::h1}, {"sw4:p1", Behind::h2},
    {"sw3:p2", Behind::h1}, {"sw3:p3", Behind::h2},      {"h2:e0", Behind::h1},
};

std::set<Held> carriedByTheNewTree() {
  std::set<Held> out;
  for (const auto& [port, behind] : kNewTree) {
    out.insert(heldOf(port, kDomain));
    if (behind == Behind::neither) continue;
    for (const AttributeValue& value : behind == Behind::h1 ? h1Declarations() : h2Declarations()) {
      out.insert(heldOf(port, value));
    }
  }
  return out;
}

bool onTheNewTree(const Held& held) {
  return std::any_of(kNewTree.begin(), kNewTree.end(), [&](const auto& entry) { return entry.first == held.port; });
}

// What the new tree carries and a run's end does not register.
std::vector<Held> missingAt(Quarn::Seconds t) {
  const std::set<Held> registered = runUntil(t).registered;
  std::vector<Held> out;
  for (const Held& held : carriedByTheNewTree()) {
    if (!registered.count(held)) out.push_back(held);
  }
  return out;
}

TEST(RingConvergenceTest, BeforeTheFailoverH2HearsH1ThroughSw2AndSw3p1) {
  const std::set<Held> registered = runUntil(kFailover - kTransmitCycle).registered;
  for (const AttributeValue& value : h1Declarations()) {
    EXPECT_TRUE(registered.count(heldOf("sw3:p1", value))) << value.attributeKey();
    EXPECT_TRUE(registered.count(heldOf("h2:e0", value))) << value.attributeKey();
  }
  EXPECT_TRUE(registered.count(heldOf("sw2:p2", h2Declarations().front())));
}

// The table is the network's own: once LeaveAll cycles have run their
// course, the ports of the new tree register exactly what it lists.
TEST(RingConvergenceTest, TheNewTreeSettlesOnWhatItCarries) {
  std::set<Held> onTree;
  for (const Held& held : runUntil(ringScenario().until).registered) {
    if (onTheNewTree(held)) onTree.insert(held);
  }
  EXPECT_THAT(onTree, ::testing::ContainerEq(carriedByTheNewTree()));
}

TEST(RingConvergenceTest, EveryPortOfTheNewTreeRegistersWhatItCarriesWithinTheLeaveTimeAndTwoTransmitCycles) {
  EXPECT_THAT(missingAt(kFailover + kGoal), IsEmpty());
}

// The port that starts forwarding sends a LeaveAll and its neighbour
// declares again at once: nothing is missing at any transmit cycle.
TEST(RingConvergenceTest, NothingTheNewTreeCarriesIsMissingAtAnyTransmitCycleAfterTheFailover) {
  for (int cycle = 0; cycle * kTransmitCycle <= kGoal + kSlack; ++cycle) {
    const Quarn::Seconds t = kFailover + cycle * kTransmitCycle;
    EXPECT_THAT(missingAt(t), IsEmpty()) << "at " << t;
  }
}

TEST(RingConvergenceTest, NothingTheNewTreeCarriesLeavesAfterTheFailoverButWhatTheOldPathCarriedDoes) {
  const Recorder run = runUntil(ringScenario().until);
  const std::set<Held> carried = carriedByTheNewTree();
  std::vector<Loss> behindTheChange;
  for (const Loss& loss : run.lost) {
    if (carried.count(loss.held)) behindTheChange.push_back(loss);
  }
  EXPECT_THAT(behindTheChange, IsEmpty());
  // The listener that came through sw2 leaves: the losses are recorded.
  EXPECT_THAT(run.lost, ::testing::Contains(::testing::Field(&Loss::held, heldOf("sw2:p2", h2Declarations().front()))));
}

}  // namespace
}  // namespace MrpTest
