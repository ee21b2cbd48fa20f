#include "agent/AgentArguments.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace MrpTest {
namespace {

using MrpCli::AgentArguments;
using MrpCli::AgentSettings;

AgentSettings fileSettings() {
  AgentSettings file;
  file.ports = {"eth1", "eth2"};
  file.applications = {"msrp"};
  file.controlPath = "/run/file.sock";
  file.json = true;
  file.metricsAddress = "127.0.0.1:9464";
  return file;
}

struct Precedence {
  std::string name;
  AgentArguments arguments;
  AgentSettings expected;
};

class AgentArgumentsTest : public ::testing::TestWithParam<Precedence> {};

TEST_P(AgentArgumentsTest, TheCommandLineWinsOverTheFile) {
  const AgentSettings settings = GetParam().arguments.over(fileSettings());
  const AgentSettings& expected = GetParam().expected;
  EXPECT_EQ(settings.ports, expected.ports);
  EXPECT_EQ(settings.applications, expected.applications);
  EXPECT_EQ(settings.controlPath, expected.controlPath);
  EXPECT_EQ(settings.json, expected.json);
  EXPECT_EQ(settings.metricsAddress, expected.metricsAddress);
}

AgentSettings fileWith(void (*change)(AgentSettings&)) {
  AgentSettings settings = fileSettings();
  change(settings);
  return settings;
}

AgentArguments given(void (*change)(AgentArguments&)) {
  AgentArguments arguments;
  change(arguments);
  return arguments;
}

INSTANTIATE_TEST_SUITE_P(
    Options, AgentArgumentsTest,
    ::testing::Values(
        Precedence{"NoneGiven", {}, fileSettings()},
        Precedence{"Ports", given([](AgentArguments& a) { a.ports = {"eth3"}; }), fileWith([](AgentSettings& s) { s.ports = {"eth3"}; })},
        Precedence{"Apps", given([](AgentArguments& a) { a.applications = {"mvrp", "msrp"}; }),
                   fileWith([](AgentSettings& s) { s.applications = {"mvrp", "msrp"}; })},
        Precedence{"Control", given([](AgentArguments& a) { a.controlPath = "/tmp/cli.sock"; }),
                   fileWith([](AgentSettings& s) { s.controlPath = "/tmp/cli.sock"; })},
        // --json has no "off": the file's true stays.
        Precedence{"Json", given([](AgentArguments& a) { a.json = true; }), fileSettings()},
        Precedence{"Metrics", given([](AgentArguments& a) { a.metricsAddress = "127.0.0.2:9100"; }),
                   fileWith([](AgentSettings& s) { s.metricsAddress = "127.0.0.2:9100"; })}),
    [](const auto& info) { return info.param.name; });

TEST(AgentArgumentsJsonTest, TheFlagTurnsJsonOnOverAFileThatLeavesItOff) {
  EXPECT_TRUE(given([](AgentArguments& a) { a.json = true; }).over(AgentSettings{}).json);
  EXPECT_FALSE(AgentArguments{}.over(AgentSettings{}).json);
}

}  // namespace
}  // namespace MrpTest
