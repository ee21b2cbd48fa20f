// `mrp agent` on real Linux ports: agents in network namespaces of the
// test's own, joined by veth pairs, in real time. Each wait polls `mrp ctl`
// up to the deadline the behaviour promises.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <signal.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "format/CaptureReader.h"
#include "support/AgentProcess.h"
#include "support/HttpGet.h"
#include "support/NetNamespace.h"
#include "support/RawSocket.h"
#include "support/TempDir.h"
#include "support/Tshark.h"

namespace MrpTest {
namespace {

constexpr double kLeaveTime = 0.2;
constexpr double kLeaveAllTime = 1.0;
// Short periods keep the waits short.
const std::string kFastConfig = R"({"leaveTime": 0.2, "leaveAllTime": 1.0})";
// A LeaveAll period no wait here reaches: what leaves, leaves by its Lv.
const std::string kNoLeaveAllConfig = R"({"leaveTime": 0.2, "leaveAllTime": 30.0})";
const std::string kVlan10 = R"({"app": "mvrp", "vlan": 10})";
const std::string kVlans20 = R"({"app": "mvrp", "vlans": "20-22"})";
// Stream 00:1b:21:00:00:01:00:01 (A's) and ...:02 (B's); their keys in decimal.
const std::string kTalkerA = R"({"app": "msrp", "talkerAdvertise": {"streamId": "00:1b:21:00:00:01:00:01",
  "destination": "91:e0:f0:00:fe:01", "vlan": 2, "maxFrameSize": 100, "maxIntervalFrames": 1, "priority": 3,
  "rank": 1, "latency": 1000}})";
const std::string kTalkerB = R"({"app": "msrp", "talkerAdvertise": {"streamId": "00:1b:21:00:00:01:00:02",
  "destination": "91:e0:f0:00:fe:02", "vlan": 2, "maxFrameSize": 200, "maxIntervalFrames": 1, "priority": 3,
  "rank": 1, "latency": 1000}})";
const std::string kStreamA = "7636108254969857";
const std::string kStreamB = "7636108254969858";
const std::string kListenerB = R"({"port": "b0", "app": "msrp", "listener": {"streamId": "00:1b:21:00:00:01:00:01",
  "declaration": "ready"}})";
constexpr std::uint16_t kMvrpEtherType = 0x88f5;
constexpr std::uint16_t kMsrpEtherType = 0x22ea;

// Agent A on a0 in one namespace, agent B on b0 in another; a0 - b0 is a
// veth pair.
class AgentNamespaceTest : public ::testing::Test {
 protected:
  void SetUp() override {
    MRP_REQUIRE_NET_NAMESPACE(nsA);
    MRP_REQUIRE_NET_NAMESPACE(nsB);
    ASSERT_TRUE(nsA.ip("link add a0 type veth peer name b0 netns " + nsB.name())) << nsA.error();
    ASSERT_TRUE(nsA.ip("link set a0 up") && nsB.ip("link set b0 up")) << nsA.error() << nsB.error();
  }

  std::unique_ptr<AgentProcess> agentIn(const NetNamespace& ns, const std::vector<std::string>& ports,
                                        const std::string& config = kFastConfig) {
    auto agent = std::make_unique<AgentProcess>(ports, "", config, ns.name());
    EXPECT_TRUE(agent->ready()) << agent->process().err();
    return agent;
  }
  // A and B on a0 and b0, both ports up.
  void agentsUp(const std::string& config = kFastConfig) {
    a = agentIn(nsA, {"a0"}, config);
    b = agentIn(nsB, {"b0"}, config);
    ASSERT_TRUE(a->portsUp({"a0"}) && b->portsUp({"b0"}));
  }
  // What a bridge always holds: its own SR class domain on every port, and
  // its neighbour's.
  static bool registersNothing(const AgentProcess& agent) {
    const std::vector<std::string> lines = agent.registrations();
    return std::all_of(lines.begin(), lines.end(), [](const std::string& line) {
      return line.find(" msrp 4 6 ") != std::string::npos;
    });
  }
  void declareOn(const AgentProcess& agent, const std::string& attribute, const char* command = "declare") {
    const MrpRun run = agent.ctl({command, attribute});
    ASSERT_EQ(run.status, 0) << run.err;
  }

