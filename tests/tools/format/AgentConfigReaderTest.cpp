#include "format/AgentConfigReader.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace MrpTest {
namespace {

using MrpCli::AgentSettings;
using MrpCli::agentConfigFromJson;
using MrpCli::agentSettingsFromJson;

const std::vector<std::string> kPorts = {"eth1", "eth2"};

TEST(AgentConfigReaderTest, ReadsTheTimesPerPortTimesAndFlooding) {
  const MrpAgent::BridgeConfig config = agentConfigFromJson(
      R"({"leaveTime": 0.2, "leaveAllTime": 1.5, "flooding": true,
          "ports": {"eth2": {"leaveTime": 0.3, "leaveAllTime": 4}}})",
      kPorts);
  EXPECT_DOUBLE_EQ(config.leaveTime, 0.2);
  EXPECT_DOUBLE_EQ(config.leaveAllTime, 1.5);
  EXPECT_TRUE(config.flooding);
  EXPECT_EQ(config.portLeaveTime, (std::map<std::string, Quarn::Seconds>{{"eth2", 0.3}}));
  EXPECT_EQ(config.portLeaveAllTime, (std::map<std::string, Quarn::Seconds>{{"eth2", 4.0}}));
}

TEST(AgentConfigReaderTest, AnEmptyObjectKeepsTheDefaults) {
  const MrpAgent::BridgeConfig config = agentConfigFromJson("{}", kPorts);
  EXPECT_DOUBLE_EQ(config.leaveTime, Mrp::MrpConfig::kDefaultLeaveTime);
  EXPECT_DOUBLE_EQ(config.leaveAllTime, Mrp::MrpConfig::kDefaultLeaveAllTime);
  EXPECT_FALSE(config.flooding);
  EXPECT_TRUE(config.portLeaveTime.empty());
}

TEST(AgentConfigReaderTest, ReadsTheStreamReservationKeys) {
  const MrpAgent::BridgeConfig config = agentConfigFromJson(
      R"({"bridgeId": "80:00:02:00:00:00:00:01", "portSpeed": {"eth2": 100000000}, "portLatency": {"eth1": 20000},
          "domains": [{"classId": 6, "priority": 3, "vid": 2}, {"classId": 5, "priority": 2, "vid": 2}],
          "srp": {"deltaBandwidth": {"A": 50, "B": 25}}})",
      kPorts);
  EXPECT_EQ(config.bridgeId, 0x8000020000000001ULL);
  EXPECT_EQ(config.speedOf("eth2"), 100'000'000u);
  EXPECT_EQ(config.speedOf("eth1"), 1'000'000'000u);
  EXPECT_EQ(config.latencyOf("eth1"), 20'000u);
  EXPECT_EQ(config.latencyOf("eth2"), 123'360u);
  EXPECT_EQ(config.msrpDomains,
            (std::vector<Mrp::MsrpDomainAttribute>{Mrp::MsrpDomainAttribute(6, 3, 2), Mrp::MsrpDomainAttribute(5, 2, 2)}));
  EXPECT_EQ(config.deltaBandwidth, (MrpAgent::DeltaBandwidth{50, 25}));
}

TEST(AgentConfigReaderTest, AStationWithoutSrClassesDeclaresNoDomainAndAPartialShareKeepsTheOther) {
  const MrpAgent::BridgeConfig config =
      agentConfigFromJson(R"({"domains": [], "srp": {"deltaBandwidth": {"B": 10}}})", kPorts);
  EXPECT_TRUE(config.msrpDomains.empty());
  EXPECT_EQ(config.deltaBandwidth, (MrpAgent::DeltaBandwidth{75, 10}));
  EXPECT_EQ(agentConfigFromJson("{}", kPorts).deltaBandwidth, MrpAgent::kDefaultDeltaBandwidth);
}

TEST(AgentConfigReaderTest, ABridgeIdOfNullIsTheDefault) {
  EXPECT_EQ(agentConfigFromJson(R"({"bridgeId": null})", kPorts).bridgeId, std::nullopt);
}

TEST(AgentSettingsReaderTest, ReadsEveryKeyOfTheAgentItself) {
  const AgentSettings settings = agentSettingsFromJson(
      R"({"ports": {"eth2": {"leaveTime": 0.3}, "eth1": {"leaveTime": 0.3}}, "apps": ["msrp"],
          "control": "/tmp/agent.sock", "json": true, "metrics": "127.0.0.1:9464", "leaveTime": 0.3})",
      {});
  EXPECT_EQ(settings.ports, (std::vector<std::string>{"eth2", "eth1"}));
  EXPECT_EQ(settings.applications, (std::vector<std::string>{"msrp"}));
  EXPECT_EQ(settings.controlPath, "/tmp/agent.sock");
  EXPECT_TRUE(settings.json);
  EXPECT_EQ(settings.metricsAddress, "127.0.0.1:9464");
}

