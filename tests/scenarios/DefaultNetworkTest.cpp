// The network `mrp sim` runs without a scenario file, read from its JSON
// timeline: what travels where, and how soon.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "format/CaptureReader.h"
#include "support/MrpRun.h"
#include "support/SimJson.h"
#include "support/TempDir.h"
#include "support/Tshark.h"

namespace MrpTest {
namespace {

using Json = nlohmann::json;

constexpr double kLeaveTime = 0.6;
constexpr double kLeaveAllTime = 10.0;
// The registrar's transmit timer: a leave goes out at the next cycle.
constexpr double kTransmitCycle = 0.1;
// Times are printed to the microsecond.
constexpr double kSlack = 1e-6;
const std::string kStream = "00:1b:21:00:00:01:00:01";
constexpr std::uint64_t kStreamKey = 0x001b210000010001;

// The default network: h1 - sw1 - sw2 - sw3 - h2. h1 declares VLAN 10 and
// the talker at 1 s, h2 the listener at 2 s; the VLAN is withdrawn at 30 s,
// sw2:p2 - sw3:p1 is down from 40 s to 60 s.
class DefaultSimTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { lines_ = new std::vector<Json>(simJson({})); }
  static void TearDownTestSuite() {
    delete lines_;
    lines_ = nullptr;
  }
  const std::vector<Json>& lines() const { return *lines_; }

