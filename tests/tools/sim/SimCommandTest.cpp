#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "support/MrpRun.h"
#include "support/SimJson.h"
#include "support/TempDir.h"

namespace MrpTest {
namespace {

using Json = nlohmann::json;

const std::string kStream = "00:1b:21:00:00:01:00:01";

TEST(SimCommandTest, TheSameSeedGivesTheSameOutputByteForByteAndAnotherSeedAnother) {
  TempDir dir;
  std::ifstream in(scenarioFile("leaveall-300s"));
  std::stringstream text;
  text << in.rdbuf();
  std::string reseeded = text.str();
  reseeded.replace(reseeded.find("\"seed\": 7"), 9, "\"seed\": 8");
  std::ofstream(dir.file("reseeded.json")) << reseeded;

  const MrpRun first = mrp({"sim", scenarioFile("leaveall-300s"), "--json"});
  const MrpRun second = mrp({"sim", scenarioFile("leaveall-300s"), "--json"});
  const MrpRun other = mrp({"sim", dir.file("reseeded.json"), "--json"});
  EXPECT_EQ(first.status, 0);
  EXPECT_EQ(first.out, second.out);
  EXPECT_NE(first.out, other.out) << "the LeaveAll periods are drawn from the seed";
}

TEST(SimCommandTest, AVlanListDeclaresAndWithdrawsEachVlanInItsOrder) {
  TempDir dir;
  std::ofstream(dir.file("list.json")) << R"({"applications": ["mvrp"],
    "bridges": {"h1": {"ports": ["e0"]}, "h2": {"ports": ["e0"]}}, "links": [["h1:e0", "h2:e0"]], "until": 5,
    "events": [{"at": 0, "declare": {"bridge": "h1", "port": "e0", "app": "mvrp", "vlans": "7, 1-3"}},
               {"at": 2, "withdraw": {"bridge": "h1", "port": "e0", "app": "mvrp", "vlans": "2-3"}}]})";
  const std::vector<Json> lines = simJson({dir.file("list.json")});
  std::vector<std::string> requests;
  for (const Json& line : lines) {
    if (line.contains("request")) {
      requests.push_back(line["request"].get<std::string>() + " " + line["key"].get<std::string>());
    }
  }
  EXPECT_THAT(requests, ::testing::ElementsAre("declare 7", "declare 1", "declare 2", "declare 3", "withdraw 2",
                                               "withdraw 3"));
  for (std::uint64_t vlan : {1, 2, 3, 7}) EXPECT_TRUE(indicationAt(lines, "join", "h2", "e0", 1, vlan)) << vlan;
  EXPECT_TRUE(indicationAt(lines, "leave", "h2", "e0", 1, 2, 2.0));
  EXPECT_TRUE(indicationAt(lines, "leave", "h2", "e0", 1, 3, 2.0));
  EXPECT_FALSE(indicationAt(lines, "leave", "h2", "e0", 1, 1));
}

TEST(SimCommandTest, RssEveryWritesTheResidentSetToTheErrorStreamAndLeavesTheTimelineAsItIs) {
  const MrpRun plain = mrp({"sim", "--until", "90", "--json"});
  const MrpRun sampled = mrp({"sim", "--until", "90", "--json", "--rss-every", "30"});
  ASSERT_EQ(sampled.status, 0) << sampled.err;
  EXPECT_EQ(sampled.out, plain.out);
  const std::vector<Json> samples = jsonLines(sampled.err);
  ASSERT_EQ(samples.size(), 3u) << sampled.err;
  for (std::size_t i = 0; i < samples.size(); ++i) {
    EXPECT_EQ(samples[i]["t"], 30.0 * static_cast<double>(i + 1));
    EXPECT_GT(samples[i]["rss"].get<std::uint64_t>(), 1u << 20) << "a running program holds more than a MiB";
  }
}

TEST(SimCommandTest, UntilEndsTheRunEarlier) {
  const std::vector<Json> lines = simJson({"--until", "5"});
  EXPECT_EQ(lines.back()["t"], 5.0);
  for (const Json& line : lines) EXPECT_LE(line["t"].get<double>(), 5.0);
}

TEST(SimCommandTest, TheTimelineReadsAsAlignedColumnsAndEndsWithTheRegistrationTables) {
  const MrpRun run = mrp({"sim", "--until", "12"});
  ASSERT_EQ(run.status, 0);
  EXPECT_THAT(run.out, ::testing::StartsWith("      time  bridge  port  app   event\n"));
  EXPECT_THAT(run.out, ::testing::HasSubstr("\n     1.000  h1      e0    mvrp  declare VLAN 10\n"));
  EXPECT_THAT(run.out, ::testing::HasSubstr("\n     1.100  h2      e0    msrp  join talker " + kStream +
                                            " (91:e0:f0:00:fe:01, VLAN 2)\n"));
  EXPECT_THAT(run.out, ::testing::HasSubstr("  mvrp  LeaveAll sent (VLAN)\n"));
  EXPECT_THAT(run.out, ::testing::HasSubstr("\nRegistrations at 12.000 s\n\nh1\n"
                                            "  port  app   attribute                                                   "
                                            "registrar  applicant\n"));
  EXPECT_THAT(run.out, ::testing::HasSubstr("\n  e0    mvrp  VLAN 10                                                     "
                                            "IN         VO\n"));
}

