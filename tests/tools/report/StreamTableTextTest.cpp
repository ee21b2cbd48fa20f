#include "report/StreamTableText.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "CreditBasedShaper.h"
#include "report/StreamTableJson.h"

namespace MrpTest {
namespace {

using Json = nlohmann::ordered_json;
using MrpAgent::AttributeValue;
using MrpAgent::StreamTable;

constexpr std::uint64_t kStream = 0x001b210000010001;
constexpr std::uint64_t kThisBridge = 0x8000020000000002;
constexpr std::uint64_t kOtherBridge = 0x8000020000000001;
constexpr std::uint64_t kGigabit = 1'000'000'000;

Mrp::MsrpTalkerAdvertiseAttribute talker(std::uint64_t streamId, std::uint32_t latency) {
  return Mrp::MsrpTalkerAdvertiseAttribute(streamId,
                                           Mrp::DataFrameParameters(Velo::EthAddr(0x91, 0xe0, 0xf0, 0, 0xfe, 1), 2),
                                           Mrp::Tspec(100, 1), Mrp::PriorityAndRank(3, 1), latency);
}

AttributeValue failed(std::uint64_t streamId, std::uint32_t latency, std::uint64_t bridgeId, std::uint8_t code) {
  return AttributeValue(
      Mrp::MsrpTalkerFailedAttribute(talker(streamId, latency), Mrp::FailureInformation(bridgeId, code)));
}

// sw2 of a line whose talker is behind p1: stream 1 reserved towards p2
// and refused towards p3; stream 2 with a listener only; stream 3 refused
// by a bridge before sw2.
StreamTable sampleTable() {
  const MrpAgent::CbsParameters shaper{9'088'000, -990'912'000, 15, -141};
  StreamTable table;
  table.streams.push_back({kStream,
                           "p1",
                           AttributeValue(talker(kStream, 13'336)),
                           Mrp::MsrpListenerEvent::readyFailed,
                           {{"p2", Mrp::MsrpListenerEvent::ready, AttributeValue(talker(kStream, 25'672)), true,
                             MrpAgent::kSrClassA, 9'088'000},
                            {"p3", Mrp::MsrpListenerEvent::askingFailed, failed(kStream, 25'672, kThisBridge, 1), false,
                             MrpAgent::kSrClassA, 9'088'000}}});
  table.streams.push_back({kStream + 1,
                           "",
                           std::nullopt,
                           std::nullopt,
                           {{"p2", Mrp::MsrpListenerEvent::ready, std::nullopt, false, std::nullopt, 0}}});
  table.streams.push_back({kStream + 2,
                           "p1",
                           failed(kStream + 2, 1000, kOtherBridge, 8),
                           Mrp::MsrpListenerEvent::askingFailed,
                           {{"p2", Mrp::MsrpListenerEvent::askingFailed, failed(kStream + 2, 1000, kOtherBridge, 8),
                             false, std::nullopt, 0}}});
  table.classes.push_back({"p2", MrpAgent::kSrClassA, kGigabit, 9'088'000, 9'088'000, 750'000'000, shaper,
                           MrpAgent::tcCommand("p2", MrpAgent::kSrClassA, kGigabit, shaper)});
  return table;
}

TEST(StreamTableJsonTest, EachStreamHasItsTalkerAndAPortRowAndEachReservedClassItsShaper) {
  const Json expected = Json::parse(R"({
    "streams": [
      {"streamId": "00:1b:21:00:00:01:00:01", "key": "7636108254969857", "talkerPort": "p1", "talker": "advertise",
       "accumulatedLatency": 13336, "listenerDeclared": "readyFailed",
       "ports": [
         {"port": "p2", "listener": "ready", "declared": "advertise", "accumulatedLatency": 25672, "reserved": true,
          "class": "A", "bandwidth": 9088000},
         {"port": "p3", "listener": "askingFailed", "declared": "failed", "accumulatedLatency": 25672,
          "failure": {"code": 1, "text": "insufficient bandwidth", "bridgeId": "80:00:02:00:00:00:00:02"},
          "reserved": false, "class": "A", "bandwidth": 9088000}]},
      {"streamId": "00:1b:21:00:00:01:00:02", "key": "7636108254969858",
       "ports": [{"port": "p2", "listener": "ready", "reserved": false}]},
      {"streamId": "00:1b:21:00:00:01:00:03", "key": "7636108254969859", "talkerPort": "p1", "talker": "failed",
       "accumulatedLatency": 1000,
       "failure": {"code": 8, "text": "egress port is not AVB capable", "bridgeId": "80:00:02:00:00:00:00:01"},
       "listenerDeclared": "askingFailed",
       "ports": [
         {"port": "p2", "listener": "askingFailed", "declared": "failed", "accumulatedLatency": 1000,
          "failure": {"code": 8, "text": "egress port is not AVB capable", "bridgeId": "80:00:02:00:00:00:00:01"},
          "reserved": false}]}],
    "classes": [
      {"port": "p2", "class": "A", "portSpeed": 1000000000, "reserved": 9088000, "total": 9088000,
       "limit": 750000000, "idleSlope": 9088000, "sendSlope": -990912000, "hiCredit": 15, "loCredit": -141,
       "tc": "tc qdisc replace dev p2 parent 100:1 cbs idleslope 9088 sendslope -990912 hicredit 15 locredit -141 offload 0"}]
  })");
  EXPECT_EQ(MrpCli::streamTableJson(sampleTable()), expected);
}

TEST(StreamTableJsonTest, AnEmptyTableHasEmptyLists) {
  EXPECT_EQ(MrpCli::streamTableJson({}), Json::parse(R"({"streams": [], "classes": []})"));
}

TEST(StreamTableTextTest, AStreamAndAPortARowARefusalUnderItsRowAndEachShaperWithItsTcCommand) {
  EXPECT_EQ(MrpCli::streamTableText("sw2", MrpCli::streamTableJson(sampleTable())), R"(sw2 streams
  stream                   talker        latency   to talker     port  listener      reserved  class  bandwidth   declared
  00:1b:21:00:00:01:00:01  p1 advertise  13336 ns  readyFailed   p2    ready         yes       A      9.088 Mb/s  advertise
                                                                 p3    askingFailed  no        A      9.088 Mb/s  failed
    Talker Failed: insufficient bandwidth (code 1), bridge 80:00:02:00:00:00:00:02
  00:1b:21:00:00:01:00:02  -                       -             p2    ready         no        -      -           -
  00:1b:21:00:00:01:00:03  p1 failed     1000 ns   askingFailed  p2    askingFailed  no        -      -           failed
    Talker Failed: egress port is not AVB capable (code 8), bridge 80:00:02:00:00:00:00:01
sw2 reservations
  port  speed   class  reserved    total       limit     idleSlope    sendSlope       hiCredit  loCredit
  p2    1 Gb/s  A      9.088 Mb/s  9.088 Mb/s  750 Mb/s  9088 kbit/s  -990912 kbit/s  15 B      -141 B
    tc qdisc replace dev p2 parent 100:1 cbs idleslope 9088 sendslope -990912 hicredit 15 locredit -141 offload 0
)");
}

TEST(StreamTableTextTest, ATableWithoutStreamsSaysSo) {
  EXPECT_EQ(MrpCli::streamTableText("h1", MrpCli::streamTableJson({})),
            "h1 streams\n  (none)\nh1 reservations\n  (none)\n");
}

// A stream heard on its talker's port alone, as an end station hears it.
TEST(StreamTableTextTest, AStreamWithoutOtherPortsHasItsRow) {
  StreamTable table;
  table.streams.push_back({kStream, "e0", failed(kStream, 1000, kOtherBridge, 1), std::nullopt, {}});
  EXPECT_EQ(MrpCli::streamTableText("h2", MrpCli::streamTableJson(table)), R"(h2 streams
  stream                   talker     latency  to talker  port  listener  reserved  class  bandwidth  declared
  00:1b:21:00:00:01:00:01  e0 failed  1000 ns  -                -         no        -      -          -
    Talker Failed: insufficient bandwidth (code 1), bridge 80:00:02:00:00:00:00:01
h2 reservations
  (none)
)");
}

TEST(StreamTableTextTest, ATalkerTheBridgeDeclaresItselfIsItsOwn) {
  StreamTable table;
  StreamTable::Stream stream;
  stream.streamId = 0x001b210000010001ULL;
  StreamTable::PortRow row;
  row.port = "e0";
  row.declared = AttributeValue(Mrp::MsrpTalkerAdvertiseAttribute(
      stream.streamId, Mrp::DataFrameParameters(Velo::EthAddr(0x91, 0xe0, 0xf0, 0, 0xfe, 1), 2), Mrp::Tspec(100, 1),
      Mrp::PriorityAndRank(3, 1), 1000));
  stream.ports.push_back(row);
  table.streams.push_back(stream);
  EXPECT_NE(MrpCli::streamTableText("h1", MrpCli::streamTableJson(table)).find("00:1b:21:00:00:01:00:01  own "),
            std::string::npos);
  table.streams[0].ports[0].declared.reset();
  EXPECT_EQ(MrpCli::streamTableText("h1", MrpCli::streamTableJson(table)).find(" own "), std::string::npos);
}

}  // namespace
}  // namespace MrpTest
