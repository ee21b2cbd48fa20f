#include "format/AgentConfigReader.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace MrpTest {
namespace {

using MrpCli::agentConfigFromJson;

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