TEST(AgentSettingsReaderTest, WhatTheFileLeavesOutHasItsDefault) {
  const AgentSettings settings = agentSettingsFromJson(R"({"ports": {"eth1": {}}, "metrics": null})", {});
  EXPECT_EQ(settings.ports, (std::vector<std::string>{"eth1"}));
  EXPECT_EQ(settings.applications, (std::vector<std::string>{"mvrp", "msrp"}));
  EXPECT_EQ(settings.controlPath, "/run/mrp/agent.sock");
  EXPECT_FALSE(settings.json);
  EXPECT_EQ(settings.metricsAddress, std::nullopt);
}

TEST(AgentSettingsReaderTest, PortsGivenAreThePortsAndTheFileMayTimeSomeOfThem) {
  EXPECT_EQ(agentSettingsFromJson("{}", kPorts).ports, kPorts);
  EXPECT_EQ(agentSettingsFromJson(R"({"ports": {"eth2": {"leaveAllTime": 2}}})", kPorts).ports, kPorts);
}

struct BadSettings {
  std::string text;
  std::vector<std::string> ports;  // the command line's
  std::string error;
};

class AgentSettingsErrorTest : public ::testing::TestWithParam<BadSettings> {};

TEST_P(AgentSettingsErrorTest, NamesThePlaceOfTheFault) {
  try {
    agentSettingsFromJson(GetParam().text, GetParam().ports);
    FAIL() << "accepted: " << GetParam().text;
  } catch (const MrpCli::JsonInputError& error) {
    EXPECT_EQ(std::string(error.what()), GetParam().error);
  }
}

const std::string kPeriod = "0 is not a period (more than 0 seconds is needed)";

INSTANTIATE_TEST_SUITE_P(
    BadFiles, AgentSettingsErrorTest,
    ::testing::Values(
        BadSettings{"{}", {}, "no ports (name them under \"ports\" or with --ports)"},
        BadSettings{R"({"ports": {}})", {}, "no ports (name them under \"ports\" or with --ports)"},
        BadSettings{R"({"ports": {"eth1": {}, "eth1": {"leaveTime": 1}}})", {}, "ports.eth1: named twice"},
        BadSettings{R"({"ports": {"eth1": {}}, "json": true, "json": false})", {}, "json: named twice"},
        BadSettings{R"({"ports": {"eth1": {}}, "domains": [{"classId": 6}, {"classId": 5, "classId": 6}]})", {},
                    "domains[1].classId: named twice"},
        BadSettings{R"({"ports": {"a/b": {}}})", {}, "ports.a/b: 'a/b' is not an interface name"},
        BadSettings{R"({"ports": {"eth3": {}}})", kPorts, "ports.eth3: not one of the agent's ports (eth1, eth2)"},
        BadSettings{R"({"ports": ["eth1"]})", {}, "ports: an object is needed"},
        BadSettings{R"({"apps": []})", kPorts, "apps: an application is needed (msrp or mvrp)"},
        BadSettings{R"({"apps": "mvrp"})", kPorts, "apps: a list is needed"},
        BadSettings{R"({"apps": ["mvrp", "gvrp"]})", kPorts, "apps[1]: unknown application 'gvrp' (msrp or mvrp)"},
        BadSettings{R"({"apps": [2]})", kPorts, "apps[0]: a string is needed"},
        BadSettings{R"({"control": ""})", kPorts, "control: a path is needed"},
        BadSettings{R"({"control": null})", kPorts, "control: a string is needed"},
        BadSettings{R"({"json": "yes"})", kPorts, "json: true or false is needed"},
        BadSettings{R"({"metrics": 9464})", kPorts, "metrics: a string is needed"},
        BadSettings{R"({"metrics": "localhost"})", kPorts,
                    "metrics: 'localhost' is not ADDR:PORT (e.g. 127.0.0.1:9464 or localhost:9464)"},
        BadSettings{R"({"metrics": "127.0.0.1:0"})", kPorts, "metrics: '127.0.0.1:0': the port is not a number 1-65535"},
        BadSettings{R"({"leaveTime": 0})", kPorts, "leaveTime: " + kPeriod},
        BadSettings{R"({"leaveAllTime": 0})", kPorts, "leaveAllTime: " + kPeriod},
        BadSettings{R"({"leaveAllTime": -1})", kPorts, "leaveAllTime: -1 is not a time (seconds, 0 or more)"},
        BadSettings{R"({"ports": {"eth1": {"leaveTime": 0}}})", {}, "ports.eth1.leaveTime: " + kPeriod},
        BadSettings{R"({"ports": {"eth1": {"leaveAllTime": 0.0}}})", {}, "ports.eth1.leaveAllTime: " + kPeriod},
        BadSettings{R"({"ports": {"eth1": {}}, "portSpeed": {"eth2": 1000000}})", {},
                    "portSpeed.eth2: not one of the bridge's ports (eth1)"},
        BadSettings{R"({"metric": null})", kPorts, "metric: unknown field"}));