TEST(SimCommandTest, ReservationsAndRefusalsReadInWordsAndTheTablesEndTheRun) {
  const MrpRun run = mrp({"sim", scenarioFile("stream-line")});
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_THAT(run.out, ::testing::HasSubstr("  sw2     p2    msrp  reserved stream 00:1b:21:00:00:01:00:08 class A "
                                            "9.088 Mb/s (port class A 72.704 Mb/s of 75 Mb/s)\n"));
  EXPECT_THAT(run.out, ::testing::HasSubstr("  sw2     p2    msrp  Talker Failed 00:1b:21:00:00:01:00:09: insufficient "
                                            "bandwidth (code 1), bridge 80:00:02:00:00:00:00:02\n"));
  EXPECT_THAT(run.out, ::testing::HasSubstr(R"(
sw2 reservations
  port  speed     class  reserved     total        limit    idleSlope     sendSlope      hiCredit  loCredit
  p2    100 Mb/s  A      72.704 Mb/s  72.704 Mb/s  75 Mb/s  72704 kbit/s  -27296 kbit/s  1122 B    -39 B
    tc qdisc replace dev p2 parent 100:1 cbs idleslope 72704 sendslope -27296 hicredit 1122 locredit -39 offload 0
)"));
}

TEST(SimCommandTest, ALinkCutAndRestoredReadsInWords) {
  const MrpRun run = mrp({"sim", "--until", "61"});
  EXPECT_THAT(run.out, ::testing::HasSubstr("\n    40.000                      link sw2:p2 - sw3:p1 down\n"));
  EXPECT_THAT(run.out, ::testing::HasSubstr("\n    60.000                      link sw2:p2 - sw3:p1 up\n"));
}

TEST(SimCommandTest, VlansOfOnePortAndTimeReadAsRangesOnOneLine) {
  TempDir dir;
  std::ofstream(dir.file("ranges.json")) << R"({"applications": ["mvrp"],
    "bridges": {"h1": {"ports": ["e0"]}, "h2": {"ports": ["e0"]}}, "links": [["h1:e0", "h2:e0"]], "until": 5,
    "events": [{"at": 0, "declare": {"bridge": "h1", "port": "e0", "app": "mvrp", "vlans": "105-110, 2, 100-104"}},
               {"at": 2, "withdraw": {"bridge": "h1", "port": "e0", "app": "mvrp", "vlans": "100-110"}}]})";
  const MrpRun run = mrp({"sim", dir.file("ranges.json")});
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_THAT(run.out, ::testing::StartsWith("      time  bridge  port  app   event\n"
                                             "     0.000  h1      e0    mvrp  declare VLANs 2, 100-110\n"
                                             "     0.100  h2      e0    mvrp  join VLANs 2, 100-110\n"
                                             "     2.000  h1      e0    mvrp  withdraw VLANs 100-110\n"
                                             "     2.700  h2      e0    mvrp  leave VLANs 100-110\n"
                                             "\nRegistrations at 5.000 s\n"));
}

TEST(SimCommandTest, NoLeaveAllHidesTheLeaveAllLinesAndKeepsTheJoins) {
  const MrpRun run = mrp({"sim", "--no-leaveall"});
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_THAT(run.out, ::testing::Not(::testing::HasSubstr("LeaveAll")));
  EXPECT_THAT(run.out, ::testing::HasSubstr("\n     1.100  h2      e0    mvrp  join VLAN 10\n"));
  EXPECT_THAT(run.out, ::testing::HasSubstr("\n     1.100  h2      e0    msrp  join talker " + kStream +
                                            " (91:e0:f0:00:fe:01, VLAN 2)\n"));
}

TEST(SimCommandTest, NoLeaveAllLeavesTheJsonTimelineAsItIs) {
  const MrpRun plain = mrp({"sim", "--until", "30", "--json"});
  const MrpRun hidden = mrp({"sim", "--until", "30", "--json", "--no-leaveall"});
  ASSERT_EQ(hidden.status, 0) << hidden.err;
  EXPECT_THAT(hidden.out, ::testing::HasSubstr("\"leaveAll\""));
  EXPECT_EQ(hidden.out, plain.out);
}

}  // namespace
}  // namespace MrpTest

namespace MrpTest {
namespace {

TEST(SimCommandHtmlTest, WritesTheReportBesideAnUnchangedTimeline) {
  TempDir dir;
  const MrpRun plain = mrp({"sim", "--until", "20"});
  const MrpRun reported = mrp({"sim", "--until", "20", "--html", dir.file("report.html")});
  EXPECT_EQ(reported.status, 0) << reported.err;
  EXPECT_EQ(reported.out, plain.out);
  std::ifstream page(dir.file("report.html"));
  std::string first;
  std::getline(page, first);
  EXPECT_EQ(first, "<!DOCTYPE html>");
}

TEST(SimCommandHtmlTest, AReportThatCannotBeWrittenIsOneLineAndStatusOne) {
  TempDir dir;
  const MrpRun run = mrp({"sim", "--until", "5", "--html", dir.file("missing/report.html")});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "mrp sim: cannot write '" + dir.file("missing/report.html") + "': No such file or directory\n");
}

}  // namespace
}  // namespace MrpTest