  NetNamespace nsA;
  NetNamespace nsB;
  std::unique_ptr<AgentProcess> a;
  std::unique_ptr<AgentProcess> b;
};

// A tshark capture on one interface of a namespace, running until stop().
class Capture {
 public:
  Capture(const NetNamespace& ns, const std::string& interface)
      : tshark_({"ip", "netns", "exec", ns.name(), "tshark", "-n", "-i", interface, "-w", dir_.file("capture.pcapng")}) {}

  bool started() {
    return secondsUntil(10, [this] { return tshark_.err().find("Capturing on") != std::string::npos; }).has_value();
  }
  std::vector<std::vector<std::uint8_t>> stop() {
    tshark_.signal(SIGINT);
    EXPECT_EQ(tshark_.exitStatus(10), 0) << tshark_.err();
    MrpCli::CaptureReader reader(dir_.file("capture.pcapng"));
    EXPECT_TRUE(reader.ok()) << reader.error();
    std::vector<std::vector<std::uint8_t>> frames;
    while (auto frame = reader.next()) frames.push_back(frame->bytes);
    return frames;
  }

 private:
  TempDir dir_;
  ChildProcess tshark_;
};

TEST_F(AgentNamespaceTest, AVlanDeclaredOnARegistersOnBWithinASecondAndLeavesWithinTheLeaveTime) {
  requireTshark();
  Capture capture(nsB, "b0");
  ASSERT_TRUE(capture.started());
  agentsUp();

  ChildProcess ctl({MRP_PROGRAM, "ctl", "--control", a->controlPath(), "declare", kVlan10});
  ASSERT_EQ(ctl.exitStatus(5), 0) << ctl.err();
  EXPECT_EQ(ctl.out(), "declared VLAN 10 on every port\n");
  EXPECT_TRUE(secondsUntil(1, [&] { return b->registers("b0 mvrp 1 10 IN"); })) << b->process().out();

  declareOn(*a, kVlan10, "withdraw");
  EXPECT_TRUE(secondsUntil(kLeaveTime + 1, [&] { return registersNothing(*b); })) << b->process().out();
  EXPECT_THAT(b->process().out(), ::testing::HasSubstr("b0    mvrp  join VLAN 10"));
  EXPECT_THAT(b->process().out(), ::testing::HasSubstr("b0    mvrp  leave VLAN 10"));

  const auto frames = capture.stop();
  ASSERT_GE(frames.size(), 2u) << "a declaration and its withdrawal at least";
  const auto dissected = tsharkDissect(frames);
  std::size_t mvrp = 0;
  for (std::size_t i = 0; i < dissected.size(); ++i) {
    for (const DissectedField& field : dissected[i]) {
      EXPECT_NE(field.name, "_ws.malformed") << "frame " << i;
      if (field.name == "mrp-mvrp") ++mvrp;
    }
  }
  EXPECT_GE(mvrp, 2u);
}

TEST_F(AgentNamespaceTest, WhenAIsKilledBForgetsWhatItHeardWithinTheLeaveAllBound) {
  agentsUp();
  declareOn(*a, kVlan10);
  ASSERT_TRUE(secondsUntil(1, [&] { return b->registers("b0 mvrp 1 10 IN"); }));
  a->process().signal(SIGKILL);
  EXPECT_TRUE(secondsUntil(1.5 * kLeaveAllTime + kLeaveTime + 1, [&] { return registersNothing(*b); }))
      << b->process().out();
}