 private:
  static std::vector<Json>* lines_;
};

std::vector<Json>* DefaultSimTest::lines_ = nullptr;

TEST_F(DefaultSimTest, TheVlanAndTheStreamAreRegisteredAtTheFarEndWithinOneSecond) {
  const auto vlan = indicationAt(lines(), "join", "h2", "e0", 1, 10);
  ASSERT_TRUE(vlan);
  EXPECT_LE(*vlan, 1.0 + 1.0);
  const auto talker = indicationAt(lines(), "join", "h2", "e0", 1, kStreamKey);
  ASSERT_TRUE(talker);
  EXPECT_LE(*talker, 1.0 + 1.0);
  const auto listener = indicationAt(lines(), "join", "h1", "e0", 3, kStreamKey);
  ASSERT_TRUE(listener);
  EXPECT_LE(*listener, 2.0 + 1.0);
}

TEST_F(DefaultSimTest, AListenersJoinNamesItsStreamAndItsDeclaration) {
  const auto listener = std::find_if(lines().begin(), lines().end(), [](const Json& l) {
    return l.value("indication", "") == "join" && l["bridge"] == "h1" && l["app"] == "msrp" && l["type"] == 3;
  });
  ASSERT_NE(listener, lines().end());
  EXPECT_EQ((*listener)["key"], std::to_string(kStreamKey));
  EXPECT_EQ((*listener)["streamId"], kStream);
  EXPECT_EQ((*listener)["declaration"], "ready");
}

TEST_F(DefaultSimTest, LeaveAllCyclesBeforeTheWithdrawalLeaveEveryRegistrationInPlace) {
  EXPECT_GT(countWhere(lines(), [](const Json& l) { return l.contains("leaveAll") && l["t"] < 30.0; }), 10u);
  EXPECT_EQ(countWhere(lines(), [](const Json& l) { return l.value("indication", "") == "leave" && l["t"] < 30.0; }),
            0u);
}

TEST_F(DefaultSimTest, AWithdrawnVlanIsDeregisteredHopByHopWithinTheLeaveTimeAndOneTransmitCycle) {
  const double withdrawn = 30.0;
  const std::vector<std::pair<std::string, std::string>> hops = {{"sw1", "p1"}, {"sw2", "p1"}, {"sw3", "p1"}, {"h2", "e0"}};
  for (std::size_t hop = 0; hop < hops.size(); ++hop) {
    const auto left = indicationAt(lines(), "leave", hops[hop].first, hops[hop].second, 1, 10, withdrawn);
    ASSERT_TRUE(left) << hops[hop].first;
    EXPECT_LE(*left, withdrawn + static_cast<double>(hop + 1) * (kLeaveTime + kTransmitCycle) + kSlack)
        << hops[hop].first;
  }
  for (const Json& line : lines()) {
    if (!line.contains("registrations")) continue;
    for (const Json& registration : line["registrations"]) {
      EXPECT_FALSE(registration["app"] == "mvrp" && registration["key"] == "10") << line;
    }
  }
}

TEST_F(DefaultSimTest, ACutLinkDeregistersWhatWasHeardThroughItWithinOneAndAHalfLeaveAllTimesAndALeaveTime) {
  const double cut = 40.0;
  const double bound = cut + 1.5 * kLeaveAllTime + kLeaveTime + kSlack;
  const auto talker = indicationAt(lines(), "leave", "sw3", "p1", 1, kStreamKey, cut);
  ASSERT_TRUE(talker);
  EXPECT_LE(*talker, bound);
  const auto listener = indicationAt(lines(), "leave", "sw2", "p2", 3, kStreamKey, cut);
  ASSERT_TRUE(listener);
  EXPECT_LE(*listener, bound);
  // Restored at 60 s, the stream comes back by the next LeaveAll.
  const auto back = indicationAt(lines(), "join", "h2", "e0", 1, kStreamKey, 60.0);
  ASSERT_TRUE(back);
  EXPECT_LE(*back, 60.0 + 1.5 * kLeaveAllTime + kSlack);
}

TEST_F(DefaultSimTest, EveryTransmittedFrameIsOnTheTimelineWithItsApplication) {
  const std::size_t frames = countWhere(lines(), [](const Json& l) { return l.contains("tx"); });
  EXPECT_GT(frames, 100u);
  EXPECT_EQ(countWhere(lines(),
                       [](const Json& l) {
                         if (!l.contains("tx")) return false;
                         const std::string dst = l["tx"].get<std::string>().substr(0, 12);
                         return (l["app"] == "mvrp" && dst == "0180c2000021") ||
                                (l["app"] == "msrp" && dst == "0180c200000e");
                       }),
            frames);
  EXPECT_EQ(countWhere(lines(), [](const Json& l) { return l.contains("link"); }), 2u);
}

TEST_F(DefaultSimTest, TheRunEndsWithOneRegistrationTablePerBridge) {
  std::vector<std::string> bridges;
  for (const Json& line : lines()) {
    if (line.contains("registrations")) bridges.push_back(line["bridge"]);
  }
  EXPECT_EQ(bridges, (std::vector<std::string>{"h1", "sw1", "sw2", "sw3", "h2"}));
  const Json& last = lines().back();
  EXPECT_EQ(last["t"], 90.0);
  // Only the domains are left: each port declares and registers class A.
  ASSERT_EQ(last["registrations"].size(), 1u);
  EXPECT_EQ(last["registrations"][0],
            Json::parse(R"({"port": "e0", "app": "msrp", "type": 4, "key": "6", "value": "06030002",
                            "classId": 6, "priority": 3, "vid": 2, "registrar": "IN", "applicant": "QA"})"));
}

// Every frame of the default network's captures, dissected in one tshark run.
TEST(DefaultSimCaptureTest, EveryCapturedFrameOfTheDefaultNetworkDissectsWithoutAMalformedReport) {
  requireTshark();
  TempDir dir;
  const MrpRun run = mrp({"sim", "--pcap", dir.file("pcap")});
  ASSERT_EQ(run.status, 0) << run.err;
  std::vector<std::vector<std::uint8_t>> frames;
  for (const char* link : {"h1-e0_sw1-p1", "sw1-p2_sw2-p1", "sw2-p2_sw3-p1", "sw3-p2_h2-e0"}) {
    MrpCli::CaptureReader reader(dir.file("pcap/") + link + ".pcap");
    ASSERT_TRUE(reader.ok()) << reader.error();
    while (auto frame = reader.next()) frames.push_back(frame->bytes);
    EXPECT_TRUE(reader.ok()) << reader.error();
  }
  ASSERT_GT(frames.size(), 100u);
  const auto dissected = tsharkDissect(frames);
  for (std::size_t i = 0; i < dissected.size(); ++i) {
    bool mrp = false;
    for (const DissectedField& field : dissected[i]) {
      EXPECT_NE(field.name, "_ws.malformed") << "frame " << i;
      mrp = mrp || field.name == "mrp-mvrp" || field.name == "mrp-msrp";
    }
    EXPECT_TRUE(mrp) << "frame " << i;
  }
}

}  // namespace
}  // namespace MrpTest
