#include "ControlMerge.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "AttributeMessage.h"

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

TEST(ControlMergeTest, EachPortShowsTheSocketOfEveryApplication) {
  const MrpCli::WorkerAnswers answers = {
      {MrpApplication::mvrp, Json::array({Json{{"port", "eth2"}, {"state", "up"}, {"socket", "open"}},
                                          Json{{"port", "eth1"}, {"state", "absent"}, {"socket", "closed"}}})},
      {MrpApplication::msrp, Json::array({Json{{"port", "eth2"}, {"state", "up"}, {"socket", "open"}}})},
  };
  const MrpCli::ControlAnswer merged = MrpCli::mergedPorts(answers, kPorts);
  EXPECT_EQ(merged.text,
            "port  state   mvrp    msrp\n"
            "eth2  up      open    open\n"
            "eth1  absent  closed  unknown\n");
  EXPECT_EQ(merged.result["ports"][0].dump(), R"({"port":"eth2","state":"up","sockets":{"mvrp":"open","msrp":"open"}})");
}

}  // namespace
}  // namespace MrpTest