TEST_F(AgentNamespaceTest, SigtermMakesAWithdrawBeforeItExits) {
  agentsUp(kNoLeaveAllConfig);
  declareOn(*a, kVlan10);
  ASSERT_TRUE(secondsUntil(1, [&] { return b->registers("b0 mvrp 1 10 IN"); }));
  a->process().signal(SIGTERM);
  EXPECT_TRUE(secondsUntil(kLeaveTime + 1, [&] { return registersNothing(*b); })) << b->process().out();
  EXPECT_EQ(a->process().exitStatus(5), 0) << a->process().err();
}

// An untagged port receiving tagged MRPDUs: the tag is accepted and taken
// off before the MRPDU is read. The test sends them from the veth's far end.
TEST_F(AgentNamespaceTest, TaggedMrpdusReachingAnUntaggedPortAreAccepted) {
  ASSERT_TRUE(nsB.vethAdd("t0", "u0")) << nsB.error();
  b = agentIn(nsB, {"t0"});
  ASSERT_TRUE(b->portsUp({"t0"}));
  ASSERT_EQ(b->ctl({"trace", "MrpSm/7"}).status, 0);
  const RawSocket farEnd("u0");  // this thread is in B's namespace, made last
  // To the MVRP address, VLAN tag 100, then an MVRP PDU: VLAN 10, JoinIn.
  const RawSocket::Bytes frame = {0x01, 0x80, 0xc2, 0x00, 0x00, 0x21, 0x02, 0x00, 0x00, 0x00, 0x00, 0x01,
                                  0x81, 0x00, 0x00, 0x64, 0x88, 0xf5, 0x00, 0x01, 0x02, 0x00, 0x01, 0x00,
                                  0x0a, 0x24, 0x00, 0x00, 0x00, 0x00};
  ASSERT_TRUE(farEnd.send(frame));
  EXPECT_TRUE(secondsUntil(1, [&] { return b->registers("t0 mvrp 1 10 IN"); })) << b->process().err();
  EXPECT_THAT(b->process().err(), ::testing::HasSubstr("MrpSm/7 Received 802.1Q-tagged frame with VLAN ID 100\n"));
  const std::string counters = b->ctl({"counters"}).out;
  EXPECT_THAT(counters, ::testing::HasSubstr("t0    frames received                  1     0\n"));
  EXPECT_THAT(counters, ::testing::HasSubstr("      dropped: wrong EtherType         0     0\n"));
}

// B has a second port, b9, towards an end station H in a third namespace;
// b9 comes into being, goes down, comes back and is deleted while B runs.
TEST_F(AgentNamespaceTest, APortThatComesGoesAndReturnsIsOpenedClosedAndCleanedUp) {
  NetNamespace nsH;
  MRP_REQUIRE_NET_NAMESPACE(nsH);
  a = agentIn(nsA, {"a0"});
  b = agentIn(nsB, {"b0", "b9"});
  const auto h = agentIn(nsH, {"h0"});
  // No speed to read of an interface that is not there.
  EXPECT_THAT(b->ctl({"ports"}).out, ::testing::HasSubstr("b9    absent  1 Gb/s (default)  closed  closed\n"));
  declareOn(*h, R"({"port": "h0", "app": "mvrp", "vlan": 30})");

  ASSERT_TRUE(nsB.ip("link add b9 type veth peer name h0 netns " + nsH.name()));
  ASSERT_TRUE(nsB.ip("link set b9 up") && nsH.ip("link set h0 up"));
  EXPECT_TRUE(secondsUntil(3, [&] { return a->registers("a0 mvrp 1 30 IN"); })) << b->process().out();
  EXPECT_TRUE(b->registers("b9 mvrp 1 30 IN"));
  // Read again when it comes up: a veth's 10 Gb/s.
  EXPECT_THAT(b->ctl({"ports"}).out, ::testing::HasSubstr("b9    up     10 Gb/s (kernel)  open  open\n"));

  ASSERT_TRUE(nsB.ip("link set b9 down"));
  EXPECT_TRUE(secondsUntil(kLeaveTime + 1.5, [&] { return !a->registers("a0 mvrp 1 30 IN"); }));
  EXPECT_FALSE(b->registers("b9 mvrp 1 30 IN"));
  EXPECT_THAT(b->process().out(), ::testing::HasSubstr("b9          port down"));

  ASSERT_TRUE(nsB.ip("link set b9 up"));
  EXPECT_TRUE(secondsUntil(3, [&] { return a->registers("a0 mvrp 1 30 IN"); })) << h->process().out();

  ASSERT_TRUE(nsB.ip("link del b9"));
  EXPECT_TRUE(secondsUntil(kLeaveTime + 1.5, [&] { return !a->registers("a0 mvrp 1 30 IN"); }));
  EXPECT_THAT(b->process().out(), ::testing::HasSubstr("b9          port absent"));
  EXPECT_THAT(b->ctl({"ports"}).out, ::testing::HasSubstr("b9    absent  10 Gb/s (kernel)  closed  closed\n"));
  for (AgentProcess* agent : {a.get(), b.get(), h.get()}) {
    EXPECT_TRUE(agent->process().running()) << agent->process().err();
  }
}