struct BadConfig {
  std::string text;
  std::string error;
};

class AgentConfigErrorTest : public ::testing::TestWithParam<BadConfig> {};

TEST_P(AgentConfigErrorTest, NamesThePlaceOfTheFault) {
  try {
    agentConfigFromJson(GetParam().text, kPorts);
    FAIL() << "accepted: " << GetParam().text;
  } catch (const MrpCli::JsonInputError& error) {
    EXPECT_EQ(std::string(error.what()), GetParam().error);
  }
}

INSTANTIATE_TEST_SUITE_P(
    BadFiles, AgentConfigErrorTest,
    ::testing::Values(
        BadConfig{R"({"leaveTime": 0.2, "leavetime": 1})", "leavetime: unknown field"},
        BadConfig{R"({"ports": {"eth1": {"leaveAll": 1}}})", "ports.eth1.leaveAll: unknown field"},
        BadConfig{R"({"ports": {"eth3": {"leaveTime": 1}}})", "ports.eth3: not one of the agent's ports (eth1, eth2)"},
        BadConfig{R"({"leaveTime": -1})", "leaveTime: -1 is not a time (seconds, 0 or more)"},
        BadConfig{R"({"leaveAllTime": "10"})", "leaveAllTime: a number of seconds is needed"},
        BadConfig{R"({"flooding": 1})", "flooding: true or false is needed"},
        BadConfig{R"({"ports": ["eth1"]})", "ports: an object is needed"},
        BadConfig{R"([])", "an object is needed"},
        BadConfig{R"({"bridgeId": "80:00:02"})",
                  "bridgeId: not a bridge id (eight hex octets, e.g. 80:00:02:00:00:00:00:01)"},
        BadConfig{R"({"portSpeed": {"eth3": 1000}})", "portSpeed.eth3: not one of the bridge's ports (eth1, eth2)"},
        BadConfig{R"({"portSpeed": {"eth1": 0}})", "portSpeed.eth1: 0 is not a speed in bit/s (1000000..1000000000000)"},
        BadConfig{R"({"portLatency": {"eth1": -5}})", "portLatency.eth1: -5 is not a latency in ns (0..4294967295)"},
        BadConfig{R"({"domains": [{"classId": 4, "priority": 3, "vid": 2}]})",
                  "domains[0].classId: not an SR class this bridge knows (6 for A, 5 for B)"},
        BadConfig{R"({"domains": [{"classId": 6, "priority": 3, "vid": 2}, {"classId": 6, "priority": 4, "vid": 2}]})",
                  "domains[1]: a second domain of SR class id 6"},
        BadConfig{R"({"domains": [{"classId": 6, "priority": 3, "vid": 2}, {"classId": 5, "priority": 3, "vid": 2}]})",
                  "domains[1].priority: priority 3 is SR class id 6's already"},
        BadConfig{R"({"domains": [{"classId": 6, "priority": 8, "vid": 2}]})",
                  "domains[0].priority: 8 is not a priority (0..7)"},
        BadConfig{R"({"srp": {"deltaBandwidth": {"A": 80, "B": 30}}})",
                  "srp.deltaBandwidth: the classes' shares add up to 110%, more than the port"},
        BadConfig{R"({"srp": {"deltaBandwidth": {"C": 10}}})", "srp.deltaBandwidth.C: unknown field"},
        BadConfig{R"({"srp": {"delta": {}}})", "srp.delta: unknown field"},
        BadConfig{R"({"leaveTime": 0.2,)",
                  "not JSON: parse error at line 1, column 19: syntax error while parsing object key - unexpected end "
                  "of input; expected string literal"}));

}  // namespace
}  // namespace MrpTest
