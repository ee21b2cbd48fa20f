#include "control/ControlRequest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "format/JsonNode.h"
#include "report/ValueText.h"

namespace MrpTest {
namespace {

using Command = MrpCli::ControlRequest::Command;
using Mrp::MrpApplication;

const std::vector<std::string> kPorts = {"eth1", "eth2"};

MrpCli::ControlRequest requestOf(const std::string& text,
                                 const std::vector<MrpApplication>& applications = {MrpApplication::mvrp,
                                                                                    MrpApplication::msrp}) {
  return MrpCli::controlRequestFromJson(text, kPorts, applications);
}

TEST(ControlRequestTest, ADeclarationOnAPortNamesThePortAndTheValue) {
  const auto request = requestOf(R"({"command": "declare", "attribute": {"port": "eth2", "app": "mvrp", "vlan": 10}})");
  EXPECT_EQ(request.command, Command::declare);
  EXPECT_EQ(request.port, "eth2");
  ASSERT_EQ(request.values.size(), 1U);
  EXPECT_EQ(MrpCli::valueText(request.values.front()), "VLAN 10");
}

TEST(ControlRequestTest, AWithdrawalWithoutAPortIsTheAgentsOwnOnEveryPort) {
  const auto request = requestOf(
      R"({"command": "withdraw", "attribute": {"app": "msrp", "listener": {"streamId": "00:1b:21:00:00:01:00:01", "declaration": "ready"}}})");
  EXPECT_EQ(request.command, Command::withdraw);
  EXPECT_FALSE(request.port);
  ASSERT_EQ(request.values.size(), 1U);
  EXPECT_EQ(MrpCli::valueText(request.values.front()), "listener 00:1b:21:00:00:01:00:01 ready");
}

TEST(ControlRequestTest, AVlanListStandsForOneValuePerVlanInTheOrderListed) {
  const auto request = requestOf(R"({"command": "declare", "attribute": {"app": "mvrp", "vlans": "20-22, 10"}})");
  std::vector<std::string> texts;
  for (const auto& value : request.values) texts.push_back(MrpCli::valueText(value));
  EXPECT_EQ(texts, (std::vector<std::string>{"VLAN 20", "VLAN 21", "VLAN 22", "VLAN 10"}));
  EXPECT_FALSE(request.talkerStreamId);
}

TEST(ControlRequestTest, ATalkerIsWithdrawnByItsStreamIdAlone) {
  const auto request = requestOf(
      R"({"command": "withdraw", "attribute": {"port": "eth1", "app": "msrp", "talkerAdvertise": {"streamId": "00:1b:21:00:00:01:00:02"}}})");
  ASSERT_TRUE(request.talkerStreamId);
  EXPECT_EQ(*request.talkerStreamId, 0x001b210000010002ULL);
  EXPECT_TRUE(request.values.empty());
  EXPECT_EQ(request.port, "eth1");
}

TEST(ControlRequestTest, AWholeTalkerIsWithdrawnAsTheValueItNames) {
  const auto request = requestOf(
      R"({"command": "withdraw", "attribute": {"app": "msrp", "talkerAdvertise": {"streamId": "00:1b:21:00:00:01:00:01",
          "destination": "91:e0:f0:00:fe:01", "vlan": 2, "maxFrameSize": 100, "maxIntervalFrames": 1, "priority": 3,
          "rank": 1, "latency": 1000}}})");
  EXPECT_FALSE(request.talkerStreamId);
  ASSERT_EQ(request.values.size(), 1U);
  EXPECT_EQ(MrpCli::valueText(request.values.front()), "talker 00:1b:21:00:00:01:00:01 (91:e0:f0:00:fe:01, VLAN 2)");
}

TEST(ControlRequestTest, CommandsWithoutArgumentsAndTrace) {
  EXPECT_EQ(requestOf(R"({"command": "show"})").command, Command::show);
  EXPECT_EQ(requestOf(R"({"command": "counters"})").command, Command::counters);
  EXPECT_EQ(requestOf(R"({"command": "ports"})").command, Command::ports);
  const auto trace = requestOf(R"({"command": "trace", "levels": "MrpSm/0-9"})");
  EXPECT_EQ(trace.command, Command::trace);
  EXPECT_EQ(trace.traceLevels, "MrpSm/0-9");
}

struct BadRequest {
  std::string text;
  std::string error;
};

class ControlRequestErrorTest : public ::testing::TestWithParam<BadRequest> {};

TEST_P(ControlRequestErrorTest, NamesThePlaceOfTheFault) {
  try {
    requestOf(GetParam().text, {MrpApplication::mvrp});
    FAIL() << "accepted: " << GetParam().text;
  } catch (const MrpCli::JsonInputError& error) {
    EXPECT_EQ(std::string(error.what()), GetParam().error);
  }
}

INSTANTIATE_TEST_SUITE_P(
    BadRequests, ControlRequestErrorTest,
    ::testing::Values(
        BadRequest{R"({"command": "show")",
                   "not JSON: parse error at line 1, column 19: syntax error while parsing object - unexpected end of "
                   "input; expected '}'"},
        BadRequest{R"(["show"])", "an object is needed"},
        BadRequest{R"({})", "command: missing"},
        BadRequest{R"({"command": "frobnicate"})",
                   "command: unknown command 'frobnicate' (declare, withdraw, show, counters, ports, streams, trace)"},
        BadRequest{R"({"command": 7})", "command: a string is needed"},
        BadRequest{R"({"command": "show", "verbose": true})", "verbose: unknown field"},
        BadRequest{R"({"command": "declare"})", "attribute: missing"},
        BadRequest{R"({"command": "declare", "attribute": {"port": "eth9", "app": "mvrp", "vlan": 10}})",
                   "attribute.port: no port 'eth9' (eth1, eth2)"},
        BadRequest{R"({"command": "declare", "attribute": {"app": "mvrp", "vlan": 4095}})",
                   "attribute.vlan: 4095 is not a VLAN id (1..4094)"},
        BadRequest{R"({"command": "declare", "attribute": {"app": "mvrp", "vlan": -3}})",
                   "attribute.vlan: -3 is not a VLAN id (1..4094)"},
        BadRequest{R"({"command": "declare", "attribute": {"app": "msrp", "domain": {"classId": 6, "priority": 3, "vid": 2}}})",
                   "attribute.app: 'msrp' is not among the applications"},
        BadRequest{R"({"command": "withdraw", "attribute": {"app": "mvrp", "vlan": 10, "bridge": "sw1"}})",
                   "attribute.bridge: unknown field"},
        BadRequest{R"({"command": "withdraw", "attribute": {"app": "mvrp"}})",
                   "attribute: one value is needed: vlan or vlans"},
        BadRequest{R"({"command": "declare", "attribute": {"app": "mvrp", "vlans": "10-5000"}})",
                   "attribute.vlans: 5000 is not a VLAN id (1..4094)"},
        BadRequest{R"({"command": "trace"})", "levels: missing"}));

TEST(ControlRequestTest, ADeclarationNeedsTheWholeTalker) {
  try {
    requestOf(R"({"command": "declare", "attribute": {"app": "msrp", "talkerAdvertise": {"streamId": "00:1b:21:00:00:01:00:01"}}})");
    FAIL() << "a talker named by its stream id alone was declared";
  } catch (const MrpCli::JsonInputError& error) {
    // Which missing field is named first is the compiler's choice.
    EXPECT_THAT(error.what(), ::testing::StartsWith("attribute.talkerAdvertise."));
    EXPECT_THAT(error.what(), ::testing::EndsWith(": missing"));
  }
}

}  // namespace
}  // namespace MrpTest
