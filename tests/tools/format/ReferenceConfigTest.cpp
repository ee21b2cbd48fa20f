// The reference configuration installed beside the documentation
// (dist/agent.json): every key the agent reads, each at its default, and
// nothing the agent would refuse.

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "format/AgentConfigReader.h"

namespace MrpTest {
namespace {

std::string referenceText() {
  std::ifstream in(std::string(MRP_SOURCE_DIR) + "/dist/agent.json");
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

TEST(ReferenceConfigTest, HoldsEveryKey) {
  std::vector<std::string> keys;
  const auto reference = nlohmann::ordered_json::parse(referenceText());
  for (const auto& [key, value] : reference.items()) keys.push_back(key);
  EXPECT_EQ(keys, (std::vector<std::string>{"ports", "apps", "control", "json", "metrics", "leaveTime", "leaveAllTime",
                                            "flooding", "bridgeId", "portSpeed", "portLatency", "domains", "srp"}));
}

TEST(ReferenceConfigTest, HasTheAgentsDefaultsOnTwoExamplePorts) {
  const MrpCli::AgentSettings settings = MrpCli::agentSettingsFromJson(referenceText(), {});
  const MrpCli::AgentSettings defaults;
  EXPECT_EQ(settings.ports, (std::vector<std::string>{"eth1", "eth2"}));
  EXPECT_EQ(settings.applications, defaults.applications);
  EXPECT_EQ(settings.controlPath, defaults.controlPath);
  EXPECT_EQ(settings.json, defaults.json);
  EXPECT_EQ(settings.metricsAddress, defaults.metricsAddress);
}

TEST(ReferenceConfigTest, HasTheBridgesDefaults) {
  const MrpAgent::BridgeConfig config = MrpCli::agentConfigFromJson(referenceText(), {"eth1", "eth2"});
  const MrpAgent::BridgeConfig defaults;
  EXPECT_DOUBLE_EQ(config.leaveTime, defaults.leaveTime);
  EXPECT_DOUBLE_EQ(config.leaveAllTime, defaults.leaveAllTime);
  EXPECT_TRUE(config.portLeaveTime.empty());
  EXPECT_TRUE(config.portLeaveAllTime.empty());
  EXPECT_EQ(config.flooding, defaults.flooding);
  EXPECT_EQ(config.msrpDomains, defaults.msrpDomains);
  EXPECT_EQ(config.bridgeId, defaults.bridgeId);
  EXPECT_TRUE(config.portSpeed.empty());
  EXPECT_TRUE(config.portLatency.empty());
  EXPECT_EQ(config.deltaBandwidth, defaults.deltaBandwidth);
}

}  // namespace
}  // namespace MrpTest
