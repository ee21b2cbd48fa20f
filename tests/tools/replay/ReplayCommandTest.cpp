#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "common/Hex.h"
#include "format/CaptureWriter.h"
#include "support/MrpRun.h"
#include "support/SimJson.h"
#include "support/TempDir.h"

namespace MrpTest {
namespace {

using Json = nlohmann::json;

TEST(ReplayCommandTest, OnlyTheChosenApplicationIsReplayed) {
  TempDir dir;
  simJson({"--until", "5", "--pcap", dir.file("pcap")});
  const MrpRun replay = mrp({"replay", dir.file("pcap/h1-e0_sw1-p1.pcap"), "--app", "mvrp", "--json"});
  ASSERT_EQ(replay.status, 0) << replay.err;
  std::size_t mvrp = 0;
  for (const Json& line : jsonLines(replay.out)) {
    if (!line.contains("app")) continue;
    EXPECT_EQ(line["app"], "mvrp") << line;
    ++mvrp;
  }
  EXPECT_GT(mvrp, 0u);
}

// The replaying bridge's LeaveAll timer runs past the capture: there is
// nothing to hide, and the flag is taken.
TEST(ReplayCommandTest, NoLeaveAllIsTakenAndLeavesTheTextAsItIs) {
  TempDir dir;
  simJson({"--until", "5", "--pcap", dir.file("pcap")});
  const MrpRun plain = mrp({"replay", dir.file("pcap/h1-e0_sw1-p1.pcap")});
  const MrpRun hidden = mrp({"replay", dir.file("pcap/h1-e0_sw1-p1.pcap"), "--no-leaveall"});
  ASSERT_EQ(hidden.status, 0) << hidden.err;
  EXPECT_THAT(hidden.out, ::testing::HasSubstr("mvrp  join VLAN 10\n"));
  EXPECT_EQ(hidden.out, plain.out);
}

// A capture of a link: station A declares VLAN 10, its neighbour B VLAN 20.
const std::string kStationA = "00:1b:21:aa:bb:01";
const std::string kStationB = "00:1b:21:aa:bb:02";

std::vector<std::uint8_t> mvrpFrame(const std::string& source, const std::string& mrpdu) {
  std::string error;
  return *MrpCli::hexDecode("0180c2000021" + source + "88f5" + mrpdu, error);
}

std::string linkCapture(const TempDir& dir) {
  const std::string path = dir.file("link.pcap");
  MrpCli::CaptureWriter writer(path);
  writer.write(10.0, mvrpFrame(kStationA, "00 01 02 0001 000a 24 0000 0000"));  // JoinIn VLAN 10
  writer.write(10.1, mvrpFrame(kStationB, "00 01 02 0001 0014 24 0000 0000"));  // JoinIn VLAN 20
  writer.write(10.2, mvrpFrame(kStationA, "00 01 02 0001 000a 24 0000 0000"));
  return path;
}

// The VLANs the replaying bridge holds at the end.
std::vector<unsigned> registeredVlans(const std::string& out) {
  std::vector<unsigned> vlans;
  for (const Json& line : jsonLines(out)) {
    if (!line.contains("registrations")) continue;
    for (const Json& registration : line["registrations"]) vlans.push_back(registration["vlan"]);
  }
  return vlans;
}

struct OneSide {
  const char* name;
  std::vector<std::string> options;
  std::vector<unsigned> vlans;
};

class ReplayOneSideTest : public ::testing::TestWithParam<OneSide> {};

TEST_P(ReplayOneSideTest, LeadsToTheRegistrationsOfThatSideOnly) {
  TempDir dir;
  std::vector<std::string> args = {"replay", linkCapture(dir), "--json"};
  args.insert(args.end(), GetParam().options.begin(), GetParam().options.end());
  const MrpRun replay = mrp(args);
  ASSERT_EQ(replay.status, 0) << replay.err;
  EXPECT_EQ(registeredVlans(replay.out), GetParam().vlans);
}

INSTANTIATE_TEST_SUITE_P(Link, ReplayOneSideTest,
                         ::testing::Values(OneSide{"BothSides", {}, {10, 20}},
                                           OneSide{"FromA", {"--from", kStationA}, {10}},
                                           OneSide{"ToA", {"--to", kStationA}, {20}},
                                           OneSide{"FromB", {"--from", kStationB}, {20}},
                                           OneSide{"ToB", {"--to", kStationB}, {10}},
                                           OneSide{"UpperCaseMac", {"--from", "00:1B:21:AA:BB:02"}, {20}}),
                         [](const ::testing::TestParamInfo<OneSide>& info) { return std::string(info.param.name); });

TEST(ReplayCommandTest, AStationThatSentNothingLeavesNoFrame) {
  TempDir dir;
  const MrpRun replay = mrp({"replay", linkCapture(dir), "--from", "00:1b:21:aa:bb:03"});
  EXPECT_EQ(replay.status, 2);
  EXPECT_EQ(replay.err, "mrp replay: " + dir.file("link.pcap") + ": no MSRP or MVRP frame from 00:1b:21:aa:bb:03\n");
}

struct BadReplay {
  std::string capture;  // written to the file, or no file when empty
  std::vector<std::string> options;
  std::string error;  // after "mrp replay: <file>"
};

class ReplayCommandErrorTest : public ::testing::TestWithParam<BadReplay> {};

TEST_P(ReplayCommandErrorTest, FailsWithOneLineAndStatusTwo) {
  TempDir dir;
  const std::string file = dir.file("capture.pcap");
  if (!GetParam().capture.empty()) std::ofstream(file, std::ios::binary) << GetParam().capture;
  std::vector<std::string> args = {"replay", file};
  args.insert(args.end(), GetParam().options.begin(), GetParam().options.end());
  const MrpRun run = mrp(args);
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.out, "");
  EXPECT_THAT(run.err, ::testing::MatchesRegex("mrp replay: .*" + GetParam().error + "\n"));
}

// A classic pcap header (little-endian, microseconds, Ethernet) and one
// 14-octet frame that is not MRP.
const std::string kNotMrpCapture = std::string(
    "\xd4\xc3\xb2\xa1\x02\x00\x04\x00\x00\x00\x00\x00\x00\x00\x00\x00\xff\xff\x00\x00\x01\x00\x00\x00"
    "\x00\x00\x00\x00\x00\x00\x00\x00\x0e\x00\x00\x00\x0e\x00\x00\x00"
    "\xff\xff\xff\xff\xff\xff\x02\x00\x00\x00\x00\x01\x08\x00",
    54);

INSTANTIATE_TEST_SUITE_P(
    BadCaptures, ReplayCommandErrorTest,
    ::testing::Values(BadReplay{"", {}, "cannot open '.*capture.pcap'"},
                      BadReplay{"not a capture", {}, ".*capture.pcap: not a pcap or pcapng file: .*"},
                      BadReplay{kNotMrpCapture, {}, ".*capture.pcap: no MSRP or MVRP frame"},
                      BadReplay{kNotMrpCapture, {"--app", "msrp"}, ".*capture.pcap: no msrp frame"},
                      BadReplay{kNotMrpCapture,
                                {"--app", "mvrp", "--to", "02:00:00:00:00:09"},
                                ".*capture.pcap: no mvrp frame not from 02:00:00:00:00:09"}));

// Mistakes in the arguments: one line that points at the command's help.
INSTANTIATE_TEST_SUITE_P(
    BadArguments, ReplayCommandErrorTest,
    ::testing::Values(
        BadReplay{"",
                  {"--from", "xyz"},
                  "--from: not a MAC address 'xyz' \\(like 00:1b:21:aa:bb:01\\) \\(try 'mrp replay --help'\\)"},
        BadReplay{"", {"--to", "00:1b:21:aa:bb"}, "--to: not a MAC address '00:1b:21:aa:bb' .*"},
        BadReplay{"",
                  {"--from", "00:1b:21:aa:bb:01", "--to", "00:1b:21:aa:bb:02"},
                  "--from and --to cannot be given together \\(try 'mrp replay --help'\\)"}));

}  // namespace
}  // namespace MrpTest

namespace MrpTest {
namespace {

TEST(ReplayCommandHtmlTest, WritesTheReportOfTheReplayingBridge) {
  TempDir dir;
  simJson({"--until", "5", "--pcap", dir.file("pcap")});
  const MrpRun plain = mrp({"replay", dir.file("pcap/h1-e0_sw1-p1.pcap")});
  const MrpRun reported = mrp({"replay", dir.file("pcap/h1-e0_sw1-p1.pcap"), "--html", dir.file("replay.html")});
  EXPECT_EQ(reported.status, 0) << reported.err;
  EXPECT_EQ(reported.out, plain.out);
  std::ifstream page(dir.file("replay.html"));
  std::stringstream text;
  text << page.rdbuf();
  EXPECT_NE(text.str().find("<title>mrp replay h1-e0_sw1-p1.pcap</title>"), std::string::npos);
  EXPECT_NE(text.str().find("\"bridge\":\"replay\",\"port\":\"p1\""), std::string::npos);
}

}  // namespace
}  // namespace MrpTest
