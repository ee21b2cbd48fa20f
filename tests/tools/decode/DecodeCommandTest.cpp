#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <nlohmann/json.hpp>

#include <sstream>
#include <string>
#include <vector>

#include "MrpProgram.h"
#include "decode/DecodeCommand.h"
#include "common/Hex.h"
#include "format/CaptureWriter.h"
#include "support/FileBytes.h"
#include "support/MrpduFrames.h"
#include "support/PcapngBuilder.h"
#include "support/TempDir.h"

namespace {

using Bytes = std::vector<std::uint8_t>;
using Json = nlohmann::json;
using MrpTest::PcapngBuilder;
using MrpTest::Frames::kMsrpAllTypes;

struct DecodeRun {
  int status;
  std::string out;
  std::string err;
};

// `mrp decode ARGS...` with `input` on standard input.
DecodeRun decode(const std::vector<std::string>& args, const std::string& input = "") {
  std::vector<std::string> commandLine = {"decode"};
  commandLine.insert(commandLine.end(), args.begin(), args.end());
  std::istringstream in(input);
  std::ostringstream out, err;
  const int status = MrpCli::runMrp(commandLine, in, out, err);
  return {status, out.str(), err.str()};
}

// The worked MVRP example: JoinIn 10, JoinIn 11, Lv 12, end of PDU.
const std::string kMvrpHex = "00 01 02 0003 000a 2f 0000 0000";
const std::string kMvrpJson =
    "{\"frame\": 1, \"application\": \"mvrp\", \"leaveAll\": [], \"domain\": [], \"attributes\": ["
    "{\"type\": 1, \"key\": \"10\", \"event\": 1, \"value\": \"000a\", \"vlan\": 10}, "
    "{\"type\": 1, \"key\": \"11\", \"event\": 1, \"value\": \"000b\", \"vlan\": 11}, "
    "{\"type\": 1, \"key\": \"12\", \"event\": 5, \"value\": \"000c\", \"vlan\": 12}], \"events\": 3, "
    "\"counters\": {\"numOfIncorrectPduVersion\": 0, \"numOfUnknownAttributeType\": 0, \"numOfMalformedPkts\": 0, "
    "\"numOfUnknownApplication\": 0}}\n";

TEST(DecodeCommandTest, DecodesOneMrpduGivenAsHex) {
  const DecodeRun run = decode({"--app", "mvrp", "--hex", kMvrpHex});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out, kMvrpJson);
  EXPECT_EQ(run.err, "");
}

TEST(DecodeCommandTest, DecodesOneMrpduPerNonEmptyLineOfStandardInput) {
  const DecodeRun run = decode({"--app", "mvrp"}, kMvrpHex + "\n\n" + kMvrpHex + "\n");
  ASSERT_EQ(run.status, 0);
  std::string second = kMvrpJson;
  second.replace(second.find("\"frame\": 1"), 10, "\"frame\": 2");
  EXPECT_EQ(run.out, kMvrpJson + second) << "each frame starts from a clean per-frame state";
}

TEST(DecodeCommandTest, MsrpDomainAndLeaveAllAreReportedApart) {
  // MSRP: a Domain message (type 4, length 4, list length 9) with one
  // LeaveAll vector of one value: class 6, priority 3, VID 2, event JoinIn.
  const DecodeRun run = decode({"--app", "msrp", "--hex", "00 04 04 0009 2001 06 03 0002 24 0000 0000"});
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_NE(run.out.find("\"leaveAll\": [4]"), std::string::npos) << run.out;
  EXPECT_NE(run.out.find("\"domain\": [{\"type\": 4, \"key\": \"6\", \"event\": 1, \"value\": \"06030002\", "
                         "\"classId\": 6, \"priority\": 3, \"vid\": 2}]"),
            std::string::npos)
      << run.out;
  EXPECT_NE(run.out.find("\"attributes\": []"), std::string::npos) << run.out;
}

// Members decode writes for one of kMsrpAllTypes' values, found by its type
// and key.
struct ReadableCase {
  const char* name;
  unsigned type;
  std::string key;
  Json fields;
};

