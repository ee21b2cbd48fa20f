#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "support/MrpRun.h"
#include "support/TempDir.h"

namespace MrpTest {
namespace {

// A scenario with two bridges; "EVENT" is replaced by the event under test.
const std::string kBase = R"({
  "applications": ["mvrp"],
  "bridges": {"sw1": {"ports": ["p1", "p2"]}, "sw2": {"ports": ["p1"]}},
  "links": [["sw1:p2", "sw2:p1"]],
  "events": [{"at": 0, "declare": {"bridge": "sw1", "port": "p1", "app": "mvrp", "vlan": 10}}, EVENT]
})";

std::string withEvent(const std::string& event) {
  std::string text = kBase;
  return text.replace(text.find("EVENT"), 5, event);
}

struct BadScenario {
  std::string name;
  std::string text;
  std::string error;  // after "mrp sim: <file>: "
};

class SimScenarioErrorTest : public ::testing::TestWithParam<BadScenario> {};

TEST_P(SimScenarioErrorTest, NamesThePlaceInOneLineWithStatusTwoAndRunsNothing) {
  TempDir dir;
  const std::string file = dir.file("scenario.json");
  std::ofstream(file) << GetParam().text;
  const MrpRun run = mrp({"sim", file, "--pcap", dir.file("pcap")});
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err, "mrp sim: " + file + ": " + GetParam().error + "\n");
  std::ifstream capture(dir.file("pcap/sw1-p2_sw2-p1.pcap"));
  EXPECT_FALSE(capture.good()) << "nothing runs";
}

