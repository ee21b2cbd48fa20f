#include "report/RegistrationText.h"

#include <gtest/gtest.h>

#include <string>

#include "format/JsonLine.h"

namespace {

using MrpAgent::AttributeValue;

const Mrp::MsrpTalkerAdvertiseAttribute kTalker(
    0x001b210000010001, Mrp::DataFrameParameters(Velo::EthAddr(0x91, 0xe0, 0xf0, 0x00, 0xfe, 0x01), 2),
    Mrp::Tspec(100, 1), Mrp::PriorityAndRank(3, 1), 1000);
// kTalker's FirstValue.
const std::string kTalkerHex =
    "001b210000010001"  // StreamID
    "91e0f000fe01"      // destination address
    "0002"              // VLAN
    "00640001"          // MaxFrameSize 100, MaxIntervalFrames 1
    "70"                // priority 3, rank 1
    "000003e8";         // accumulated latency
const Mrp::FailureInformation kFailure(0x0080000011223344, 5);
const std::string kFailureHex = "008000001122334405";  // bridge id, failure code

AttributeValue listener(Mrp::MsrpListenerEvent declaration) {
  return AttributeValue(Mrp::MsrpListenerAttribute(0x001b210000010001, declaration));
}

struct ValueCase {
  const char* name;
  AttributeValue value;
  std::string json;
};

class ValueJsonAddTest : public ::testing::TestWithParam<ValueCase> {};

TEST_P(ValueJsonAddTest, WritesTheKeyAsDigitsAndTheReadableFieldsAfterTheHex) {
  nlohmann::ordered_json json = nlohmann::ordered_json::object();
  MrpCli::valueJsonAdd(json, GetParam().value);
  EXPECT_EQ(MrpCli::jsonLine(json), GetParam().json);
}

INSTANTIATE_TEST_SUITE_P(
    EveryAttributeType, ValueJsonAddTest,
    ::testing::Values(
        ValueCase{"Vlan", AttributeValue(Mrp::MvrpVlanAttribute(10)),
                  R"({"type": 1, "key": "10", "value": "000a", "vlan": 10})"},
        ValueCase{"TalkerAdvertise", AttributeValue(kTalker),
                  R"({"type": 1, "key": "7636108254969857", "value": ")" + kTalkerHex +
                      R"(", "streamId": "00:1b:21:00:00:01:00:01"})"},
        ValueCase{"TalkerFailed", AttributeValue(Mrp::MsrpTalkerFailedAttribute(kTalker, kFailure)),
                  R"({"type": 2, "key": "7636108254969857", "value": ")" + kTalkerHex + kFailureHex +
                      R"(", "streamId": "00:1b:21:00:00:01:00:01"})"},
        ValueCase{"ListenerReady", listener(Mrp::MsrpListenerEvent::ready),
                  R"({"type": 3, "key": "7636108254969857", "value": "001b210000010001", )"
                  R"("streamId": "00:1b:21:00:00:01:00:01", "declaration": "ready"})"},
        ValueCase{"ListenerReadyFailed", listener(Mrp::MsrpListenerEvent::readyFailed),
                  R"({"type": 3, "key": "7636108254969857", "value": "001b210000010001", )"
                  R"("streamId": "00:1b:21:00:00:01:00:01", "declaration": "readyFailed"})"},
        ValueCase{"ListenerAskingFailed", listener(Mrp::MsrpListenerEvent::askingFailed),
                  R"({"type": 3, "key": "7636108254969857", "value": "001b210000010001", )"
                  R"("streamId": "00:1b:21:00:00:01:00:01", "declaration": "askingFailed"})"},
        ValueCase{"Domain", AttributeValue(Mrp::MsrpDomainAttribute(6, 3, 2)),
                  R"({"type": 4, "key": "6", "value": "06030002", "classId": 6, "priority": 3, "vid": 2})"}),
    [](const ::testing::TestParamInfo<ValueCase>& info) { return std::string(info.param.name); });

TEST(AttributeKeyJsonTest, IsEveryDigitOfTheKeyAsAString) {
  EXPECT_EQ(MrpCli::attributeKeyJson(0), "0");
  EXPECT_EQ(MrpCli::attributeKeyJson(18446744073709551615ULL), "18446744073709551615");
}

}  // namespace
