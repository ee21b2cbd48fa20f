// `mrp agent` and `mrp ctl` as programs: the control socket's requests, good
// and bad, and how the agent starts and stops. The agent's ports do not
// exist here, so no packet socket is opened.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "control/ControlAnswer.h"
#include "ctl/ControlClient.h"
#include "support/AgentProcess.h"

namespace MrpTest {
namespace {

constexpr double kExitSeconds = 5;

class AgentControlTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(agent.ready()) << agent.process().err(); }

  // The agent's answer to a raw request line.
  MrpCli::ControlAnswer answerTo(const std::string& request) const {
    const auto answer = MrpCli::ControlAnswer::fromLine(MrpCli::controlExchange(agent.controlPath(), request));
    return answer.value_or(MrpCli::ControlAnswer::failure("not an answer"));
  }
  // The agent still runs and answers.
  void expectRunning() {
    EXPECT_TRUE(agent.process().running());
    EXPECT_EQ(agent.ctl({"show"}).status, 0);
  }

  AgentProcess agent{{"mrpnone0", "mrpnone1"}, "mvrp,msrp"};
};

struct BadRequest {
  std::string request;
  std::string error;
};

class AgentBadRequestTest : public AgentControlTest, public ::testing::WithParamInterface<BadRequest> {};

TEST_P(AgentBadRequestTest, GetsItsErrorAndTheAgentKeepsRunning) {
  const MrpCli::ControlAnswer answer = answerTo(GetParam().request);
  EXPECT_FALSE(answer.ok);
  EXPECT_EQ(answer.error, GetParam().error);
  expectRunning();
  EXPECT_THAT(agent.process().err(), ::testing::HasSubstr("mrp agent: control: request refused: " + GetParam().error));
}

INSTANTIATE_TEST_SUITE_P(
    ControlSocket, AgentBadRequestTest,
    ::testing::Values(
        BadRequest{R"({"command": "show", )",
                   "not JSON: parse error at line 1, column 21: syntax error while parsing object key - unexpected end of "
                   "input; expected string literal"},
        BadRequest{R"({"command": "reboot"})",
                   "command: unknown command 'reboot' (declare, withdraw, show, counters, ports, streams, trace)"},
        BadRequest{R"({"command": "declare", "attribute": {"port": "eth7", "app": "mvrp", "vlan": 10}})",
                   "attribute.port: no port 'eth7' (mrpnone0, mrpnone1)"},
        BadRequest{R"({"command": "declare", "attribute": {"app": "mvrp", "vlan": 4095}})",
                   "attribute.vlan: 4095 is not a VLAN id (1..4094)"},
        BadRequest{R"({"command": "declare", "attribute": {"app": "msrp", "domain": {"classId": 6, "priority": 8, "vid": 2}}})",
                   "attribute.domain.priority: 8 is not a priority (0..7)"}));

TEST_F(AgentControlTest, AClientThatDisconnectsMidRequestLeavesTheAgentRunning) {
  const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path, agent.controlPath().data(), agent.controlPath().size());
  ASSERT_EQ(connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  const std::string partial = R"({"command": "decl)";
  ASSERT_EQ(send(fd, partial.data(), partial.size(), MSG_NOSIGNAL), static_cast<ssize_t>(partial.size()));
  close(fd);
  EXPECT_TRUE(secondsUntil(5, [&] {
    return agent.process().err().find("control: a client left in the middle of its request") != std::string::npos;
  }));
  expectRunning();
}

TEST_F(AgentControlTest, MrpCtlPrintsTheRefusalOnOneLineAndFails) {
  const MrpRun run = agent.ctl({"declare", R"({"app": "mvrp", "vlan": 5000})"});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err, "mrp ctl: attribute.vlan: 5000 is not a VLAN id (1..4094)\n");
  const MrpRun unknown = agent.ctl({"reboot"});
  EXPECT_EQ(unknown.status, 2);
  EXPECT_EQ(unknown.err, "mrp ctl: unknown command 'reboot' (declare, withdraw, show, counters, ports, streams, trace)\n");
  expectRunning();
}

TEST_F(AgentControlTest, MrpCtlRefusesArgumentsThatMakeNoRequest) {
  EXPECT_EQ(agent.ctl({"declare", "{vlan"}).err,
            "mrp ctl: ATTRIBUTE: not JSON: parse error at line 1, column 2: syntax error while parsing object key - "
            "invalid literal; last read: "
            "'{v'; expected string literal\n");
  EXPECT_EQ(agent.ctl({"declare"}).status, 2);
  EXPECT_EQ(agent.ctl({"show", "all"}).err, "mrp ctl: show takes no argument\n");
  EXPECT_EQ(agent.ctl({"trace"}).status, 2);
}

