#include "Bridge.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <sstream>
#include <memory>
#include <ostream>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

#include "decode/Decoder.h"
#include "quarn/ClockScope.h"
#include "quarn/Log.h"
#include "support/PamEngineFixture.h"
#include "velo/MemPam.h"

namespace MrpTest {
namespace {

using Mrp::MrpApplication;
using MrpAgent::AttributeValue;
using MrpAgent::Bridge;
using Role = Stp::MstiPortStatus::Role;

const char* causeName(Bridge::ForgetCause cause) {
  switch (cause) {
    case Bridge::ForgetCause::portClosed: return "portClosed";
    case Bridge::ForgetCause::blocked: return "blocked";
  }
  return "?";
}

// Records a bridge's indications as "port +value" / "port -value" lines, and
// what it forgets as "port ~value cause".
class Recorder : public Bridge::Observer {
 public:
  void onJoin(const Bridge& bridge, const std::string& port, const AttributeValue& value) override {
    lines.push_back(bridge.name() + ":" + port + " +" + std::to_string(value.attributeKey()));
  }
  void onLeave(const Bridge& bridge, const std::string& port, const AttributeValue& value) override {
    lines.push_back(bridge.name() + ":" + port + " -" + std::to_string(value.attributeKey()));
  }
  void onForget(const Bridge& bridge, const std::string& port, const AttributeValue& value,
                Bridge::ForgetCause cause) override {
    lines.push_back(bridge.name() + ":" + port + " ~" + std::to_string(value.attributeKey()) + " " + causeName(cause));
  }
  // "port reserved 7 A 9088000 of 750000000" / "port released 7 ...".
  void onReservation(const Bridge& bridge, const std::string& port, const MrpAgent::ReservationChange& change) override {
    lines.push_back(bridge.name() + ":" + port + (change.reserved ? " reserved " : " released ") +
                    std::to_string(change.streamId) + " " + change.srClass.name + " " + std::to_string(change.total) +
                    " of " + std::to_string(change.limit));
  }
  // "port failed 7 code 1".
  void onTalkerFailed(const Bridge& bridge, const std::string& port,
                      const Mrp::MsrpTalkerFailedAttribute& declared) override {
    lines.push_back(bridge.name() + ":" + port + " failed " +
                    std::to_string(declared.talkerAdvertiseAttribute().streamId()) + " code " +
                    std::to_string(declared.failureInformation().failureCode()));
  }
  // "port listener 7 ready".
  void onListenerDeclaration(const Bridge& bridge, const std::string& port,
                             const Mrp::MsrpListenerAttribute& listener) override {
    lines.push_back(bridge.name() + ":" + port + " listener " + std::to_string(listener.streamId()) + " " +
                    Mrp::enumText(listener.listenerEvent()));
  }
  std::vector<std::string> lines;
};

// Bridges on a simulated clock, their ports joined by in-memory wires.
class BridgeTest : public ::testing::Test {
 protected:
  ~BridgeTest() override { bridges.clear(); }

  Bridge& bridgeNew(const std::string& name, const std::vector<std::string>& ports,
                    std::vector<MrpApplication> applications = {MrpApplication::mvrp}) {
    auto& factory = factories[name] = new Velo::MemPamFactory;
    for (const std::string& port : ports) {
      pams[name + ":" + port] = new Velo::MemPam(Velo::IntfId(port), Velo::EthAddr(2, 0, 0, 0, 0, pams.size()), clock);
      factory->pamIs(pams[name + ":" + port]);
    }
    auto bridge = std::make_unique<Bridge>(name, applications, MrpAgent::BridgeConfig{}, factory);
    for (const std::string& port : ports) bridge->portIs(port);
    bridge->observerIs(&recorder);
    return *(bridges[name] = std::move(bridge));
  }
  void link(const std::string& a, const std::string& b) { pams[a]->peerIs(pams[b].ptr()); }