// Whether a process has ended (a zombie nobody reaped yet counts as ended).
bool processGone(pid_t pid) {
  std::ifstream stat("/proc/" + std::to_string(pid) + "/stat");
  const std::string text((std::istreambuf_iterator<char>(stat)), std::istreambuf_iterator<char>());
  const std::size_t close = text.rfind(')');
  return close == std::string::npos || text.compare(close, 3, ") Z") == 0;
}

// Both agents run both applications, each in a worker process of its own:
// each application hears its own frames, both ways.
TEST_F(AgentNamespaceTest, VlansAndTalkersTravelBothWaysAndAListenerAnswers) {
  requireTshark();
  Capture capture(nsB, "b0");
  ASSERT_TRUE(capture.started());
  agentsUp();

  declareOn(*a, kVlan10);
  declareOn(*a, kTalkerA);
  declareOn(*b, kVlans20);
  declareOn(*b, kTalkerB);
  EXPECT_TRUE(secondsUntil(1, [&] {
    return b->registers("b0 mvrp 1 10 IN") && b->registers("b0 msrp 1 " + kStreamA + " IN");
  })) << b->process().out();
  EXPECT_TRUE(secondsUntil(1, [&] {
    return a->registers("a0 mvrp 1 20 IN") && a->registers("a0 mvrp 1 22 IN") &&
           a->registers("a0 msrp 1 " + kStreamB + " IN");
  })) << a->process().out();

  declareOn(*b, kListenerB);
  EXPECT_TRUE(secondsUntil(1, [&] { return a->registers("a0 msrp 3 " + kStreamA + " IN"); })) << a->process().out();
  EXPECT_THAT(a->process().out(), ::testing::HasSubstr("a0    msrp  join listener 00:1b:21:00:00:01:00:01 ready"));
  EXPECT_THAT(a->process().out(), ::testing::HasSubstr("a0    mvrp  join VLANs 20-22"));
  EXPECT_THAT(b->process().out(), ::testing::HasSubstr("*     mvrp  declare VLANs 20-22\n"));

  declareOn(*a, R"({"app": "msrp", "talkerAdvertise": {"streamId": "00:1b:21:00:00:01:00:01"}})", "withdraw");
  declareOn(*b, kVlans20, "withdraw");
  EXPECT_TRUE(secondsUntil(kLeaveTime + 1, [&] { return !b->registers("b0 msrp 1 " + kStreamA + " IN"); }));
  EXPECT_TRUE(secondsUntil(kLeaveTime + 1, [&] { return !a->registers("a0 mvrp 1 21 IN"); }));
  EXPECT_TRUE(b->registers("b0 mvrp 1 10 IN"));

  const auto frames = capture.stop();
  std::set<std::uint16_t> etherTypes;
  for (const auto& frame : frames) {
    if (frame.size() >= 14) etherTypes.insert(static_cast<std::uint16_t>(frame[12] << 8 | frame[13]));
  }
  EXPECT_EQ(etherTypes, (std::set<std::uint16_t>{kMvrpEtherType, kMsrpEtherType}));
  const auto dissected = tsharkDissect(frames);
  for (std::size_t i = 0; i < dissected.size(); ++i) {
    for (const DissectedField& field : dissected[i]) EXPECT_NE(field.name, "_ws.malformed") << "frame " << i;
  }
}

