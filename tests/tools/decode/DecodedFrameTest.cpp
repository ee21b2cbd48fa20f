#include <gtest/gtest.h>

#include "decode/DecodedFrame.h"
#include "decode/Decoder.h"
#include "format/JsonLine.h"
#include "support/MrpduFrames.h"

namespace MrpCli {
namespace {

TEST(DecodedFrameTest, ASkippedFrameIsItsNumberAndWhy) {
  DecodedFrame decoded;
  decoded.frame = 7;
  decoded.source = Velo::EthAddr(2, 0, 0, 0, 0, 1);
  decoded.skipped = "not an MSRP or MVRP frame";
  EXPECT_EQ(jsonLine(decodedFrameJson(decoded)), "{\"frame\": 7, \"skipped\": \"not an MSRP or MVRP frame\"}");
}

TEST(DecodedFrameTest, CountersAreWrittenByTheirEngineNames) {
  DecodedFrame decoded;
  decoded.frame = 1;
  decoded.counters = {1, 2, 3, 4};
  EXPECT_EQ(jsonLine(decodedFrameJson(decoded)),
            "{\"frame\": 1, \"application\": \"mvrp\", \"leaveAll\": [], \"domain\": [], \"attributes\": [], "
            "\"events\": 0, \"counters\": {\"numOfIncorrectPduVersion\": 1, \"numOfUnknownAttributeType\": 2, "
            "\"numOfMalformedPkts\": 3, \"numOfUnknownApplication\": 4}}");
}

TEST(DecoderTest, AFrameOfACaptureKeepsItsSenderAndItsMrpdu) {
  std::vector<std::uint8_t> frame = {0x01, 0x80, 0xc2, 0x00, 0x00, 0x21, 0x02, 0, 0, 0, 0, 9, 0x88, 0xf5};
  for (const std::uint8_t octet : MrpTest::Frames::kMvrpThreeVlans) frame.push_back(octet);
  Decoder decoder;
  const DecodedFrame decoded = decoder.describeFrame(1, frame);
  EXPECT_EQ(decoded.source, Velo::EthAddr(2, 0, 0, 0, 0, 9));
  EXPECT_EQ(decoded.application, Mrp::MrpApplication::mvrp);
  EXPECT_EQ(decoded.mrpdu, MrpTest::Frames::kMvrpThreeVlans);
  ASSERT_EQ(decoded.attributes.size(), 3u);
  EXPECT_EQ(decoded.attributes[2].event, 5);
}

TEST(DecoderTest, HexInputHasNoSender) {
  Decoder decoder;
  EXPECT_FALSE(decoder.describeMrpdu(1, Mrp::MrpApplication::mvrp, MrpTest::Frames::kMvrpThreeVlans).source);
}

}  // namespace
}  // namespace MrpCli