TEST_F(AgentControlTest, ADeclarationOnAPortThatIsAbsentIsKeptAndCanBeWithdrawn) {
  const MrpRun declared = agent.ctl({"declare", R"({"port": "mrpnone1", "app": "mvrp", "vlan": 10})"});
  EXPECT_EQ(declared.status, 0) << declared.err;
  EXPECT_EQ(declared.out, "declared VLAN 10 on mrpnone1\n");
  const MrpRun wrongPort = agent.ctl({"withdraw", R"({"port": "mrpnone0", "app": "mvrp", "vlan": 10})"});
  EXPECT_EQ(wrongPort.status, 1);
  EXPECT_EQ(wrongPort.err, "mrp ctl: nothing to withdraw: VLAN 10 is not declared on mrpnone0\n");
  const MrpRun withdrawn = agent.ctl({"withdraw", R"({"port": "mrpnone1", "app": "mvrp", "vlan": 10})", "--json"});
  EXPECT_EQ(withdrawn.status, 0) << withdrawn.err;
  EXPECT_EQ(withdrawn.out,
            R"({"withdrawn": [{"app": "mvrp", "port": "mrpnone1", "type": 1, "key": "10", "value": "000a", "vlan": 10}]})"
            "\n");
}

// One rule for the exit status: 1 when the request was not carried out, 2
// when mrp ctl was used wrongly; with --json the error is a JSON line too.
struct CtlFailure {
  std::vector<std::string> args;
  int status;
  std::string error;
};

class MrpCtlJsonErrorTest : public AgentControlTest, public ::testing::WithParamInterface<CtlFailure> {};

TEST_P(MrpCtlJsonErrorTest, IsOneJsonLineOnStdoutWithItsStatus) {
  std::vector<std::string> args = GetParam().args;
  args.push_back("--json");
  const MrpRun run = agent.ctl(args);
  EXPECT_EQ(run.status, GetParam().status);
  EXPECT_EQ(run.err, "");
  const auto json = nlohmann::json::parse(run.out, nullptr, false);
  ASSERT_TRUE(json.is_object()) << run.out;
  EXPECT_EQ(json["ok"], false);
  EXPECT_EQ(json["error"], GetParam().error);
  EXPECT_EQ(run.out.back(), '\n');
  EXPECT_EQ(std::count(run.out.begin(), run.out.end(), '\n'), 1);
}

INSTANTIATE_TEST_SUITE_P(
    Failures, MrpCtlJsonErrorTest,
    ::testing::Values(CtlFailure{{"declare", R"({"app": "mvrp", "vlan": 5000})"}, 1,
                                 "attribute.vlan: 5000 is not a VLAN id (1..4094)"},
                      CtlFailure{{"withdraw", R"({"app": "mvrp", "vlan": 7})"}, 1,
                                 "nothing to withdraw: VLAN 7 is not declared on every port"},
                      CtlFailure{{"reboot"}, 2, "unknown command 'reboot' (declare, withdraw, show, counters, ports, streams, trace)"},
                      CtlFailure{{"declare"}, 2, "declare needs an attribute, e.g. '{\"app\": \"mvrp\", \"vlan\": 10}'"},
                      CtlFailure{{"show", "all"}, 2, "show takes no argument"}));

TEST_F(AgentControlTest, AVlanListIsDeclaredAndWithdrawnAsOneRequest) {
  const MrpRun declared = agent.ctl({"declare", R"({"app": "mvrp", "vlans": "100-110, 200"})"});
  EXPECT_EQ(declared.status, 0) << declared.err;
  EXPECT_EQ(declared.out, "declared VLANs 100-110, 200 on every port\n");
  const MrpRun some = agent.ctl({"withdraw", R"({"app": "mvrp", "vlans": "105-110, 300"})"});
  EXPECT_EQ(some.status, 0) << some.err;
  EXPECT_EQ(some.out, "withdrew VLANs 105-110 on every port\n");
  const MrpRun none = agent.ctl({"withdraw", R"({"app": "mvrp", "vlans": "105-106"})"});
  EXPECT_EQ(none.status, 1);
  EXPECT_EQ(none.err, "mrp ctl: nothing to withdraw: VLANs 105-106 is not declared on every port\n");
}

TEST_F(AgentControlTest, ATalkerIsWithdrawnByItsStreamIdAlone) {
  const MrpRun declared = agent.ctl({"declare", R"({"port": "mrpnone0", "app": "msrp", "talkerAdvertise": {
    "streamId": "00:1b:21:00:00:01:00:01", "destination": "91:e0:f0:00:fe:01", "vlan": 2, "maxFrameSize": 100,
    "maxIntervalFrames": 1, "priority": 3, "rank": 1, "latency": 1000}})"});
  ASSERT_EQ(declared.status, 0) << declared.err;
  const std::string byStream = R"({"port": "mrpnone0", "app": "msrp", "talkerAdvertise": {"streamId": "00:1b:21:00:00:01:00:01"}})";
  const MrpRun withdrawn = agent.ctl({"withdraw", byStream});
  EXPECT_EQ(withdrawn.status, 0) << withdrawn.err;
  EXPECT_EQ(withdrawn.out, "withdrew talker 00:1b:21:00:00:01:00:01 (91:e0:f0:00:fe:01, VLAN 2) on mrpnone0\n");
  const MrpRun again = agent.ctl({"withdraw", byStream});
  EXPECT_EQ(again.status, 1);
  EXPECT_EQ(again.err, "mrp ctl: nothing to withdraw: no talker 00:1b:21:00:00:01:00:01 is declared on mrpnone0\n");
}