TEST_F(AgentNamespaceTest, AWorkerThatIsKilledIsReportedAndComesBackWithItsDeclarations) {
  agentsUp(kNoLeaveAllConfig);
  declareOn(*a, kTalkerA);
  ASSERT_TRUE(secondsUntil(1, [&] { return b->registers("b0 msrp 1 " + kStreamA + " IN"); }));
  const auto worker = a->workerPid("msrp");
  ASSERT_TRUE(worker);
  ASSERT_EQ(kill(*worker, SIGKILL), 0);

  EXPECT_TRUE(secondsUntil(5, [&] {
    const auto again = a->workerPid("msrp");
    return again && *again != *worker && a->registrations().size() >= 2;
  })) << a->process().err();
  EXPECT_THAT(a->process().err(),
              ::testing::HasSubstr("mrp agent: msrp worker was killed by signal 9 (Killed); starting it again in 1 s\n"));
  EXPECT_THAT(a->process().err(), ::testing::HasSubstr("mrp agent: msrp worker started again (pid "));
  // Its declaration is made again: the talker is declared on a0 (and B
  // still has it).
  EXPECT_TRUE(secondsUntil(2, [&] {
    const auto lines = a->registrations();
    return std::any_of(lines.begin(), lines.end(),
                       [](const std::string& line) { return line.rfind("a0 msrp 1 " + kStreamA + " ", 0) == 0; });
  })) << a->process().out();
  EXPECT_TRUE(b->registers("b0 msrp 1 " + kStreamA + " IN"));
  EXPECT_TRUE(a->process().running());
}

TEST_F(AgentNamespaceTest, WorkersGoWithTheirSupervisorEvenWhenItIsKilled) {
  agentsUp(kNoLeaveAllConfig);
  declareOn(*a, kVlan10);
  ASSERT_TRUE(secondsUntil(1, [&] { return b->registers("b0 mvrp 1 10 IN"); }));
  const auto mvrp = a->workerPid("mvrp");
  const auto msrp = a->workerPid("msrp");
  ASSERT_TRUE(mvrp && msrp);
  a->process().signal(SIGKILL);
  EXPECT_TRUE(secondsUntil(2, [&] { return processGone(*mvrp) && processGone(*msrp); }));
  // They withdrew as they went: B forgets within its leave time.
  EXPECT_TRUE(secondsUntil(kLeaveTime + 1, [&] { return registersNothing(*b); })) << b->process().out();
}

TEST_F(AgentNamespaceTest, SigtermWithdrawalsAreInTheLog) {
  agentsUp(kNoLeaveAllConfig);
  declareOn(*a, kVlans20);
  ASSERT_TRUE(secondsUntil(1, [&] { return b->registers("b0 mvrp 1 22 IN"); }));
  a->process().signal(SIGTERM);
  EXPECT_EQ(a->process().exitStatus(5), 0) << a->process().err();
  EXPECT_THAT(a->process().out(), ::testing::HasSubstr("a0    mvrp  withdraw VLANs 20-22"));
  EXPECT_THAT(a->process().out(), ::testing::HasSubstr("a0    msrp  withdraw domain class 6 (priority 3, VLAN 2)"));
}