class DecodeReadableFieldsTest : public ::testing::TestWithParam<ReadableCase> {};

TEST_P(DecodeReadableFieldsTest, AreWrittenBesideTheHexOfEachMsrpValue) {
  const std::string hex = MrpCli::hexEncode(kMsrpAllTypes.data(), kMsrpAllTypes.size());
  const DecodeRun run = decode({"--app", "msrp", "--hex", hex});
  ASSERT_EQ(run.status, 0) << run.err;
  const Json frame = Json::parse(run.out);
  std::vector<Json> found;
  for (const char* list : {"attributes", "domain"}) {
    for (const Json& attribute : frame[list]) {
      if (attribute["type"] == GetParam().type && attribute["key"] == GetParam().key) found.push_back(attribute);
    }
  }
  ASSERT_EQ(found.size(), 1u) << run.out;
  for (const auto& [name, value] : GetParam().fields.items()) EXPECT_EQ(found[0][name], value) << name;
}

INSTANTIATE_TEST_SUITE_P(
    MsrpAllTypes, DecodeReadableFieldsTest,
    ::testing::Values(
        ReadableCase{"TalkerAdvertise", 1, "4822678189178881", {{"streamId", "00:11:22:33:44:55:00:01"}}},
        ReadableCase{"NextTalkerAdvertise", 1, "4822678189178882", {{"streamId", "00:11:22:33:44:55:00:02"}}},
        ReadableCase{"TalkerFailed", 2, "4822678189178889", {{"streamId", "00:11:22:33:44:55:00:09"}}},
        ReadableCase{"ListenerReady", 3, "4822678189178881",
                     {{"value", "0011223344550001"},  // the FirstValue, without the stored declaration
                      {"streamId", "00:11:22:33:44:55:00:01"},
                      {"declaration", "ready"}}},
        ReadableCase{"ListenerIgnore", 3, "4822678189178882",
                     {{"streamId", "00:11:22:33:44:55:00:02"}, {"declaration", "ignore"}}},
        ReadableCase{"ListenerAskingFailed", 3, "4822678189178883",
                     {{"streamId", "00:11:22:33:44:55:00:03"}, {"declaration", "askingFailed"}}},
        ReadableCase{"ListenerReadyFailed", 3, "4822678189178884",
                     {{"streamId", "00:11:22:33:44:55:00:04"}, {"declaration", "readyFailed"}}},
        ReadableCase{"Domain", 4, "6", {{"classId", 6}, {"priority", 3}, {"vid", 2}}}),
    [](const ::testing::TestParamInfo<ReadableCase>& info) { return std::string(info.param.name); });

TEST(DecodeCommandTest, CountsThisFramesFaults) {
  const DecodeRun run = decode({"--app", "mvrp"}, "01 01 02 0001 000a 24 0000 0000\n00 01 02 0000\n");
  ASSERT_EQ(run.status, 0) << run.err;
  std::istringstream lines(run.out);
  std::string first, second;
  std::getline(lines, first);
  std::getline(lines, second);
  EXPECT_NE(first.find("\"numOfIncorrectPduVersion\": 1"), std::string::npos) << first;
  EXPECT_NE(second.find("\"numOfIncorrectPduVersion\": 0"), std::string::npos) << second;
  EXPECT_NE(second.find("\"numOfMalformedPkts\": 1"), std::string::npos) << second;
}

const std::string kMvrpText = "1  MVRP  JoinIn VLAN 10-11, Lv VLAN 12\n";

TEST(DecodeCommandTest, TextIsOneLinePerFrame) {
  const DecodeRun run = decode({"--app", "mvrp", "--text"}, kMvrpHex + "\n" + kMvrpHex + "\n");
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out, kMvrpText + "2  MVRP  JoinIn VLAN 10-11, Lv VLAN 12\n");
}

TEST(DecodeCommandTest, VerboseIsTextWithTheFieldsUnderEachLine) {
  const DecodeRun run = decode({"--app", "mvrp", "--hex", kMvrpHex, "-V"});
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_THAT(run.out, ::testing::StartsWith(kMvrpText + "    ProtocolVersion: 0\n    Message\n"));
  EXPECT_EQ(decode({"--app", "mvrp", "--hex", kMvrpHex, "--verbose", "--text"}).out, run.out);
}

