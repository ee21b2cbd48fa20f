// A capture `mrp sim` wrote, replayed by `mrp replay`.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "format/CaptureReader.h"
#include "support/MrpRun.h"
#include "support/SimJson.h"
#include "support/TempDir.h"

namespace MrpTest {
namespace {

using Json = nlohmann::json;

// The registrations at the end, as "app type key registrar" lines.
std::vector<std::string> registered(const Json& table) {
  std::vector<std::string> out;
  for (const Json& r : table["registrations"]) {
    if (r["registrar"] != "IN") continue;
    out.push_back(r["app"].get<std::string>() + " " + std::to_string(r["type"].get<unsigned>()) + " " +
                  r["key"].get<std::string>());
  }
  std::sort(out.begin(), out.end());
  out.erase(std::unique(out.begin(), out.end()), out.end());
  return out;
}

TEST(SimReplayTest, ACaptureOfTheSimulatorReproducesWhatWasRegisteredOnTheLink) {
  TempDir dir;
  const std::vector<Json> sim = simJson({"--until", "20", "--pcap", dir.file("pcap")});
  // What either end of sw1 - sw2 had registered at the end.
  std::vector<std::string> expected;
  for (const Json& line : sim) {
    if (!line.contains("registrations") || (line["bridge"] != "sw1" && line["bridge"] != "sw2")) continue;
    Json ends = line;
    ends["registrations"] = Json::array();
    const std::string port = line["bridge"] == "sw1" ? "p2" : "p1";
    for (const Json& r : line["registrations"]) {
      if (r["port"] == port) ends["registrations"].push_back(r);
    }
    for (const std::string& entry : registered(ends)) expected.push_back(entry);
  }
  std::sort(expected.begin(), expected.end());
  expected.erase(std::unique(expected.begin(), expected.end()), expected.end());
  ASSERT_EQ(expected.size(), 4u) << "VLAN 10, the talker, the listener and the domain";

  const MrpRun replay = mrp({"replay", dir.file("pcap/sw1-p2_sw2-p1.pcap"), "--json", "--out", dir.file("out.pcap")});
  ASSERT_EQ(replay.status, 0) << replay.err;
  const std::vector<Json> lines = jsonLines(replay.out);
  // The registrations, before the replaying bridge's streams.
  const auto table =
      std::find_if(lines.rbegin(), lines.rend(), [](const Json& l) { return l.contains("registrations"); });
  ASSERT_NE(table, lines.rend());
  EXPECT_EQ(registered(*table), expected);
  EXPECT_EQ((*table)["bridge"], "replay");

  // What the replaying bridge sent is in --out, frame for frame.
  std::vector<std::string> sent;
  for (const Json& line : lines) {
    if (line.contains("tx")) sent.push_back(line["tx"]);
  }
  MrpCli::CaptureReader reader(dir.file("out.pcap"));
  std::vector<std::string> written;
  while (auto frame = reader.next()) {
    std::string hex;
    for (std::uint8_t octet : frame->bytes) {
      char digits[3];
      std::snprintf(digits, sizeof digits, "%02x", octet);
      hex += digits;
    }
    written.push_back(hex);
  }
  EXPECT_FALSE(sent.empty());
  EXPECT_EQ(written, sent);
}

}  // namespace
}  // namespace MrpTest
