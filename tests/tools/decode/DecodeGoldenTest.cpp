// Golden outputs of `mrp decode --text` and `-V`: the sample capture, a
// capture of both neighbours of a link with frames of every kind a capture
// holds (malformed, of no MRP application, cut short), and malformed MRPDUs
// given in hex. MRP_REGENERATE_GOLDEN=1 writes the files again.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "common/Hex.h"
#include "format/CaptureWriter.h"
#include "support/Golden.h"
#include "support/MrpRun.h"
#include "support/TempDir.h"

namespace MrpTest {
namespace {

using Bytes = std::vector<std::uint8_t>;

const std::filesystem::path kGolden = std::filesystem::path(MRP_SOURCE_DIR) / "tests" / "tools" / "decode" / "golden";
const std::string kSample = std::string(MRP_SOURCE_DIR) + "/samples/sample.pcap";

Bytes hex(const std::string& text) {
  std::string error;
  return *MrpCli::hexDecode(text, error);
}

// Destination, source and EtherType, then the payload.
Bytes frame(const std::string& header, const std::string& payload) { return hex(header + payload); }

const std::string kMvrpFromA = "0180c2000021 001b21aabb01 88f5 ";
const std::string kMsrpFromB = "0180c200000e 001b21aabb02 22ea ";

// A link's capture: both neighbours, a tenth of a second apart.
const std::vector<Bytes> kLinkFrames = {
    // LeaveAll with VLANs 10-12 joined, then VLAN 20 leaving.
    frame(kMvrpFromA, "00 01 02 2003 000a 2b 0001 0014 b4 0000 0000"),
    // Talker, its Listener Ready, Domain class A.
    frame(kMsrpFromB,
          "00 01 19 001e 0001 001b210000010001 91e0f000fe01 0002 0100 0001 70 00000000 6c 0000"
          "   03 08 000e 0001 001b210000010001 24 80 0000"
          "   04 04 0009 0001 06 03 0002 24 0000 0000"),
    // MVRP's address with MSRP's EtherType.
    frame("0180c2000021 001b21aabb01 22ea ", "00 01 02 0001 000a 24 0000 0000"),
    // A Listener vector of 5 values cut inside its four-packed events.
    frame(kMsrpFromB, "00 03 08 0010 0005 001b210000010001 2b b4 87"),
    // ProtocolVersion 1.
    frame(kMvrpFromA, "01 01 02 0001 000a 24 0000 0000"),
    // ARP.
    frame("ffffffffffff 001b21aabb01 0806 ", "0001 0800 0604 0001"),
    // A runt.
    hex("0180c2000021"),
    // Talker Failed: insufficient bandwidth at bridge 80:00:02:00:00:00:00:01.
    frame(kMsrpFromB,
          "00 02 22 0027 0001 001b210000010002 91e0f000fe02 0002 0100 0001 70 00001000 8000020000000001 01 24 0000"
          "   0000"),
};

std::string linkCapture(const TempDir& dir) {
  const std::string path = dir.file("link.pcap");
  MrpCli::CaptureWriter writer(path);
  double seconds = 100;
  for (const Bytes& bytes : kLinkFrames) {
    writer.write(seconds, bytes);
    seconds += 0.1;
  }
  return path;
}

// MVRP PDUs in hex, one per line.
const std::string kMalformedMvrp =
    "01 01 02 0001 000a 24 0000 0000\n"        // ProtocolVersion 1
    "00 01 02 0003 000a\n"                     // cut inside the packed events
    "00 02 00 2000 0000 0000\n"                // LeaveAll of an unknown attribute type
    "00 01 02 0000 000a 0000 0000\n"           // a vector of no values without LeaveAll
    "00 01 03 0001 000a 24 0000 0000\n"        // AttributeLength 3 for a VLAN
    "00 01 02 0001 000a 24 0000 0000 ffff\n";  // octets behind the PDU's EndMark

// MSRP PDUs in hex, one per line.
const std::string kMalformedMsrp =
    "00 01 19 001e 0002 0011223344550001 91e0f000fe00\n"     // cut inside the Talker's FirstValue
    "00 03 08 0000 0001 0011223344550001 24 80 0000 0000\n"  // AttributeListLength 0
    "00 09 00 0004 2000 0000 0000\n"                         // LeaveAll of an unknown attribute type
    "00 04 04 0009 0001 06 03 0002 24 0000\n";               // no EndMark of the PDU

struct GoldenCase {
  const char* name;
  std::vector<std::string> args;  // "CAPTURE" is the link capture
  std::string input;
  std::string golden;
};

class DecodeGoldenTest : public ::testing::TestWithParam<GoldenCase> {};

TEST_P(DecodeGoldenTest, PrintsTheGoldenText) {
  TempDir dir;
  std::vector<std::string> args = {"decode"};
  for (const std::string& arg : GetParam().args) args.push_back(arg == "CAPTURE" ? linkCapture(dir) : arg);
  const MrpRun run = mrp(args, GetParam().input);
  EXPECT_EQ(run.status, 0) << run.err;
  expectGolden(kGolden / GetParam().golden, run.out, "mrp decode");
  if (regeneratingGolden()) GTEST_SKIP() << "rewrote " << GetParam().golden;
}

INSTANTIATE_TEST_SUITE_P(
    Outputs, DecodeGoldenTest,
    ::testing::Values(
        GoldenCase{"Sample", {"--text", kSample}, "", "sample.txt"},
        GoldenCase{"SampleVerbose", {"-V", kSample}, "", "sample-verbose.txt"},
        GoldenCase{"Link", {"--text", "CAPTURE"}, "", "link.txt"},
        GoldenCase{"LinkVerbose", {"-V", "CAPTURE"}, "", "link-verbose.txt"},
        GoldenCase{"MalformedMvrp", {"--text", "--app", "mvrp"}, kMalformedMvrp, "malformed-mvrp.txt"},
        GoldenCase{"MalformedMvrpVerbose", {"-V", "--app", "mvrp"}, kMalformedMvrp, "malformed-mvrp-verbose.txt"},
        GoldenCase{"MalformedMsrp", {"--text", "--app", "msrp"}, kMalformedMsrp, "malformed-msrp.txt"},
        GoldenCase{"MalformedMsrpVerbose", {"-V", "--app", "msrp"}, kMalformedMsrp, "malformed-msrp-verbose.txt"}),
    [](const ::testing::TestParamInfo<GoldenCase>& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace MrpTest
