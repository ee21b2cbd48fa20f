#include "AgentConfigReader.h"

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
        BadConfig{R"({"leaveTime": 0.2,)",
                  "not JSON: parse error at line 1, column 19: syntax error while parsing object key - unexpected end "
                  "of input; expected string literal"}));

}  // namespace
}  // namespace MrpTest