INSTANTIATE_TEST_SUITE_P(
    BadFiles, SimScenarioErrorTest,
    ::testing::Values(
        BadScenario{"NotJson", "{\"bridges\": ",
                    "not JSON: parse error at line 1, column 13: syntax error while parsing value - unexpected "
                    "end of input; expected '[', '{', or a literal"},
        BadScenario{"RunLongerThanAWeek", R"({"bridges": {"sw1": {"ports": ["p1"]}}, "until": 1e12})",
                    "until: 1000000000000.0 is longer than a week of simulated time (604800 s at most)"},
        BadScenario{"UnknownTopLevelField", R"({"bridges": {"sw1": {"ports": ["p1"]}}, "untill": 5})",
                    "untill: unknown field"},
        BadScenario{"UnknownApplication", R"({"applications": ["gvrp"], "bridges": {"sw1": {"ports": ["p1"]}}})",
                    "applications[0]: unknown application 'gvrp' (mvrp or msrp)"},
        BadScenario{"NoBridges", R"({"bridges": {}})", "bridges: at least one bridge is needed"},
        BadScenario{"BadBridgeName", R"({"bridges": {"sw 1": {"ports": ["p1"]}}})",
                    "bridges.sw 1: a bridge name is letters, digits, '-', '_' and '.'"},
        BadScenario{"PortListedTwice", R"({"bridges": {"sw1": {"ports": ["p1", "p1"]}}})",
                    "bridges.sw1.ports[1]: port 'p1' is listed twice"},
        BadScenario{"LinkToAMissingPort",
                    R"({"bridges": {"sw1": {"ports": ["p1"]}, "sw2": {"ports": ["p1"]}}, "links": [["sw1:p1", "sw2:p7"]]})",
                    "links[0][1]: sw2 has no port 'p7'"},
        BadScenario{"LinkToAMissingBridge", R"({"bridges": {"sw1": {"ports": ["p1"]}}, "links": [["sw1:p1", "sw9:p1"]]})",
                    "links[0][1]: no bridge 'sw9'"},
        BadScenario{"LinkEndNotBridgePort", R"({"bridges": {"sw1": {"ports": ["p1"]}}, "links": [["sw1p1", "sw1:p1"]]})",
                    "links[0][0]: 'sw1p1' is not bridge:port"},
        BadScenario{"PortLinkedTwice",
                    R"({"bridges": {"sw1": {"ports": ["p1", "p2"]}}, "links": [["sw1:p1", "sw1:p2"], ["sw1:p2", "sw1:p1"]]})",
                    "links[1][0]: sw1:p2 is already linked"},
        BadScenario{"NegativeLeaveTime", R"({"bridges": {"sw1": {"ports": ["p1"]}}, "config": {"leaveTime": -1}})",
                    "config.leaveTime: -1 is not a time (seconds, 0 or more)"},
        BadScenario{"VlanOutOfRange", withEvent(R"({"at": 1, "declare": {"bridge": "sw1", "app": "mvrp", "vlan": 4095}})"),
                    "events[1].declare.vlan: 4095 is not a VLAN id (1..4094)"},
        BadScenario{"VlanNotWhole", withEvent(R"({"at": 1, "declare": {"bridge": "sw1", "app": "mvrp", "vlan": 1.5}})"),
                    "events[1].declare.vlan: a whole number is needed"},
        BadScenario{"VlanListNotIds", withEvent(R"({"at": 1, "declare": {"bridge": "sw1", "app": "mvrp", "vlans": "1-ten"}})"),
                    "events[1].declare.vlans: '1-ten' is not a VLAN id or range (e.g. 1-4094 or 10,20-29)"},
        BadScenario{"VlanListEmptyItem", withEvent(R"({"at": 1, "declare": {"bridge": "sw1", "app": "mvrp", "vlans": "1,,2"}})"),
                    "events[1].declare.vlans: '' is not a VLAN id or range (e.g. 1-4094 or 10,20-29)"},
        BadScenario{"VlanListOutOfRange", withEvent(R"({"at": 1, "declare": {"bridge": "sw1", "app": "mvrp", "vlans": "1-4095"}})"),
                    "events[1].declare.vlans: 4095 is not a VLAN id (1..4094)"},
        BadScenario{"VlanListZero", withEvent(R"({"at": 1, "declare": {"bridge": "sw1", "app": "mvrp", "vlans": "0-9"}})"),
                    "events[1].declare.vlans: 0 is not a VLAN id (1..4094)"},
        BadScenario{"VlanListHuge",
                    withEvent(R"({"at": 1, "declare": {"bridge": "sw1", "app": "mvrp", "vlans": "99999999999999999999999"}})"),
                    "events[1].declare.vlans: 99999999999999999999999 is not a VLAN id (1..4094)"},
        BadScenario{"VlanListBackwards", withEvent(R"({"at": 1, "declare": {"bridge": "sw1", "app": "mvrp", "vlans": "20-10"}})"),
                    "events[1].declare.vlans: '20-10' runs backwards"},
        BadScenario{"VlanListedTwice", withEvent(R"({"at": 1, "declare": {"bridge": "sw1", "app": "mvrp", "vlans": "1-10,5"}})"),
                    "events[1].declare.vlans: VLAN 5 is listed twice"},
        BadScenario{"VlanListNotAString", withEvent(R"({"at": 1, "declare": {"bridge": "sw1", "app": "mvrp", "vlans": [1, 2]}})"),
                    "events[1].declare.vlans: a string is needed"},
        BadScenario{"VlanAndVlanList",
                    withEvent(R"({"at": 1, "declare": {"bridge": "sw1", "app": "mvrp", "vlan": 1, "vlans": "2-3"}})"),
                    "events[1].declare: one value is needed: vlan or vlans"},
        BadScenario{"UnknownBridge", withEvent(R"({"at": 1, "withdraw": {"bridge": "sw9", "app": "mvrp", "vlan": 10}})"),
                    "events[1].withdraw.bridge: no bridge 'sw9'"},
        BadScenario{"UnknownPort",
                    withEvent(R"({"at": 1, "declare": {"bridge": "sw2", "port": "p2", "app": "mvrp", "vlan": 10}})"),
                    "events[1].declare.port: sw2 has no port 'p2'"},
        BadScenario{"UnknownEventField",
                    withEvent(R"({"at": 1, "declare": {"bridge": "sw1", "app": "mvrp", "vlan": 10, "colour": 1}})"),
                    "events[1].declare.colour: unknown field"},
        BadScenario{"ApplicationNotRun",
                    withEvent(R"({"at": 1, "declare": {"bridge": "sw1", "app": "msrp", "domain": {"classId": 6, "priority": 3, "vid": 2}}})"),
                    "events[1].declare.app: 'msrp' is not among the applications"},
        BadScenario{"MissingAt", withEvent(R"({"declare": {"bridge": "sw1", "app": "mvrp", "vlan": 10}})"),
                    "events[1].at: missing"},
        BadScenario{"NoAction", withEvent(R"({"at": 1})"),
                    "events[1]: one of declare, withdraw, link, role or inject is needed"},
        BadScenario{"NotALink", withEvent(R"({"at": 1, "link": ["sw1:p1", "sw2:p1"], "up": false})"),
                    "events[1].link: sw1:p1 - sw2:p1 is not a link"},
        BadScenario{"RoleOutOfRange", withEvent(R"({"at": 1, "role": {"bridge": "sw1", "port": "p1", "role": 5}})"),
                    "events[1].role.role: 5 is not a port role (0..4: disabled, root, designated, alternate, backup)"},
        BadScenario{"BadBridgeId", R"({"bridges": {"sw1": {"ports": ["p1"], "bridgeId": "80:00"}}})",
                    "bridges.sw1.bridgeId: not a bridge id (eight hex octets, e.g. 80:00:02:00:00:00:00:01)"},
        BadScenario{"PortSpeedOfAMissingPort",
                    R"({"bridges": {"sw1": {"ports": ["p1"], "portSpeed": {"p9": 100000000}}}})",
                    "bridges.sw1.portSpeed.p9: not one of the bridge's ports (p1)"},
        BadScenario{"PortSpeedZero", R"({"bridges": {"sw1": {"ports": ["p1"], "portSpeed": {"p1": 0}}}})",
                    "bridges.sw1.portSpeed.p1: 0 is not a speed in bit/s (1000000..1000000000000)"},
        BadScenario{"PortSpeedNotANumber", R"({"bridges": {"sw1": {"ports": ["p1"], "portSpeed": {"p1": "1G"}}}})",
                    "bridges.sw1.portSpeed.p1: a whole number is needed"},
        BadScenario{"PortLatencyNegative", R"({"bridges": {"sw1": {"ports": ["p1"], "portLatency": {"p1": -5}}}})",
                    "bridges.sw1.portLatency.p1: -5 is not a latency in ns (0..4294967295)"},
        BadScenario{"DomainsWithoutMsrp",
                    R"({"applications": ["mvrp"], "bridges": {"sw1": {"ports": ["p1"], "domains": []}}})",
                    "bridges.sw1.domains: domains need 'msrp' among the applications"},
        BadScenario{"DomainOfAnotherClass",
                    R"({"bridges": {"sw1": {"ports": ["p1"], "domains": [{"classId": 7, "priority": 3, "vid": 2}]}}})",
                    "bridges.sw1.domains[0].classId: not an SR class this bridge knows (6 for A, 5 for B)"},
        BadScenario{"DomainClassTwice",
                    R"({"bridges": {"sw1": {"ports": ["p1"], "domains": [{"classId": 6, "priority": 3, "vid": 2},
                                                                          {"classId": 6, "priority": 4, "vid": 2}]}}})",
                    "bridges.sw1.domains[1]: a second domain of SR class id 6"},
        BadScenario{"DomainWithoutItsVlan",
                    R"({"bridges": {"sw1": {"ports": ["p1"], "domains": [{"classId": 6, "priority": 3}]}}})",
                    "bridges.sw1.domains[0].vid: missing"},
        BadScenario{"DeltaBandwidthOverAPort",
                    R"({"bridges": {"sw1": {"ports": ["p1"]}},
                        "config": {"srp": {"deltaBandwidth": {"A": 75, "B": 30}}}})",
                    "config.srp.deltaBandwidth: the classes' shares add up to 105%, more than the port"},
        BadScenario{"DeltaBandwidthOverAHundred",
                    R"({"bridges": {"sw1": {"ports": ["p1"]}}, "config": {"srp": {"deltaBandwidth": {"A": 101}}}})",
                    "config.srp.deltaBandwidth.A: 101 is not a percent (0..100)"},
        BadScenario{"DeltaBandwidthOfAnotherClass",
                    R"({"bridges": {"sw1": {"ports": ["p1"]}}, "config": {"srp": {"deltaBandwidth": {"C": 5}}}})",
                    "config.srp.deltaBandwidth.C: unknown field"},
        BadScenario{"ShortFrame", withEvent(R"({"at": 1, "inject": {"bridge": "sw1", "port": "p1", "frame": "0180c2"}})"),
                    "events[1].inject.frame: 3 octets is shorter than an Ethernet header (14)"}),
    [](const ::testing::TestParamInfo<BadScenario>& info) { return info.param.name; });