TEST(DecodeCommandTest, JsonIsTheDefaultForAProgramAndCanBeAskedFor) {
  EXPECT_EQ(decode({"--app", "mvrp", "--hex", kMvrpHex, "--json"}).out, kMvrpJson);
  EXPECT_EQ(decode({"--app", "mvrp", "--hex", kMvrpHex}).out, kMvrpJson);
}

struct FormCase {
  const char* name;
  bool text;
  bool json;
  bool verbose;
  bool terminal;
  MrpCli::DecodeCommand::Form form;
};

class DecodeFormTest : public ::testing::TestWithParam<FormCase> {};

TEST_P(DecodeFormTest, FollowsTheOptionsThenTheTerminal) {
  const FormCase& c = GetParam();
  EXPECT_EQ(MrpCli::DecodeCommand::formOf(c.text, c.json, c.verbose, c.terminal), c.form);
}

using Form = MrpCli::DecodeCommand::Form;
INSTANTIATE_TEST_SUITE_P(Options, DecodeFormTest,
                         ::testing::Values(FormCase{"TerminalReadsText", false, false, false, true, Form::text},
                                           FormCase{"ProgramReadsJson", false, false, false, false, Form::json},
                                           FormCase{"TextOnAPipe", true, false, false, false, Form::text},
                                           FormCase{"JsonOnATerminal", false, true, false, true, Form::json},
                                           FormCase{"VerboseOnAPipe", false, false, true, false, Form::verbose},
                                           FormCase{"VerboseWithText", true, false, true, true, Form::verbose}),
                         [](const ::testing::TestParamInfo<FormCase>& info) { return std::string(info.param.name); });

// The mrp program itself with its standard output on a terminal (a pty):
// what it printed, the terminal's line ends made "\n" again.
std::string onTerminal(const std::vector<std::string>& args) {
  int terminal = -1;
  const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
  if (child == 0) {
    std::vector<char*> argv{const_cast<char*>(MRP_PROGRAM)};
    for (const std::string& arg : args) argv.push_back(const_cast<char*>(arg.c_str()));
    argv.push_back(nullptr);
    execv(MRP_PROGRAM, argv.data());
    _exit(127);
  }
  std::string text;
  char buffer[4096];
  // The terminal reads end (EIO) once the child has closed its side.
  for (ssize_t n; (n = read(terminal, buffer, sizeof buffer)) > 0;) text.append(buffer, static_cast<std::size_t>(n));
  close(terminal);
  waitpid(child, nullptr, 0);
  for (std::size_t at; (at = text.find("\r\n")) != std::string::npos;) text.erase(at, 1);
  return text;
}

TEST(DecodeCommandTest, TextIsTheDefaultOnATerminal) {
  EXPECT_EQ(onTerminal({"decode", "--app", "mvrp", "--hex", kMvrpHex}), kMvrpText);
  EXPECT_EQ(onTerminal({"decode", "--app", "mvrp", "--hex", kMvrpHex, "--json"}), kMvrpJson);
}

struct BadArguments {
  std::vector<std::string> args;
  std::string input;
  std::string error;
};

class DecodeCommandErrorTest : public ::testing::TestWithParam<BadArguments> {};

TEST_P(DecodeCommandErrorTest, FailsWithOneLineAndStatusTwo) {
  const DecodeRun run = decode(GetParam().args, GetParam().input);
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.err, "mrp decode: " + GetParam().error + "\n");
}

// Mistakes in the arguments point at the command's help; mistakes in the
// input do not.
const std::string kSeeHelp = " (try 'mrp decode --help')";