  Quarn::Ptr<Quarn::SimClock> clock = new Quarn::SimClock;
  Quarn::System::ClockScope clockScope{clock};
  std::map<std::string, Quarn::Ptr<Velo::MemPamFactory>> factories;
  std::map<std::string, Quarn::Ptr<Velo::MemPam>> pams;
  std::map<std::string, std::unique_ptr<Bridge>> bridges;
  Recorder recorder;
  Quarn::CaptureLogSink logs;
};

// h1 - sw1 - sw2 - h2, and h3 on sw2's third port.
class BridgeLineTest : public BridgeTest {
 protected:
  explicit BridgeLineTest(std::vector<MrpApplication> applications = {MrpApplication::mvrp})
      : h1(bridgeNew("h1", {"e0"}, applications)),
        sw1(bridgeNew("sw1", {"p1", "p2"}, applications)),
        sw2(bridgeNew("sw2", {"p1", "p2", "p3"}, applications)),
        h2(bridgeNew("h2", {"e0"}, applications)),
        h3(bridgeNew("h3", {"e0"}, applications)) {
    link("h1:e0", "sw1:p1");
    link("sw1:p2", "sw2:p1");
    link("sw2:p2", "h2:e0");
    link("sw2:p3", "h3:e0");
  }
  bool heard(const std::string& line) const {
    return std::find(recorder.lines.begin(), recorder.lines.end(), line) != recorder.lines.end();
  }
  // The registrations of a bridge's port: "key registrar/applicant".
  static std::vector<std::string> held(const Bridge& bridge, const std::string& port) {
    std::vector<std::string> out;
    for (const auto& r : bridge.registrations()) {
      if (r.port != port) continue;
      std::ostringstream text;
      text << r.value.attributeKey() << " " << r.registrar << "/" << r.applicant;
      out.push_back(text.str());
    }
    return out;
  }