TEST_F(AgentControlTest, PortsCountersAndAnEmptyTable) {
  // An absent interface has no speed the kernel can tell.
  EXPECT_EQ(agent.ctl({"ports"}).out,
            "port      state   speed             mvrp    msrp\n"
            "mrpnone0  absent  1 Gb/s (default)  closed  closed\n"
            "mrpnone1  absent  1 Gb/s (default)  closed  closed\n");
  EXPECT_EQ(agent.ctl({"show"}).out, "(none)\n");
  EXPECT_EQ(agent.ctl({"show", "--json"}).out, "{\"registrations\": []}\n");
  const MrpRun counters = agent.ctl({"counters", "--json"});
  EXPECT_THAT(counters.out, ::testing::StartsWith(R"({"ports": [{"port": "mrpnone0", "app": "mvrp", "framesReceived": 0,)"));
  EXPECT_THAT(counters.out, ::testing::HasSubstr(R"({"app": "msrp", "workerRestarts": 0, "engine": {"numOfIncorrectPduVersion": 0,)"));
  const std::string table = agent.ctl({"counters"}).out;
  EXPECT_THAT(table, ::testing::StartsWith("port      counter                          mvrp  msrp\n"
                                           "mrpnone0  frames received                  0     0\n"));
  EXPECT_THAT(table, ::testing::HasSubstr("\nmrpnone1  frames received                  0     0\n"));
  EXPECT_THAT(table, ::testing::EndsWith("\n          worker restarts                  0     0\n"));
  EXPECT_EQ(agent.ctl({"streams", "--json"}).out, "{\"streams\": [], \"classes\": []}\n");
}

TEST_F(AgentControlTest, TraceLevelsAreSetWhileItRuns) {
  const MrpRun set = agent.ctl({"trace", "MrpSm/0-9"});
  EXPECT_EQ(set.status, 0) << set.err;
  EXPECT_EQ(set.out, "trace levels MrpSm/0-9\n");
  EXPECT_EQ(agent.ctl({"trace", "off"}).status, 0);
  const MrpRun bad = agent.ctl({"trace", "MrpSm/x"});
  EXPECT_EQ(bad.status, 1);
  EXPECT_EQ(bad.err,
            "mrp ctl: levels: 'MrpSm/x' is not a trace selection (e.g. MrpSm/0-9,Velo/4 or */0-4; off for none)\n");
}

TEST_F(AgentControlTest, SigtermAndSigintEndItWithStatusZeroAndTakeTheSocketAlong) {
  agent.process().signal(SIGTERM);
  EXPECT_EQ(agent.process().exitStatus(kExitSeconds), 0);
  EXPECT_NE(access(agent.controlPath().c_str(), F_OK), 0);

  AgentProcess second({"mrpnone0"});
  ASSERT_TRUE(second.ready());
  second.process().signal(SIGINT);
  EXPECT_EQ(second.process().exitStatus(kExitSeconds), 0);
}

TEST_F(AgentControlTest, ASecondAgentOnTheSameSocketDoesNotStart) {
  const MrpRun run = mrp({"agent", "--ports", "mrpnone0", "--control", agent.controlPath()});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "mrp agent: control socket '" + agent.controlPath() +
                         "': another process answers there: Address already in use\n");
  expectRunning();
}

TEST(AgentStartTest, AnUnknownKeyInTheConfigurationFileIsNamedAndNothingRuns) {
  TempDir dir;
  std::ofstream(dir.file("config.json")) << R"({"leaveTime": 0.2, "ports": {"eth1": {"leaveAlltime": 1}}})";
  const MrpRun run = mrp({"agent", "--ports", "eth1", "--config", dir.file("config.json"), "--control",
                          dir.file("agent.sock")});
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err, "mrp agent: " + dir.file("config.json") + ": ports.eth1.leaveAlltime: unknown field\n");
  EXPECT_NE(access(dir.file("agent.sock").c_str(), F_OK), 0);
}

TEST(AgentStartTest, AWorkerStartedByHandSaysWhatItIsForAndStops) {
  ChildProcess worker({MRP_PROGRAM, "agent-worker", "msrp"});
  EXPECT_EQ(worker.exitStatus(5), 2);
  EXPECT_EQ(worker.err(), "mrp agent-worker: runs only as a worker that mrp agent starts\n");
}

TEST(AgentStartTest, MrpCtlWithoutAnAgentSaysWhereItLooked) {
  TempDir dir;
  const MrpRun run = mrp({"ctl", "--control", dir.file("none.sock"), "show"});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "mrp ctl: cannot reach the agent at " + dir.file("none.sock") + ": No such file or directory\n");
}

TEST(AgentStartTest, MrpCtlAtAFileThatIsNoSocketSaysSo) {
  TempDir dir;
  std::ofstream(dir.file("agent.json")) << "{}";
  const MrpRun run = mrp({"ctl", "--control", dir.file("agent.json"), "show"});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "mrp ctl: cannot reach the agent at " + dir.file("agent.json") +
                         ": not a socket (the agent listens where its --control says)\n");
}

}  // namespace
}  // namespace MrpTest
