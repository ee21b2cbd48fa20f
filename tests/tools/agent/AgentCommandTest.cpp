// `mrp agent`'s options and their keys in the configuration file: the file
// alone runs the agent, the command line wins over it, and what is wrong
// with either is one line and status 2. The ports do not exist here, so no
// packet socket is opened.

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <signal.h>
#include <unistd.h>

#include <fstream>
#include <string>
#include <vector>

#include "support/ChildProcess.h"
#include "support/MrpRun.h"
#include "support/TempDir.h"

namespace MrpTest {
namespace {

constexpr double kStartSeconds = 5;
constexpr double kExitSeconds = 5;

class AgentCommandTest : public ::testing::Test {
 protected:
  AgentCommandTest() {
    std::ofstream(configFile) << R"({"ports": {"mrpnone1": {}, "mrpnone0": {"leaveTime": 0.3}}, "apps": ["msrp"],
                                     "control": ")" << fileSocket << R"(", "json": true})";
  }

  // What `mrp ctl ports --json` at `socket` says once it answers: each
  // port with the applications that have a socket on it.
  static std::vector<std::string> portsAt(const std::string& socket) {
    MrpRun run{};
    secondsUntil(kStartSeconds, [&] {
      run = mrp({"ctl", "--control", socket, "ports", "--json"});
      return run.status == 0;
    });
    std::vector<std::string> ports;
    if (run.status != 0) return ports;
    const auto answer = nlohmann::json::parse(run.out);
    for (const auto& port : answer["ports"]) {
      std::string line = port["port"];
      for (const auto& [app, state] : port["sockets"].items()) line += " " + app;
      ports.push_back(line);
    }
    return ports;
  }

  static void stop(ChildProcess& agent) {
    agent.signal(SIGTERM);
    EXPECT_EQ(agent.exitStatus(kExitSeconds), 0) << agent.err();
  }

  TempDir dir;
  const std::string configFile = dir.file("agent.json");
  const std::string fileSocket = dir.file("file.sock");
};

TEST_F(AgentCommandTest, TheFileAloneNamesThePortsInItsOrderTheAppsTheControlSocketAndTheLog) {
  ChildProcess agent({MRP_PROGRAM, "agent", "--config", configFile});
  EXPECT_EQ(portsAt(fileSocket), (std::vector<std::string>{"mrpnone1 msrp", "mrpnone0 msrp"})) << agent.err();
  ASSERT_TRUE(secondsUntil(kStartSeconds, [&] { return agent.out().find("mrpnone0") != std::string::npos; }));
  const auto first = nlohmann::json::parse(agent.out().substr(0, agent.out().find('\n')));
  EXPECT_EQ(first["port"], "mrpnone1");
  stop(agent);
}

TEST_F(AgentCommandTest, TheCommandLineWinsOverTheFile) {
  const std::string cliSocket = dir.file("cli.sock");
  ChildProcess agent({MRP_PROGRAM, "agent", "--config", configFile, "--ports", "mrpnone0,mrpnone1,mrpnone2", "--apps", "mvrp",
                      "--control", cliSocket});
  EXPECT_EQ(portsAt(cliSocket), (std::vector<std::string>{"mrpnone0 mvrp", "mrpnone1 mvrp", "mrpnone2 mvrp"})) << agent.err();
  EXPECT_NE(access(fileSocket.c_str(), F_OK), 0);
  stop(agent);
}

struct BadStart {
  std::vector<std::string> args;  // after "agent"; FILE is the configuration file
  std::string config;
  std::string error;  // FILE is the configuration file
};

class AgentCommandErrorTest : public ::testing::TestWithParam<BadStart> {};

std::string withFile(std::string text, const std::string& file) {
  for (auto at = text.find("FILE"); at != std::string::npos; at = text.find("FILE", at + file.size())) {
    text.replace(at, 4, file);
  }
  return text;
}

TEST_P(AgentCommandErrorTest, IsOneLineAndStatusTwo) {
  TempDir dir;
  std::ofstream(dir.file("agent.json")) << GetParam().config;
  std::vector<std::string> args{"agent", "--control", dir.file("agent.sock")};
  for (const std::string& arg : GetParam().args) args.push_back(withFile(arg, dir.file("agent.json")));
  const MrpRun run = mrp(args);
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err, withFile(GetParam().error, dir.file("agent.json")) + "\n");
  EXPECT_NE(access(dir.file("agent.sock").c_str(), F_OK), 0);
}

const std::string kTryHelp = " (try 'mrp agent --help')";

INSTANTIATE_TEST_SUITE_P(
    BadStarts, AgentCommandErrorTest,
    ::testing::Values(
        BadStart{{}, "{}", "mrp agent: --ports is required" + kTryHelp},
        BadStart{{"--ports", "eth1,eth2,eth1"}, "{}", "mrp agent: --ports: 'eth1' is named twice" + kTryHelp},
        BadStart{{"--ports", "eth1", "--metrics", "localhost"}, "{}",
                 "mrp agent: --metrics: 'localhost' is not ADDR:PORT (e.g. 127.0.0.1:9464 or "
                 "localhost:9464)" + kTryHelp},
        BadStart{{"--ports", "eth1", "--metrics", "[::1]:9464"}, "{}",
                 "mrp agent: --metrics: '[::1]:9464': the metrics are served over IPv4 only" + kTryHelp},
        BadStart{{"--ports", "eth1", "--metrics", "127.0.0.1:70000"}, "{}",
                 "mrp agent: --metrics: '127.0.0.1:70000': the port is not a number 1-65535" + kTryHelp},
        BadStart{{"--config", "/nonexistent/agent.json"}, "{}",
                 "mrp agent: cannot open '/nonexistent/agent.json': No such file or directory"},
        BadStart{{"--config", "/"}, "{}", "mrp agent: '/' is a directory"},
        BadStart{{"--config", "FILE"}, R"({"leaveTime": 0.3})",
                 "mrp agent: FILE: no ports (name them under \"ports\" or with --ports)"},
        BadStart{{"--config", "FILE"}, R"({"ports": {"eth1": {}, "eth1": {}}})",
                 "mrp agent: FILE: ports.eth1: named twice"},
        BadStart{{"--config", "FILE", "--ports", "eth2"}, R"({"ports": {"eth1": {}}})",
                 "mrp agent: FILE: ports.eth1: not one of the agent's ports (eth2)"},
        BadStart{{"--config", "FILE"}, R"({"ports": {"eth1": {"leaveAllTime": 0}}})",
                 "mrp agent: FILE: ports.eth1.leaveAllTime: 0 is not a period (more than 0 seconds is needed)"},
        BadStart{{"--config", "FILE", "--metrics", "127.0.0.1:9464"}, R"({"ports": {"eth1": {}}, "metrics": ":1"})",
                 "mrp agent: FILE: metrics: ':1' is not ADDR:PORT (e.g. 127.0.0.1:9464 or "
                 "localhost:9464)"}));

}  // namespace
}  // namespace MrpTest