INSTANTIATE_TEST_SUITE_P(
    Input, DecodeCommandErrorTest,
    ::testing::Values(
        BadArguments{{"--app", "mvrp", "--hex", "0001020"}, "", "--hex: odd number of hex digits"},
        BadArguments{{"--app", "mvrp", "--hex", "00zz"}, "", "--hex: not a hex digit: 'z'"},
        BadArguments{{"--app", "mvrp"}, "000102\n00x\n", "line 2: not a hex digit: 'x'"},
        BadArguments{{"/nonexistent/capture.pcap"}, "", "cannot open '/nonexistent/capture.pcap'"},
        BadArguments{{"--app", "xyz", "--hex", "00"}, "", "--app: unknown application 'xyz' (msrp or mvrp)" + kSeeHelp},
        BadArguments{{"--hex", "00"}, "", "--app msrp|mvrp is needed for hex input" + kSeeHelp},
        BadArguments{{}, "00\n", "--app msrp|mvrp is needed for hex input" + kSeeHelp},
        BadArguments{{"--app"}, "", "--app: 1 required msrp|mvrp missing" + kSeeHelp},
        BadArguments{{"--frobnicate"}, "", "The following argument was not expected: --frobnicate" + kSeeHelp},
        BadArguments{{"a.pcap", "b.pcap"}, "", "The following argument was not expected: b.pcap" + kSeeHelp},
        BadArguments{{"--app", "msrp", "a.pcap"}, "", "a capture file takes no --app or --hex" + kSeeHelp},
        BadArguments{{"--hex", "00", "a.pcap"}, "", "a capture file takes no --app or --hex" + kSeeHelp},
        BadArguments{{"--app", "mvrp", "--text", "--json"}, "", "--json takes no --text or --verbose" + kSeeHelp},
        BadArguments{{"a.pcap", "--json", "-V"}, "", "--json takes no --text or --verbose" + kSeeHelp}));

class DecodePcapTest : public ::testing::Test {
 protected:
  void writePcap(const std::vector<Bytes>& frames) {
    MrpCli::CaptureWriter writer(path_);
    for (const Bytes& frame : frames) writer.write(0, frame);
  }
  void writeRaw(const Bytes& bytes) { MrpTest::writeFileBytes(path_, bytes); }

  MrpTest::TempDir dir_;
  const std::string path_ = dir_.file("decode_test.pcap");
};

Bytes frame(std::initializer_list<std::uint8_t> header, const std::string& hex) {
  Bytes bytes(header);
  std::string error;
  const auto payload = MrpCli::hexDecode(hex, error);
  bytes.insert(bytes.end(), payload->begin(), payload->end());
  return bytes;
}

const std::initializer_list<std::uint8_t> kMvrpHeader = {0x01, 0x80, 0xc2, 0x00, 0x00, 0x21, 0x02, 0, 0, 0, 0, 1,
                                                         0x88, 0xf5};
const std::initializer_list<std::uint8_t> kTaggedMsrpHeader = {0x01, 0x80, 0xc2, 0x00, 0x00, 0x0e, 0x02, 0, 0, 0, 0,
                                                               2,    0x81, 0x00, 0x00, 0x05, 0x22, 0xea};
const std::initializer_list<std::uint8_t> kIpHeader = {0x02, 0, 0, 0, 0, 9, 0x02, 0, 0, 0, 0, 1, 0x08, 0x00};

TEST_F(DecodePcapTest, ChoosesTheApplicationByAddressAndEtherTypeAndSkipsOtherFrames) {
  writePcap({frame(kMvrpHeader, kMvrpHex), frame(kIpHeader, "45000014"),
             frame(kTaggedMsrpHeader, "00 04 04 0009 0001 06 03 0002 24 0000 0000"), Bytes{1, 2, 3}});
  const DecodeRun run = decode({path_});
  ASSERT_EQ(run.status, 0) << run.err;
  std::istringstream lines(run.out);
  std::vector<std::string> out;
  for (std::string line; std::getline(lines, line);) out.push_back(line);
  ASSERT_EQ(out.size(), 4u);
  EXPECT_EQ(out[0] + "\n", kMvrpJson);
  EXPECT_EQ(out[1], "{\"frame\": 2, \"skipped\": \"not an MSRP or MVRP frame\"}");
  EXPECT_NE(out[2].find("{\"frame\": 3, \"application\": \"msrp\""), std::string::npos) << out[2];
  EXPECT_NE(out[2].find("\"key\": \"6\""), std::string::npos) << out[2];
  EXPECT_EQ(out[3], "{\"frame\": 4, \"skipped\": \"shorter than an Ethernet header\"}");
}