TEST(SimScenarioErrorTest, MsrpValuesAreCheckedFieldByField) {
  TempDir dir;
  const std::string file = dir.file("scenario.json");
  std::ofstream(file) << R"({"applications": ["msrp"], "bridges": {"h1": {"ports": ["e0"]}},
    "events": [{"at": 0, "declare": {"bridge": "h1", "port": "e0", "app": "msrp", "talkerAdvertise":
      {"streamId": "00:1b:21", "destination": "91:e0:f0:00:fe:01", "vlan": 2, "maxFrameSize": 100,
       "maxIntervalFrames": 1, "priority": 3, "rank": 1, "latency": 1000}}}]})";
  const MrpRun run = mrp({"sim", file});
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.err, "mrp sim: " + file +
                         ": events[0].declare.talkerAdvertise.streamId: '00:1b:21' is not a stream id (8 octets in "
                         "hex, e.g. 00:1b:21:00:00:01:00:01)\n");
}

struct UnreadableScenario {
  std::string path;
  std::string error;
};

class SimUnreadableScenarioTest : public ::testing::TestWithParam<UnreadableScenario> {};

TEST_P(SimUnreadableScenarioTest, TheFileIsNamedWithWhyItCannotBeRead) {
  const MrpRun run = mrp({"sim", GetParam().path});
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err, "mrp sim: " + GetParam().error + "\n");
}

INSTANTIATE_TEST_SUITE_P(
    Files, SimUnreadableScenarioTest,
    ::testing::Values(UnreadableScenario{"/nonexistent/scenario.json",
                                         "cannot open '/nonexistent/scenario.json': No such file or directory"},
                      UnreadableScenario{"/", "'/' is a directory"}));

}  // namespace
}  // namespace MrpTest
