#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "decode/Decoder.h"
#include "decode/FrameText.h"
#include "support/MrpduFrames.h"

namespace MrpCli {
namespace {

using MrpAgent::AttributeValue;

constexpr std::uint64_t kStream = 0x001b210000010001ULL;

Mrp::MsrpTalkerAdvertiseAttribute talker() {
  Mrp::MsrpTalkerAdvertiseAttribute t;
  t.streamIdIs(kStream);
  t.frameIs(Mrp::DataFrameParameters(Velo::EthAddr(0x91, 0xe0, 0xf0, 0x00, 0xfe, 0x01), 2));
  t.tSpecIs(Mrp::Tspec(256, 1));
  t.priorityAndRankIs(Mrp::PriorityAndRank(3, 1));
  return t;
}

Mrp::MsrpTalkerFailedAttribute failed(std::uint8_t code) {
  Mrp::MsrpTalkerFailedAttribute f;
  f.talkerAdvertiseAttributeIs(talker());
  f.failureInformationIs(Mrp::FailureInformation(0x8000020000000001ULL, code));
  return f;
}

struct ValueEventCase {
  const char* name;
  std::uint8_t event;
  AttributeValue value;
  std::string text;
};

class ValueEventTextTest : public ::testing::TestWithParam<ValueEventCase> {};

TEST_P(ValueEventTextTest, NamesTheEventThenTheValue) {
  EXPECT_EQ(valueEventText(GetParam().event, GetParam().value), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Values, ValueEventTextTest,
    ::testing::Values(
        ValueEventCase{"NewVlan", 0, AttributeValue(Mrp::MvrpVlanAttribute(10)), "New VLAN 10"},
        ValueEventCase{"LvVlan", 5, AttributeValue(Mrp::MvrpVlanAttribute(4094)), "Lv VLAN 4094"},
        ValueEventCase{"EventWithoutName", 6, AttributeValue(Mrp::MvrpVlanAttribute(1)), "6 VLAN 1"},
        ValueEventCase{"Talker", 3, AttributeValue(talker()),
                       "JoinMt talker 00:1b:21:00:00:01:00:01 (91:e0:f0:00:fe:01, VLAN 2)"},
        ValueEventCase{"TalkerFailedInWords", 1, AttributeValue(failed(1)),
                       "JoinIn talker failed 00:1b:21:00:00:01:00:01 (91:e0:f0:00:fe:01, VLAN 2): insufficient "
                       "bandwidth (code 1), bridge 80:00:02:00:00:00:00:01"},
        ValueEventCase{"TalkerFailedCodeWithoutWords", 1, AttributeValue(failed(200)),
                       "JoinIn talker failed 00:1b:21:00:00:01:00:01 (91:e0:f0:00:fe:01, VLAN 2): failure code "
                       "200, bridge 80:00:02:00:00:00:00:01"},
        ValueEventCase{"ListenerReady", 1,
                       AttributeValue(Mrp::MsrpListenerAttribute(kStream, Mrp::MsrpListenerEvent::ready)),
                       "JoinIn listener 00:1b:21:00:00:01:00:01 ready"},
        ValueEventCase{"ListenerAskingFailed", 2,
                       AttributeValue(Mrp::MsrpListenerAttribute(kStream, Mrp::MsrpListenerEvent::askingFailed)),
                       "In listener 00:1b:21:00:00:01:00:01 askingFailed"},
        ValueEventCase{"ListenerIgnore", 4,
                       AttributeValue(Mrp::MsrpListenerAttribute(kStream, Mrp::MsrpListenerEvent::ignore)),
                       "Mt listener 00:1b:21:00:00:01:00:01 ignore"},
        ValueEventCase{"Domain", 1, AttributeValue(Mrp::MsrpDomainAttribute(6, 3, 2)),
                       "JoinIn domain class 6 (priority 3, VLAN 2)"}),
    [](const ::testing::TestParamInfo<ValueEventCase>& info) { return std::string(info.param.name); });

DecodedAttribute vlan(std::uint16_t id, std::uint8_t event) {
  DecodedAttribute attribute;
  attribute.type = 1;
  attribute.key = id;
  attribute.event = event;
  attribute.value = AttributeValue(Mrp::MvrpVlanAttribute(id));
  return attribute;
}

DecodedAttribute listener(std::uint64_t stream, std::uint8_t event) {
  DecodedAttribute attribute;
  attribute.type = 3;
  attribute.key = stream;
  attribute.event = event;
  attribute.value = AttributeValue(Mrp::MsrpListenerAttribute(stream, Mrp::MsrpListenerEvent::ready));
  return attribute;
}

struct EventsCase {
  const char* name;
  Mrp::MrpApplication application;
  std::vector<DecodedAttribute> attributes;
  std::string text;
};

class AttributeEventsTextTest : public ::testing::TestWithParam<EventsCase> {};

TEST_P(AttributeEventsTextTest, GroupsRunsOfVlansWithOneEvent) {
  EXPECT_EQ(attributeEventsText(GetParam().application, GetParam().attributes), GetParam().text);
}

DecodedAttribute unknownType() {
  DecodedAttribute attribute;
  attribute.type = 9;
  attribute.key = 5;
  attribute.event = 1;
  return attribute;
}

const auto kMvrp = Mrp::MrpApplication::mvrp;
const auto kMsrp = Mrp::MrpApplication::msrp;

INSTANTIATE_TEST_SUITE_P(
    Runs, AttributeEventsTextTest,
    ::testing::Values(
        EventsCase{"None", kMvrp, {}, ""}, EventsCase{"OneVlan", kMvrp, {vlan(10, 1)}, "JoinIn VLAN 10"},
        EventsCase{"ARange", kMvrp, {vlan(10, 1), vlan(11, 1), vlan(12, 1)}, "JoinIn VLAN 10-12"},
        EventsCase{"RangeThenOtherEvent",
                   kMvrp,
                   {vlan(10, 1), vlan(11, 1), vlan(12, 1), vlan(20, 5)},
                   "JoinIn VLAN 10-12, Lv VLAN 20"},
        EventsCase{"GapsInOneEvent", kMvrp, {vlan(10, 1), vlan(12, 1), vlan(13, 1)}, "JoinIn VLAN 10, 12-13"},
        EventsCase{"SameEventAfterAnother",
                   kMvrp,
                   {vlan(10, 1), vlan(11, 5), vlan(12, 1)},
                   "JoinIn VLAN 10, Lv VLAN 11, JoinIn VLAN 12"},
        EventsCase{"StreamsOneByOne",
                   kMsrp,
                   {listener(kStream, 1), listener(kStream + 1, 1)},
                   "JoinIn listener 00:1b:21:00:00:01:00:01 ready, JoinIn listener 00:1b:21:00:00:01:00:02 ready"},
        EventsCase{"ValueOfAnUnknownType", kMvrp, {unknownType()}, "JoinIn attribute type 9 key 5"}),
    [](const ::testing::TestParamInfo<EventsCase>& info) { return std::string(info.param.name); });

DecodedFrame mvrpFrame() {
  DecodedFrame decoded;
  decoded.frame = 3;
  decoded.source = Velo::EthAddr(0x00, 0x1b, 0x21, 0xaa, 0xbb, 0x01);
  decoded.application = kMvrp;
  decoded.leaveAllTypes = {1};
  decoded.attributes = {vlan(10, 1), vlan(11, 1), vlan(12, 1), vlan(20, 5)};
  return decoded;
}

struct SummaryCase {
  const char* name;
  DecodedFrame decoded;
  std::optional<Quarn::Seconds> seconds;
  std::string text;
};

class FrameSummaryTextTest : public ::testing::TestWithParam<SummaryCase> {};

TEST_P(FrameSummaryTextTest, IsOneLineOfColumns) {
  EXPECT_EQ(frameSummaryText(GetParam().decoded, GetParam().seconds), GetParam().text);
}

DecodedFrame withoutSource(DecodedFrame decoded) {
  decoded.source.reset();
  return decoded;
}

DecodedFrame withCounters(DecodedFrame decoded, DecodedCounters counters) {
  decoded.counters = counters;
  return decoded;
}

DecodedFrame skipped(std::optional<Velo::EthAddr> source, const char* reason) {
  DecodedFrame decoded;
  decoded.frame = 4;
  decoded.source = source;
  decoded.skipped = reason;
  return decoded;
}

DecodedFrame msrpWithDomain() {
  DecodedFrame decoded;
  decoded.frame = 1;
  decoded.application = kMsrp;
  decoded.leaveAllTypes = {3, 4};
  DecodedAttribute domain;
  domain.type = 4;
  domain.key = 6;
  domain.event = 1;
  domain.value = AttributeValue(Mrp::MsrpDomainAttribute(6, 3, 2));
  decoded.domain = {domain};
  decoded.attributes = {listener(kStream, 1)};
  return decoded;
}

INSTANTIATE_TEST_SUITE_P(
    Frames, FrameSummaryTextTest,
    ::testing::Values(
        SummaryCase{"CapturedFrame", mvrpFrame(), 0.2,
                    "3  0.200000  00:1b:21:aa:bb:01  MVRP  LeaveAll VLAN  JoinIn VLAN 10-12, Lv VLAN 20"},
        SummaryCase{"HexInputHasNoTimeNorSender", withoutSource(mvrpFrame()), std::nullopt,
                    "3  MVRP  LeaveAll VLAN  JoinIn VLAN 10-12, Lv VLAN 20"},
        SummaryCase{"DomainsComeLast", msrpWithDomain(), std::nullopt,
                    "1  MSRP  LeaveAll listener, domain  JoinIn listener 00:1b:21:00:00:01:00:01 ready, JoinIn domain "
                    "class 6 (priority 3, VLAN 2)"},
        SummaryCase{"Malformed", withCounters(withoutSource(mvrpFrame()), {0, 0, 1, 0}), std::nullopt,
                    "3  MVRP  LeaveAll VLAN  JoinIn VLAN 10-12, Lv VLAN 20  [malformed: numOfMalformedPkts 1]"},
        SummaryCase{"EveryCounterThatMoved", withCounters(withoutSource(mvrpFrame()), {1, 2, 0, 3}), std::nullopt,
                    "3  MVRP  LeaveAll VLAN  JoinIn VLAN 10-12, Lv VLAN 20  [bad protocol version: "
                    "numOfIncorrectPduVersion 1]  [unknown attribute type: numOfUnknownAttributeType 2]  [unknown "
                    "application: numOfUnknownApplication 3]"},
        SummaryCase{"Skipped", skipped(Velo::EthAddr(2, 0, 0, 0, 0, 1), "not an MSRP or MVRP frame"), 1.5,
                    "4  1.500000  02:00:00:00:00:01  (skipped: not an MSRP or MVRP frame)"},
        SummaryCase{"SkippedWithoutHeader", skipped(std::nullopt, "shorter than an Ethernet header"), 1.5,
                    "4  1.500000  (skipped: shorter than an Ethernet header)"}),
    [](const ::testing::TestParamInfo<SummaryCase>& info) { return std::string(info.param.name); });

DecodedFrame withMrpdu(Mrp::MrpApplication application, std::vector<std::uint8_t> mrpdu) {
  DecodedFrame decoded;
  decoded.application = application;
  decoded.mrpdu = std::move(mrpdu);
  return decoded;
}

TEST(FrameFieldsTextTest, ShowsEveryFieldOfAVectorOnALineOfItsOwn) {
  EXPECT_EQ(frameFieldsText(withMrpdu(kMvrp, MrpTest::Frames::kMvrpThreeVlans)),
            "    ProtocolVersion: 0\n"
            "    Message\n"
            "      AttributeType: 1 (VLAN)\n"
            "      AttributeLength: 2\n"
            "      Vector\n"
            "        LeaveAllEvent: 0\n"
            "        NumberOfValues: 3\n"
            "        FirstValue\n"
            "          VLAN: 10\n"
            "        Events\n"
            "          [0] JoinIn VLAN 10\n"
            "          [1] JoinIn VLAN 11\n"
            "          [2] Lv VLAN 12\n");
}

TEST(FrameFieldsTextTest, ShowsTheOctetsOfAnUnknownTypeAndWhereTheFrameEnds) {
  // Type 9, length 1: a vector of 2 values whose packed events are cut off.
  EXPECT_EQ(frameFieldsText(withMrpdu(kMvrp, {0x00, 0x09, 0x01, 0x00, 0x02, 0xab})),
            "    ProtocolVersion: 0\n"
            "    Message\n"
            "      AttributeType: 9\n"
            "      AttributeLength: 1\n"
            "      Vector\n"
            "        LeaveAllEvent: 0\n"
            "        NumberOfValues: 2\n"
            "        FirstValue: ab\n"
            "    [the frame ends short of its ThreePackedEvents]\n");
}

TEST(FrameFieldsTextTest, ASkippedFrameHasNone) {
  EXPECT_EQ(frameFieldsText(skipped(std::nullopt, "not an MSRP or MVRP frame")), "");
}

// Every frame cut at every octet is read by the engine and described, and
// the description says where it ends.
TEST(FrameFieldsTextTest, EveryCutOfAFrameIsDescribedUpToWhereItEnds) {
  Decoder decoder;
  const std::pair<Mrp::MrpApplication, std::vector<std::uint8_t>> frames[] = {
      {kMsrp, MrpTest::Frames::kMsrpAllTypes}, {kMvrp, MrpTest::Frames::kMvrpTwoVectors}};
  for (const auto& [application, whole] : frames) {
    for (std::size_t size = 0; size < whole.size(); ++size) {
      const std::vector<std::uint8_t> cut(whole.begin(), whole.begin() + static_cast<long>(size));
      const DecodedFrame decoded = decoder.describeMrpdu(1, application, cut);
      const std::string fields = frameFieldsText(decoded);
      const bool endsShortOf = fields.find("[the frame ends short of its ") != std::string::npos;
      const bool counted = decoded.counters.malformedPkts > 0;
      EXPECT_TRUE(endsShortOf || !counted) << "cut at " << size << ":\n" << fields;
      EXPECT_FALSE(frameSummaryText(decoded, std::nullopt).empty());
    }
  }
}

}  // namespace
}  // namespace MrpCli