  Bridge& h1;
  Bridge& sw1;
  Bridge& sw2;
  Bridge& h2;
  Bridge& h3;
};

const AttributeValue kVlan10(Mrp::MvrpVlanAttribute(10));

// The lines that start with `prefix`.
std::vector<std::string> linesOf(const std::vector<std::string>& lines, const std::string& prefix) {
  std::vector<std::string> out;
  std::copy_if(lines.begin(), lines.end(), std::back_inserter(out),
               [&](const std::string& line) { return line.starts_with(prefix); });
  return out;
}

TEST_F(BridgeLineTest, AVlanDeclaredAtAnEndStationIsRegisteredAtEveryPortTowardsIt) {
  h1.declare(kVlan10, "e0");
  clock->advance(1);
  EXPECT_THAT(recorder.lines, ::testing::UnorderedElementsAre("sw1:p1 +10", "sw2:p1 +10", "h2:e0 +10", "h3:e0 +10"));
  // The end station declares and registers nothing back; the bridges
  // declare towards the far end only.
  EXPECT_EQ(held(h1, "e0"), std::vector<std::string>{"10 MT/QA"});
  EXPECT_EQ(held(sw1, "p1"), std::vector<std::string>{"10 IN/VO"});
  EXPECT_EQ(held(sw1, "p2"), std::vector<std::string>{"10 MT/QA"});
}

TEST_F(BridgeLineTest, AWithdrawnVlanLeavesEveryPortAfterTheLeaveTimes) {
  h1.declare(kVlan10, "e0");
  clock->advance(1);
  recorder.lines.clear();
  h1.withdraw(kVlan10, "e0");
  clock->advance(0.5);
  EXPECT_TRUE(recorder.lines.empty()) << "nothing leaves before the leave time";
  clock->advance(5);
  EXPECT_THAT(recorder.lines, ::testing::UnorderedElementsAre("sw1:p1 -10", "sw2:p1 -10", "h2:e0 -10", "h3:e0 -10"));
  EXPECT_TRUE(held(sw1, "p2").empty());
}

TEST_F(BridgeLineTest, AVlanRegisteredOnTwoPortsIsWithdrawnOnlyWhenNoOtherPortRegistersIt) {
  h1.declare(kVlan10, "e0");
  h2.declare(kVlan10, "e0");
  clock->advance(1);
  // sw2 registers on p1 (from h1) and p2 (from h2), so it declares on all three ports.
  EXPECT_EQ(held(sw2, "p3"), std::vector<std::string>{"10 MT/QA"});
  recorder.lines.clear();
  h1.withdraw(kVlan10, "e0");
  clock->advance(5);
  EXPECT_TRUE(heard("sw2:p1 -10"));
  EXPECT_FALSE(heard("h3:e0 -10")) << "h2 still declares the VLAN";
  EXPECT_FALSE(heard("h1:e0 -10")) << "h1 still hears it from sw1";
}

TEST_F(BridgeLineTest, ABridgeWideDeclarationIsMadeOnEveryPort) {
  sw1.declare(kVlan10, std::nullopt);
  clock->advance(1);
  EXPECT_TRUE(heard("h1:e0 +10"));
  EXPECT_TRUE(heard("sw2:p1 +10"));
  EXPECT_TRUE(heard("h2:e0 +10"));
}

TEST_F(BridgeLineTest, RegistrationsOnAPortThatStopsForwardingAreNotPassedOn) {
  h1.declare(kVlan10, "e0");
  clock->advance(1);
  recorder.lines.clear();
  sw1.portRoleIs("p1", Stp::MstiPortStatus::Role::alternate);
  clock->advance(5);
  // The engine flushes p1 without a leave indication; sw1 withdraws on p2.
  EXPECT_FALSE(heard("sw1:p1 -10"));
  EXPECT_TRUE(heard("sw2:p1 -10"));
  EXPECT_TRUE(heard("h2:e0 -10"));
  EXPECT_FALSE(sw1.forwarding("p1"));
  recorder.lines.clear();
  sw1.portRoleIs("p1", Stp::MstiPortStatus::Role::root);
  clock->advance(1);  // p1 sends a LeaveAll: h1 declares again at once
  EXPECT_TRUE(heard("sw1:p1 +10"));
  EXPECT_TRUE(heard("h2:e0 +10"));
}

TEST_F(BridgeLineTest, AClosedPortTakesItsRegistrationsAlong) {
  h1.declare(kVlan10, "e0");
  clock->advance(1);
  recorder.lines.clear();
  sw1.portDel("p1");
  clock->advance(5);
  EXPECT_TRUE(heard("sw2:p1 -10"));
  EXPECT_EQ(sw1.ports(), std::vector<std::string>{"p2"});
  EXPECT_TRUE(held(sw1, "p2").empty());
}

// What closes a port to its registrations, and the cause the bridge gives.
struct Forgetting {
  const char* name;
  void (*act)(Bridge& bridge, const std::string& port);
  const char* cause;
};

const Forgetting kForgettings[] = {
    {"Blocked", [](Bridge& bridge, const std::string& port) { bridge.portRoleIs(port, Role::alternate); }, "blocked"},
    {"Closed", [](Bridge& bridge, const std::string& port) { bridge.portDel(port); }, "portClosed"},
};

void PrintTo(const Forgetting& forgetting, std::ostream* out) { *out << forgetting.name; }

class BridgeForgetTest : public BridgeLineTest, public ::testing::WithParamInterface<Forgetting> {};

TEST_P(BridgeForgetTest, EveryRegistrationOfThePortIsForgottenWithTheCauseAndNeverLeaves) {
  h1.declare(kVlan10, "e0");
  h1.declare(AttributeValue(Mrp::MvrpVlanAttribute(20)), "e0");
  clock->advance(1);
  recorder.lines.clear();
  GetParam().act(sw1, "p1");
  clock->advance(5);
  const std::string cause = GetParam().cause;
  EXPECT_THAT(linesOf(recorder.lines, "sw1:p1 "),
              ::testing::UnorderedElementsAre("sw1:p1 ~10 " + cause, "sw1:p1 ~20 " + cause));
}

INSTANTIATE_TEST_SUITE_P(Causes, BridgeForgetTest, ::testing::ValuesIn(kForgettings),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(BridgeLineTest, ABridgeThatWithdrawsAllLeavesItsNeighboursNothingToTimeOut) {
  const AttributeValue vlan20(Mrp::MvrpVlanAttribute(20));
  h1.declare(kVlan10, "e0");
  sw1.declare(vlan20, std::nullopt);
  clock->advance(1);
  recorder.lines.clear();
  sw1.withdrawAll();
  sw1.declare(AttributeValue(Mrp::MvrpVlanAttribute(30)), std::nullopt);
  clock->advance(2.5);  // two hops of leave time, well before any LeaveAll
  EXPECT_THAT(recorder.lines, ::testing::UnorderedElementsAre("sw2:p1 -10", "h2:e0 -10", "h3:e0 -10", "h1:e0 -20",
                                                              "sw2:p1 -20", "h2:e0 -20", "h3:e0 -20"));
  EXPECT_TRUE(sw1.withdrawnAll());
  EXPECT_EQ(held(sw1, "p1"), std::vector<std::string>{"10 IN/VO"}) << "what it hears it still registers";
}

// A bridge of one application whose ports p1, p2 and p3 are plugged into
// ends that take what they send; keeps the LeaveAlls the ports send, as
// "port type" lines, and the attributes they carry, as "port key" lines.
class BridgeLeaveAllTest : public BridgeTest, public Velo::MemPam::Tap {
 protected:
  ~BridgeLeaveAllTest() override { bridges.clear(); }

  Bridge& bridgeWithEndsNew(MrpApplication application) {
    Bridge& bridge = bridgeNew("sw", {"p1", "p2", "p3"}, {application});
    for (const std::string& port : bridge.ports()) {
      Quarn::Ptr<Velo::MemPam> end = new Velo::MemPam(Velo::IntfId("end"), Velo::EthAddr(), clock);
      end->rxLimitIs(0);  // drops what arrives
      pams["sw:" + port]->peerIs(end.ptr());
      pams["sw:" + port]->tapIs(this);
      ends.push_back(end);
    }
    return bridge;
  }
  void onFrame(const Velo::MemPam& sender, const Velo::Pkt& frame) override {
    const std::vector<std::uint8_t> bytes(frame.span().begin(), frame.span().end());
    const auto decoded = decoder.decodeFrame(++frames, bytes);
    for (const auto& type : decoded.at("leaveAll")) {
      leaveAlls.push_back(sender.intfId().name() + " " + std::to_string(type.get<unsigned>()));
    }
    for (const auto& attribute : decoded.at("attributes")) {
      carried.push_back(sender.intfId().name() + " " + attribute.at("key").get<std::string>());
    }
  }
  // A LeaveAll of every attribute type of the application, on `port`.
  static std::vector<std::string> leaveAllOfEveryType(const std::string& port, MrpApplication application) {
    const unsigned types = application == MrpApplication::msrp ? 4 : 1;
    std::vector<std::string> out;
    for (unsigned type = 1; type <= types; ++type) out.push_back(port + " " + std::to_string(type));
    return out;
  }

  MrpCli::Decoder decoder;
  unsigned frames = 0;
  std::vector<Quarn::Ptr<Velo::MemPam>> ends;
  std::vector<std::string> leaveAlls;
  std::vector<std::string> carried;
};

// A role change of a port, and whether the port starts forwarding with it.
struct RoleChange {
  const char* name;
  Role from;
  Role to;
  bool startsForwarding;
};

const RoleChange kRoleChanges[] = {
    {"AlternateToRoot", Role::alternate, Role::root, true},
    {"AlternateToDesignated", Role::alternate, Role::designated, true},
    {"BackupToDesignated", Role::backup, Role::designated, true},
    {"DisabledToRoot", Role::disabled, Role::root, true},
    {"DesignatedToRoot", Role::designated, Role::root, false},
    {"AlternateToBackup", Role::alternate, Role::backup, false},
    {"RootToAlternate", Role::root, Role::alternate, false},
};

void PrintTo(const RoleChange& change, std::ostream* out) { *out << change.name; }

class BridgeRoleLeaveAllTest : public BridgeLeaveAllTest,
                               public ::testing::WithParamInterface<std::tuple<RoleChange, MrpApplication>> {};

TEST_P(BridgeRoleLeaveAllTest, APortThatStartsForwardingSendsALeaveAllOfEveryTypeAtOnceOnThatPortOnly) {
  const auto& [change, application] = GetParam();
  Bridge& sw = bridgeWithEndsNew(application);
  sw.portRoleIs("p2", change.from);
  clock->advance(1);
  leaveAlls.clear();
  sw.portRoleIs("p2", change.to);
  const std::vector<std::string> expected =
      change.startsForwarding ? leaveAllOfEveryType("p2", application) : std::vector<std::string>{};
  EXPECT_EQ(leaveAlls, expected) << "at once";
  clock->advance(1);
  EXPECT_EQ(leaveAlls, expected) << "and nothing more, on any port";
}

std::string roleChangeTestName(const ::testing::TestParamInfo<BridgeRoleLeaveAllTest::ParamType>& info) {
  const auto& [change, application] = info.param;
  return std::string(change.name) + (application == MrpApplication::msrp ? "Msrp" : "Mvrp");
}

INSTANTIATE_TEST_SUITE_P(RoleChanges, BridgeRoleLeaveAllTest,
                         ::testing::Combine(::testing::ValuesIn(kRoleChanges),
                                            ::testing::Values(MrpApplication::mvrp, MrpApplication::msrp)),
                         roleChangeTestName);

// The engine's Re-declare! puts the port's registrations in its packet; the
// LeaveAll must not go in with them.
TEST_F(BridgeLeaveAllTest, TheLeaveAllLeavesWhatTheEngineHasPutInThePortsPacketIntact) {
  Bridge& sw = bridgeWithEndsNew(MrpApplication::mvrp);
  Bridge& h = bridgeNew("h", {"e0"});
  link("sw:p2", "h:e0");
  sw.portRoleIs("p2", Role::alternate);
  std::vector<std::string> declared;
  for (std::uint16_t vlan : {10, 100, 101, 102, 103, 104, 105, 106, 107, 108, 109, 110}) {
    h.declare(AttributeValue(Mrp::MvrpVlanAttribute(vlan)), "e0");
    declared.push_back("p2 " + std::to_string(vlan));
  }
  clock->advance(1);
  carried.clear();
  sw.portRoleIs("p2", Role::root);
  clock->advance(1);
  EXPECT_THAT(linesOf(carried, "p2 "), ::testing::Each(::testing::AnyOfArray(declared)));
  EXPECT_THAT(linesOf(recorder.lines, "sw:p2 -"), ::testing::IsEmpty());
}

TEST_F(BridgeLeaveAllTest, AnAgentsLeaveAllGoesOutAtOnceOnThatPortOnly) {
  Bridge& sw = bridgeWithEndsNew(MrpApplication::msrp);
  clock->advance(1);
  leaveAlls.clear();
  sw.leaveAllIs("p3");
  EXPECT_EQ(leaveAlls, leaveAllOfEveryType("p3", MrpApplication::msrp));
  EXPECT_THROW(sw.leaveAllIs("p9"), std::invalid_argument);
}

class MsrpBridgeLineTest : public BridgeLineTest {
 protected:
  MsrpBridgeLineTest() : BridgeLineTest({MrpApplication::msrp}) {}
};

Mrp::MsrpTalkerAdvertiseAttribute talker(std::uint64_t streamId) {
  return {streamId, Mrp::DataFrameParameters(Velo::EthAddr(0x91, 0xe0, 0xf0, 0, 0xfe, 1), 2), Mrp::Tspec(100, 1),
          Mrp::PriorityAndRank(3, 1), 1000};
}

TEST_F(MsrpBridgeLineTest, EveryPortHasTheBridgesDomain) {
  clock->advance(1);
  EXPECT_TRUE(heard("sw1:p1 +6"));
  EXPECT_TRUE(heard("sw1:p2 +6"));
  EXPECT_TRUE(heard("h1:e0 +6"));
}

TEST_F(MsrpBridgeLineTest, ATalkerReachesEveryEndStationAndListenersGoBackTowardsIt) {
  h1.declare(AttributeValue(talker(7)), "e0");
  clock->advance(1);
  EXPECT_TRUE(heard("h2:e0 +7"));
  EXPECT_TRUE(heard("h3:e0 +7"));
  recorder.lines.clear();
  h2.declare(AttributeValue(Mrp::MsrpListenerAttribute(7, Mrp::MsrpListenerEvent::ready)), "e0");
  h3.declare(AttributeValue(Mrp::MsrpListenerAttribute(7, Mrp::MsrpListenerEvent::askingFailed)), "e0");
  clock->advance(1);
  // Listeners flow towards the talker only, merged where they meet.
  EXPECT_TRUE(heard("sw2:p2 +7"));
  EXPECT_TRUE(heard("sw2:p3 +7"));
  EXPECT_TRUE(heard("h1:e0 +7"));
  EXPECT_FALSE(heard("h3:e0 +7")) << "a listener is not declared away from the talker";
  const auto registrations = h1.registrations();
  const auto listener = std::find_if(registrations.begin(), registrations.end(),
                                     [](const auto& r) { return r.value.attributeType() == 3; });
  ASSERT_NE(listener, registrations.end());
  EXPECT_EQ(listener->registrar, Mrp::MrpRegistrarState::in);
}

// The value a bridge's port registered for an MSRP attribute type and stream.
std::optional<AttributeValue> registeredValue(const Bridge& bridge, const std::string& port, std::uint8_t type,
                                              std::uint64_t key) {
  for (const auto& r : bridge.registrations()) {
    if (r.port == port && r.value.attributeType() == type && r.value.attributeKey() == key &&
        r.registrar == Mrp::MrpRegistrarState::in) {
      return r.value;
    }
  }
  return std::nullopt;
}

// The declaration of the Listener a bridge's port registered for a stream:
// the engine stores only the stream id, the bridge keeps what it heard.
std::optional<Mrp::MsrpListenerEvent> listenerHeard(const Bridge& bridge, const std::string& port,
                                                    std::uint64_t streamId) {
  const MrpAgent::StreamTable table = bridge.streamTable();
  for (const auto& stream : table.streams) {
    if (stream.streamId != streamId) continue;
    for (const auto& row : stream.ports) {
      if (row.port == port) return row.listener;
    }
  }
  return std::nullopt;
}

TEST_F(MsrpBridgeLineTest, AStreamIsReservedOnEveryHopTowardsAReadyListenerWithItsLatencyAdded) {
  h1.declare(AttributeValue(talker(7)), "e0");
  h2.declare(AttributeValue(Mrp::MsrpListenerAttribute(7, Mrp::MsrpListenerEvent::ready)), "e0");
  h3.declare(AttributeValue(Mrp::MsrpListenerAttribute(7, Mrp::MsrpListenerEvent::askingFailed)), "e0");
  clock->advance(1);
  // 100-octet frames, one per 125 us: 9,088,000 bit/s of 750 Mb/s.
  EXPECT_TRUE(heard("sw1:p2 reserved 7 A 9088000 of 750000000"));
  EXPECT_TRUE(heard("sw2:p2 reserved 7 A 9088000 of 750000000"));
  EXPECT_FALSE(heard("sw2:p3 reserved 7 A 9088000 of 750000000")) << "h3 asks, it is not ready";
  // Two hops of one 1542-octet frame at 1 Gb/s each.
  Mrp::MsrpTalkerAdvertiseAttribute atListener = talker(7);
  atListener.accumulatedLatencyIs(1000 + 2 * 12'336);
  EXPECT_EQ(registeredValue(h2, "e0", 1, 7), AttributeValue(atListener));
  // Ready on one port and asking on the other: readyFailed towards the talker.
  EXPECT_EQ(listenerHeard(h1, "e0", 7), Mrp::MsrpListenerEvent::readyFailed);
  const MrpAgent::StreamTable table = sw2.streamTable();
  ASSERT_EQ(table.streams.size(), 1u);
  EXPECT_EQ(table.streams[0].talkerPort, "p1");
  ASSERT_EQ(table.streams[0].ports.size(), 2u);
  EXPECT_TRUE(table.streams[0].ports[0].reserved);
  EXPECT_EQ(table.streams[0].ports[0].bandwidth, 9'088'000u);
  EXPECT_FALSE(table.streams[0].ports[1].reserved);
  ASSERT_EQ(table.classes.size(), 1u);
  EXPECT_EQ(table.classes[0].port, "p2");
  EXPECT_EQ(table.classes[0].shaper, (MrpAgent::CbsParameters{9'088'000, -990'912'000, 15, -141}));
}

TEST_F(MsrpBridgeLineTest, AListenersChangeOfMindIsHeardAndMergedOnTheWayToTheTalker) {
  h1.declare(AttributeValue(talker(7)), "e0");
  h2.declare(AttributeValue(Mrp::MsrpListenerAttribute(7, Mrp::MsrpListenerEvent::askingFailed)), "e0");
  clock->advance(1);
  EXPECT_EQ(listenerHeard(h1, "e0", 7), Mrp::MsrpListenerEvent::askingFailed);
  recorder.lines.clear();
  h2.declare(AttributeValue(Mrp::MsrpListenerAttribute(7, Mrp::MsrpListenerEvent::ready)), "e0");
  clock->advance(1);
  EXPECT_TRUE(heard("sw2:p2 listener 7 ready"));
  EXPECT_TRUE(heard("sw2:p2 reserved 7 A 9088000 of 750000000"));
  EXPECT_TRUE(heard("sw1:p2 listener 7 ready"));
  EXPECT_TRUE(heard("sw1:p2 reserved 7 A 9088000 of 750000000"));
  EXPECT_TRUE(heard("h1:e0 listener 7 ready"));
  EXPECT_FALSE(heard("h1:e0 +7")) << "the registration was not made again, only its declaration changed";
}

// An end station's talker is admitted on its own port as a bridge's is.
TEST_F(MsrpBridgeLineTest, ATalkerWithoutAnSrClassPriorityIsRefusedWhereItIsDeclaredAndPassedOnAsItCame) {
  Mrp::MsrpTalkerAdvertiseAttribute background = talker(9);
  background.priorityAndRankIs(Mrp::PriorityAndRank(0, 1));
  h1.declare(AttributeValue(background), "e0");
  h2.declare(AttributeValue(Mrp::MsrpListenerAttribute(9, Mrp::MsrpListenerEvent::ready)), "e0");
  clock->advance(1);
  EXPECT_TRUE(heard("h1:e0 failed 9 code 13"));
  EXPECT_FALSE(heard("sw1:p2 failed 9 code 13")) << "a Talker Failed is passed on, not refused again";
  const std::optional<AttributeValue> failed = registeredValue(h2, "e0", 2, 9);
  ASSERT_TRUE(failed);
  EXPECT_EQ(std::get<Mrp::MsrpTalkerFailedAttribute>(failed->record()).failureInformation(),
            Mrp::FailureInformation(h1.bridgeId(), 13));
  EXPECT_EQ(listenerHeard(h1, "e0", 9), Mrp::MsrpListenerEvent::askingFailed);
  EXPECT_EQ(std::count_if(recorder.lines.begin(), recorder.lines.end(),
                          [](const std::string& line) { return line.find(" reserved ") != std::string::npos; }),
            0);
}

}  // namespace
}  // namespace MrpTest