TEST_F(DecodePcapTest, RejectsAFileThatIsNotAPcap) {
  writeRaw({'n', 'o', 't', ' ', 'a', ' ', 'p', 'c', 'a', 'p', ' ', 'f', 'i', 'l', 'e', ' ', 'a', 't', ' ', 'a', 'l',
            'l', '!', '!'});
  const DecodeRun run = decode({path_});
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.err, "mrp decode: " + path_ + ": not a pcap or pcapng file: unknown file format\n");
}

TEST_F(DecodePcapTest, RejectsAShortFile) {
  writeRaw({0xd4, 0xc3, 0xb2});
  const DecodeRun run = decode({path_});
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.err, "mrp decode: " + path_ +
                         ": not a pcap or pcapng file: truncated dump file; tried to read 4 file header bytes, "
                         "only got 3\n");
}

TEST_F(DecodePcapTest, ReportsATruncatedRecordAfterTheFramesBeforeIt) {
  writePcap({frame(kMvrpHeader, kMvrpHex), frame(kMvrpHeader, kMvrpHex)});
  Bytes bytes = MrpTest::readFileBytes(path_);
  bytes.resize(bytes.size() - 3);
  writeRaw(bytes);
  const DecodeRun run = decode({path_});
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.out, kMvrpJson);
  EXPECT_EQ(run.err, "mrp decode: " + path_ + ": truncated dump file; tried to read 26 captured bytes, only got 23\n");
}

TEST_F(DecodePcapTest, RejectsAnotherLinkType) {
  Bytes header = {0xd4, 0xc3, 0xb2, 0xa1, 2, 0, 4, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xff, 0xff, 0, 0, 113, 0, 0, 0};
  writeRaw(header);
  const DecodeRun run = decode({path_});
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.err, "mrp decode: " + path_ + ": pcap link type 113 is not Ethernet\n");
}

TEST_F(DecodePcapTest, ReadsBigEndianFiles) {
  Bytes bytes = {0xa1, 0xb2, 0xc3, 0xd4, 0, 2, 0, 4, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xff, 0xff, 0, 0, 0, 1};
  const Bytes mvrp = frame(kMvrpHeader, kMvrpHex);
  const Bytes record = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, static_cast<std::uint8_t>(mvrp.size()),
                        0, 0, 0, static_cast<std::uint8_t>(mvrp.size())};
  bytes.insert(bytes.end(), record.begin(), record.end());
  bytes.insert(bytes.end(), mvrp.begin(), mvrp.end());
  writeRaw(bytes);
  const DecodeRun run = decode({path_});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out, kMvrpJson);
}

TEST_F(DecodePcapTest, DecodesAPcapngCaptureAsWiresharkSavesIt) {
  PcapngBuilder capture;
  capture.interface(PcapngBuilder::kLinkTypeEthernet)
      .packet(0, 1'000'000, frame(kIpHeader, "45000014"))
      .packet(0, 2'000'000, frame(kMvrpHeader, kMvrpHex));
  writeRaw(capture.bytes());
  const DecodeRun run = decode({path_});
  EXPECT_EQ(run.status, 0) << run.err;
  std::string second = kMvrpJson;
  second.replace(second.find("\"frame\": 1"), 10, "\"frame\": 2");
  EXPECT_EQ(run.out, "{\"frame\": 1, \"skipped\": \"not an MSRP or MVRP frame\"}\n" + second);
}

TEST_F(DecodePcapTest, RejectsAPcapngCaptureOfAnotherLinkType) {
  PcapngBuilder capture;
  capture.interface(113).packet(0, 0, frame(kMvrpHeader, kMvrpHex));
  writeRaw(capture.bytes());
  const DecodeRun run = decode({path_});
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err, "mrp decode: " + path_ + ": pcap link type 113 is not Ethernet\n");
}

}  // namespace
