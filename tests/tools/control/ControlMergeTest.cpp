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

// A worker's counters of one port, as Agent::countersMessage() lists them.
Json portCounters(const std::string& port, unsigned received) {
  return {{"port", port},
          {"framesReceived", received},
          {"framesSent", 2},
          {"dropped",
           {{"wrongDestination", 0}, {"wrongEtherType", 0}, {"badVersion", 0}, {"malformed", 1},
            {"unknownType", 0}, {"unknownApplication", 0}}},
          {"joinIndications", 3},
          {"leaveIndications", 0},
          {"leaveAllsReceived", 1},
          {"leaveAllsSent", 1},
          {"talkerFailedDeclared", Json::object()},
          {"registrations", Json::object()},
          {"reservations", Json::array()}};
}

TEST(ControlMergeTest, CountersAreATablePerPortWithAColumnPerApplication) {
  Json msrp = portCounters("eth2", 5);
  msrp["registrations"] = {{"talker advertise", 1}};
  msrp["talkerFailedDeclared"] = {{"1", 2}};
  msrp["reservations"] = Json::array({{{"class", "A"}, {"streams", 1}, {"bandwidth", 9088000}}});
  Json mvrp = portCounters("eth2", 4);
  mvrp["registrations"] = {{"VLAN", 3}};
  const MrpCli::WorkerAnswers answers = {
      {MrpApplication::mvrp, {{"engine", {{"numOfPktsProcessed", 4}}}, {"ports", Json::array({mvrp})}}},
      {MrpApplication::msrp, {{"engine", Json::object()}, {"ports", Json::array({msrp})}}},
  };
  const MrpCli::ControlAnswer merged =
      MrpCli::mergedCounters(answers, {"eth2"}, {{MrpApplication::mvrp, 0}, {MrpApplication::msrp, 1}});
  EXPECT_EQ(merged.text,
            "port  counter                          mvrp  msrp\n"
            "eth2  frames received                  4     5\n"
            "      frames sent                      2     2\n"
            "      dropped: wrong destination       0     0\n"
            "      dropped: wrong EtherType         0     0\n"
            "      dropped: bad protocol version    0     0\n"
            "      dropped: malformed               1     1\n"
            "      dropped: unknown attribute type  0     0\n"
            "      dropped: unknown application     0     0\n"
            "      join indications                 3     3\n"
            "      leave indications                0     0\n"
            "      LeaveAll received                1     1\n"
            "      LeaveAll sent                    1     1\n"
            "      registered: VLAN                 3     -\n"
            "      registered: talker advertise     -     1\n"
            "      Talker Failed declared, code 1   -     2\n"
            "      streams reserved, class A        -     1\n"
            "      reserved, class A                -     9.088 Mb/s\n"
            "      worker restarts                  0     1\n");
  ASSERT_EQ(merged.result["ports"].size(), 2u);
  EXPECT_EQ(merged.result["ports"][0]["port"], "eth2");
  EXPECT_EQ(merged.result["ports"][0]["app"], "mvrp");
  EXPECT_EQ(merged.result["ports"][1]["app"], "msrp");
  EXPECT_EQ(merged.result["ports"][1]["reservations"][0]["bandwidth"], 9088000);
  EXPECT_EQ(merged.result["applications"].dump(),
            R"([{"app":"mvrp","workerRestarts":0,"engine":{"numOfPktsProcessed":4}},)"
            R"({"app":"msrp","workerRestarts":1,"engine":{}}])");
}

TEST(ControlMergeTest, AWorkerThatDidNotAnswerShowsDashes) {
  const MrpCli::WorkerAnswers answers = {
      {MrpApplication::mvrp, {{"engine", Json::object()}, {"ports", Json::array({portCounters("eth1", 4)})}}},
      {MrpApplication::msrp, Json("not counters")},
  };
  const MrpCli::ControlAnswer merged =
      MrpCli::mergedCounters(answers, {"eth1"}, {{MrpApplication::mvrp, 0}, {MrpApplication::msrp, 0}});
  EXPECT_NE(merged.text.find("eth1  frames received                  4     -\n"), std::string::npos) << merged.text;
  EXPECT_EQ(merged.result["ports"].size(), 1u);
  EXPECT_EQ(merged.result["applications"][1]["engine"], Json::object());
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