// B's port comes up after A declared: B's LeaveAll on the new port has A
// declare again at once, long before A's next LeaveAll.
TEST_F(AgentNamespaceTest, APortThatComesUpHearsWhatItsNeighbourDeclaredAtOnce) {
  ASSERT_TRUE(nsB.ip("link set b0 down"));
  a = agentIn(nsA, {"a0"}, kNoLeaveAllConfig);
  b = agentIn(nsB, {"b0"}, kNoLeaveAllConfig);
  declareOn(*a, kVlan10);
  ASSERT_TRUE(nsB.ip("link set b0 up"));
  ASSERT_TRUE(b->portsUp({"b0"}));
  EXPECT_TRUE(secondsUntil(1, [&] { return b->registers("b0 mvrp 1 10 IN"); })) << b->process().out();
}

TEST(AgentPrivilegeTest, WithoutPrivilegeTheAgentStopsWithOneLine) {
  TempDir dir;
  ChildProcess agent({"setpriv", "--reuid=nobody", "--regid=nogroup", "--clear-groups", "--inh-caps=-all", MRP_PROGRAM,
                      "agent", "--ports", "eth1", "--control", dir.file("agent.sock")});
  EXPECT_EQ(agent.exitStatus(5), 1);
  EXPECT_EQ(agent.err(),
            "mrp agent: eth1: cannot open a packet socket: Operation not permitted (run as root or with CAP_NET_RAW "
            "and CAP_NET_ADMIN)\n");
}

// What `mrp ctl streams --json` answers, or null when it cannot be read.
nlohmann::json streamsOf(const AgentProcess& agent) {
  const MrpRun run = agent.ctl({"streams", "--json"});
  const auto json = nlohmann::json::parse(run.out, nullptr, false);
  return run.status == 0 && json.is_object() && json.contains("streams") ? json : nlohmann::json();
}

// A's stream on a0, reserved once B's Listener is Ready.
bool reservedOnA0(const nlohmann::json& streams) {
  if (streams.is_null() || streams["streams"].size() != 1) return false;
  for (const auto& row : streams["streams"][0]["ports"]) {
    if (row.value("port", "") == "a0" && row.value("reserved", false)) return true;
  }
  return false;
}

