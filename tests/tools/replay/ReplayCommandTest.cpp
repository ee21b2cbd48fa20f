#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <fstream>
#include <string>
#include <vector>

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
                      BadReplay{kNotMrpCapture, {"--app", "msrp"}, ".*capture.pcap: no msrp frame"}));


}  // namespace
}  // namespace MrpTest
