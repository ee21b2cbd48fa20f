#include "control/ControlMerge.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "control/AttributeMessage.h"

namespace MrpTest {
namespace {

using Json = nlohmann::ordered_json;
using Mrp::MrpApplication;
using MrpAgent::AttributeValue;

const std::vector<std::string> kPorts = {"eth2", "eth1"};

Json entry(const std::string& port, const AttributeValue& value, unsigned registrar, unsigned applicant) {
  return {{"port", port}, {"attribute", MrpCli::attributeMessage(value)}, {"registrar", registrar}, {"applicant", applicant}};
}

const AttributeValue kVlan10(Mrp::MvrpVlanAttribute(10));
const AttributeValue kDomain(Mrp::MsrpDomainAttribute(6, 3, 2));

TEST(ControlMergeTest, RegistrationsAreListedByPortThenApplication) {
  // Each worker lists its ports in the agent's order: eth2, then eth1.
  const MrpCli::WorkerAnswers answers = {
      {MrpApplication::mvrp, Json::array({entry("eth2", kVlan10, 0, 0), entry("eth1", kVlan10, 0, 5)})},
      {MrpApplication::msrp, Json::array({entry("eth2", kDomain, 0, 6), entry("eth1", kDomain, 0, 6)})},
  };
  const MrpCli::ControlAnswer merged = MrpCli::mergedShow(answers, kPorts);
  std::vector<std::string> order;
  for (const Json& registration : merged.result["registrations"]) {
    order.push_back(registration["port"].get<std::string>() + " " + registration["app"].get<std::string>());
  }
  EXPECT_EQ(order, (std::vector<std::string>{"eth2 mvrp", "eth2 msrp", "eth1 mvrp", "eth1 msrp"}));
  EXPECT_EQ(merged.text.substr(0, merged.text.find('\n')), "port  app   attribute                            registrar  applicant");
  EXPECT_NE(merged.text.find("eth2  msrp  domain class 6 (priority 3, VLAN 2)"), std::string::npos) << merged.text;
}

TEST(ControlMergeTest, NoRegistrationsAndBadEntriesMakeAnEmptyTable) {
  const MrpCli::WorkerAnswers answers = {{MrpApplication::mvrp, Json::array({Json{{"port", "eth1"}}})},
                                         {MrpApplication::msrp, Json("not a list")}};
  const MrpCli::ControlAnswer merged = MrpCli::mergedShow(answers, kPorts);
  EXPECT_EQ(merged.result.dump(), R"({"registrations":[]})");
  EXPECT_EQ(merged.text, "(none)\n");
}

TEST(ControlMergeTest, CountersAreGroupedByApplication) {
  const MrpCli::WorkerAnswers answers = {
      {MrpApplication::mvrp, Json{{"numOfPktsProcessed", 3}, {"numOfIncorrectDmac", 0}}},
      {MrpApplication::msrp, Json::object()},  // an engine not active yet
  };
  const MrpCli::ControlAnswer merged = MrpCli::mergedCounters(answers);
  EXPECT_EQ(merged.result.dump(), R"({"mvrp":{"numOfPktsProcessed":3,"numOfIncorrectDmac":0}})");
  EXPECT_EQ(merged.text,
            "app   counter             value\n"
            "mvrp  numOfPktsProcessed  3\n"
            "mvrp  numOfIncorrectDmac  0\n");
}

TEST(ControlMergeTest, EachPortShowsItsSpeedAndTheSocketOfEveryApplication) {
  const Json eth2{{"port", "eth2"}, {"state", "up"}, {"socket", "open"}, {"speed", 1000000000}, {"speedFrom", "kernel"}};
  const MrpCli::WorkerAnswers answers = {
      {MrpApplication::mvrp,
       Json::array({eth2, Json{{"port", "eth1"}, {"state", "absent"}, {"socket", "closed"}, {"speed", 100000000},
                               {"speedFrom", "configuration"}}})},
      {MrpApplication::msrp, Json::array({eth2})},
  };
  const MrpCli::ControlAnswer merged = MrpCli::mergedPorts(answers, kPorts);
  EXPECT_EQ(merged.text,
            "port  state   speed                     mvrp    msrp\n"
            "eth2  up      1 Gb/s (kernel)           open    open\n"
            "eth1  absent  100 Mb/s (configuration)  closed  unknown\n");
  EXPECT_EQ(merged.result["ports"][0].dump(),
            R"({"port":"eth2","state":"up","speed":1000000000,"speedFrom":"kernel","sockets":{"mvrp":"open","msrp":"open"}})");
}

TEST(ControlMergeTest, StreamsAreTheMsrpWorkersTableAndNeedMsrp) {
  const Json table{{"streams", Json::array()}, {"classes", Json::array()}};
  const MrpCli::ControlAnswer streams =
      MrpCli::mergedStreams({{MrpApplication::mvrp, Json::array()}, {MrpApplication::msrp, table}});
  EXPECT_TRUE(streams.ok);
  EXPECT_EQ(streams.result, table);
  EXPECT_FALSE(streams.text.empty());
  const MrpCli::ControlAnswer none = MrpCli::mergedStreams({{MrpApplication::mvrp, Json::array()}});
  EXPECT_FALSE(none.ok);
  EXPECT_EQ(none.error, "the agent runs no msrp: streams are MSRP's");
}

}  // namespace
}  // namespace MrpTest