TEST_F(AgentNamespaceTest, ATalkerOnAAndAListenerOnBAreAReservationThatBothStreamTablesShow) {
  agentsUp();
  declareOn(*a, kTalkerA);
  declareOn(*b, kListenerB);
  EXPECT_TRUE(secondsUntil(1, [&] { return reservedOnA0(streamsOf(*a)); })) << a->process().out();

  const nlohmann::json atA = streamsOf(*a);
  ASSERT_FALSE(atA.is_null());
  const auto& row = atA["streams"][0]["ports"][0];
  EXPECT_EQ(atA["streams"][0]["streamId"], "00:1b:21:00:00:01:00:01");
  EXPECT_EQ(row["listener"], "ready");
  EXPECT_EQ(row["class"], "A");
  EXPECT_EQ(row["bandwidth"], 9088000);
  // The veth's speed, as the kernel gives it: 10 Gb/s, 75% of it for class A.
  ASSERT_EQ(atA["classes"].size(), 1u);
  EXPECT_EQ(atA["classes"][0]["port"], "a0");
  EXPECT_EQ(atA["classes"][0]["limit"], 7'500'000'000ULL);
  EXPECT_THAT(atA["classes"][0]["tc"].get<std::string>(),
              ::testing::StartsWith("tc qdisc replace dev a0 parent 100:1 cbs idleslope 9088 sendslope -9990912 "));
  EXPECT_THAT(a->ctl({"streams"}).out, ::testing::HasSubstr("00:1b:21:00:00:01:00:01"));
  EXPECT_THAT(a->process().out(), ::testing::HasSubstr("reserved stream 00:1b:21:00:00:01:00:01"));

  // B: the talker heard on b0, B's Listener Ready towards it.
  const nlohmann::json atB = streamsOf(*b);
  ASSERT_FALSE(atB.is_null());
  ASSERT_EQ(atB["streams"].size(), 1u);
  EXPECT_EQ(atB["streams"][0]["talkerPort"], "b0");
  EXPECT_EQ(atB["streams"][0]["talker"], "advertise");
  EXPECT_EQ(atB["streams"][0]["listenerDeclared"], "ready");
  EXPECT_THAT(b->ctl({"streams"}).out, ::testing::HasSubstr("00:1b:21:00:00:01:00:01"));

  const MrpRun ports = a->ctl({"ports", "--json"});
  const auto portsJson = nlohmann::json::parse(ports.out, nullptr, false);
  ASSERT_TRUE(portsJson.is_object()) << ports.out;
  EXPECT_EQ(portsJson["ports"][0]["speed"], 10'000'000'000ULL);
  EXPECT_EQ(portsJson["ports"][0]["speedFrom"], "kernel");
}

// The samples of a Prometheus text exposition by series ("name{labels}");
// empty when it cannot be had.
std::map<std::string, double> scrape(std::uint16_t port) {
  std::map<std::string, double> samples;
  const std::optional<std::string> text = httpGet(port, "/metrics");
  if (!text) return samples;
  std::istringstream lines(*text);
  for (std::string line; std::getline(lines, line);) {
    const std::size_t space = line.rfind(' ');
    if (line.empty() || line[0] == '#' || space == std::string::npos) continue;
    samples[line.substr(0, space)] = std::stod(line.substr(space + 1));
  }
  return samples;
}

double sampleOr(const std::map<std::string, double>& samples, const std::string& series, double otherwise = -1) {
  const auto it = samples.find(series);
  return it != samples.end() ? it->second : otherwise;
}

// Each application's port counters add up to what its engine counted.
void expectPortsAddUpToTheEngines(const nlohmann::json& counters) {
  const std::pair<const char*, std::vector<const char*>> sums[] = {
      {"numOfPktsProcessed", {"framesReceived"}},
      {"numOfPktsTransmitted", {"framesSent"}},
      {"numOfJoinIndications", {"joinIndications"}},
      {"numOfLeaveIndications", {"leaveIndications"}},
      {"numOfIncorrectDmac", {"dropped", "wrongDestination"}},
      {"numOfIncorrectEtype", {"dropped", "wrongEtherType"}},
      {"numOfIncorrectPduVersion", {"dropped", "badVersion"}},
      {"numOfMalformedPkts", {"dropped", "malformed"}},
      {"numOfUnknownAttributeType", {"dropped", "unknownType"}},
      {"numOfUnknownApplication", {"dropped", "unknownApplication"}},
  };
  ASSERT_EQ(counters["applications"].size(), 2u) << counters.dump();
  for (const auto& application : counters["applications"]) {
    for (const auto& [engineCounter, path] : sums) {
      std::uint64_t total = 0;
      for (const auto& port : counters["ports"]) {
        if (port["app"] != application["app"]) continue;
        const nlohmann::json* value = &port;
        for (const char* key : path) value = &(*value)[key];
        total += value->get<std::uint64_t>();
      }
      EXPECT_EQ(total, application["engine"][engineCounter].get<std::uint64_t>())
          << application["app"] << " " << engineCounter;
    }
  }
}

TEST_F(AgentNamespaceTest, MetricsOfTheLoopbackAndTheCountersOfCtlTellTheSame) {
  constexpr std::uint16_t kMetricsPort = 9477;
  // The test's thread is in B's namespace, where the agent serves its metrics.
  ASSERT_TRUE(nsB.ip("link set lo up")) << nsB.error();
  a = agentIn(nsA, {"a0"}, kNoLeaveAllConfig);
  b = std::make_unique<AgentProcess>(std::vector<std::string>{"b0"}, "", kNoLeaveAllConfig, nsB.name(),
                                     std::vector<std::string>{"--metrics", "127.0.0.1:" + std::to_string(kMetricsPort)});
  ASSERT_TRUE(b->ready()) << b->process().err();
  ASSERT_TRUE(a->portsUp({"a0"}) && b->portsUp({"b0"}));

  declareOn(*a, kVlan10);
  declareOn(*b, kTalkerB);
  declareOn(*a, R"({"port": "a0", "app": "msrp", "listener": {"streamId": "00:1b:21:00:00:01:00:02",
    "declaration": "ready"}})");
  const std::string vlans = R"(mrp_registrations{port="b0",app="mvrp",type="vlan"})";
  const std::string streams = R"(mrp_streams_reserved{port="b0",app="msrp",class="A"})";
  const std::string bandwidth = R"(mrp_reserved_bandwidth_bytes_per_second{port="b0",app="msrp",class="A"})";
  std::map<std::string, double> samples;
  EXPECT_TRUE(secondsUntil(2, [&] {
    samples = scrape(kMetricsPort);
    return sampleOr(samples, vlans) == 1 && sampleOr(samples, streams) == 1;
  })) << b->process().out() << b->process().err();

  const MrpRun counters = b->ctl({"counters", "--json"});
  ASSERT_EQ(counters.status, 0) << counters.err;
  const auto json = nlohmann::json::parse(counters.out, nullptr, false);
  ASSERT_TRUE(json.is_object()) << counters.out;
  expectPortsAddUpToTheEngines(json);
  for (const auto& port : json["ports"]) {
    const std::string series = "{port=\"b0\",app=\"" + port["app"].get<std::string>() + "\"}";
    EXPECT_GT(port["framesReceived"].get<double>(), 0) << series;
    EXPECT_GT(port["joinIndications"].get<double>(), 0) << series;
    EXPECT_GE(port["framesSent"].get<double>(), 1) << series;
    // Scraped before: nothing counts down.
    EXPECT_LE(sampleOr(samples, "mrp_frames_received_total" + series), port["framesReceived"].get<double>());
    EXPECT_LE(sampleOr(samples, "mrp_frames_transmitted_total" + series), port["framesSent"].get<double>());
  }
  // The reservation, as the stream table gives it: bit/s there, bytes/s here.
  const auto classes = streamsOf(*b)["classes"];
  ASSERT_EQ(classes.size(), 1u);
  EXPECT_EQ(sampleOr(samples, bandwidth), classes[0]["reserved"].get<double>() / 8);
  EXPECT_EQ(json["ports"][1]["reservations"][0]["bandwidth"], classes[0]["reserved"]);
  EXPECT_EQ(sampleOr(samples, R"(mrp_worker_restarts_total{app="msrp"})"), 0);
  const std::string table = b->ctl({"counters"}).out;
  EXPECT_THAT(table, ::testing::HasSubstr("registered: VLAN                 1     -"));
  EXPECT_THAT(table, ::testing::HasSubstr("streams reserved, class A        -     1"));

  // A withdraws the VLAN: one leave indication on B, and it is no longer registered.
  declareOn(*a, kVlan10, "withdraw");
  EXPECT_TRUE(secondsUntil(kLeaveTime + 2, [&] {
    samples = scrape(kMetricsPort);
    return sampleOr(samples, R"(mrp_leave_indications_total{port="b0",app="mvrp"})") == 1 &&
           sampleOr(samples, vlans, 0) == 0;
  })) << b->process().out();
  const MrpRun after = b->ctl({"counters", "--json"});
  expectPortsAddUpToTheEngines(nlohmann::json::parse(after.out, nullptr, false));

  // The web server's threads leave SIGTERM to the agent, which stops as always.
  b->process().signal(SIGTERM);
  EXPECT_EQ(b->process().exitStatus(10), 0) << b->process().err();
  EXPECT_THAT(b->process().out(), ::testing::HasSubstr("withdraw talker 00:1b:21:00:00:01:00:02"));
}

}  // namespace
}  // namespace MrpTest
