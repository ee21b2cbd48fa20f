#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "decode/MrpduLayout.h"
#include "support/MrpduFrames.h"

namespace MrpCli {
namespace {

using Bytes = std::vector<std::uint8_t>;
using MrpTest::Frames::kMsrpAllTypes;
using MrpTest::Frames::kMvrpTwoVectors;
const auto kMsrp = Mrp::MrpApplication::msrp;
const auto kMvrp = Mrp::MrpApplication::mvrp;

Bytes cut(const Bytes& bytes, std::size_t size) {
  return Bytes(bytes.begin(), bytes.begin() + static_cast<long>(size));
}

TEST(MrpduLayoutTest, ReadsEveryMessageAndVectorOfAWholePdu) {
  const MrpduLayout layout = MrpduLayout::read(kMsrp, kMsrpAllTypes);
  EXPECT_EQ(layout.endsShortOf, nullptr);
  ASSERT_EQ(layout.protocolVersion, 0);
  ASSERT_EQ(layout.messages.size(), 4u);
  const MrpduLayout::Message& listener = layout.messages[2];
  EXPECT_EQ(listener.attributeType, 3);
  EXPECT_EQ(listener.attributeLength, 8);
  EXPECT_EQ(listener.attributeListLength, 16);
  ASSERT_EQ(listener.vectors.size(), 1u);
  const MrpduLayout::Vector& vector = listener.vectors[0];
  EXPECT_TRUE(vector.leaveAll);
  EXPECT_EQ(vector.numberOfValues, 5);
  EXPECT_EQ(*vector.firstValue, (Bytes{0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x00, 0x01}));
  EXPECT_EQ(vector.events, (Bytes{1, 1, 1, 5, 0}));
  EXPECT_EQ(vector.declarations, (Bytes{2, 0, 1, 3, 2}));
  EXPECT_EQ(layout.messages[3].vectors[0].events, (Bytes{2}));
  EXPECT_TRUE(layout.messages[3].vectors[0].declarations.empty()) << "only a Listener has declarations";
}

TEST(MrpduLayoutTest, MvrpMessagesHaveNoListLength) {
  const MrpduLayout layout = MrpduLayout::read(kMvrp, kMvrpTwoVectors);
  EXPECT_EQ(layout.endsShortOf, nullptr);
  ASSERT_EQ(layout.messages.size(), 1u);
  EXPECT_FALSE(layout.messages[0].attributeListLength);
  ASSERT_EQ(layout.messages[0].vectors.size(), 2u);
  EXPECT_EQ(layout.messages[0].vectors[1].events, (Bytes{2, 4, 3, 0}));
}

struct CutCase {
  const char* name;
  Mrp::MrpApplication application;
  Bytes mrpdu;
  std::string endsShortOf;
};

class MrpduLayoutCutTest : public ::testing::TestWithParam<CutCase> {};

TEST_P(MrpduLayoutCutTest, NamesTheFieldTheOctetsEndShortOf) {
  const MrpduLayout layout = MrpduLayout::read(GetParam().application, GetParam().mrpdu);
  ASSERT_NE(layout.endsShortOf, nullptr);
  EXPECT_EQ(std::string(layout.endsShortOf), GetParam().endsShortOf);
}

INSTANTIATE_TEST_SUITE_P(
    Cuts, MrpduLayoutCutTest,
    ::testing::Values(CutCase{"Empty", kMvrp, {}, "ProtocolVersion"},
                      CutCase{"MessageHeader", kMvrp, {0x00, 0x01}, "message header"},
                      CutCase{"ListLength", kMsrp, {0x00, 0x01, 0x19, 0x00}, "AttributeListLength"},
                      CutCase{"VectorHeader", kMvrp, {0x00, 0x01, 0x02, 0x00}, "VectorHeader"},
                      CutCase{"FirstValue", kMvrp, {0x00, 0x01, 0x02, 0x00, 0x03, 0x00}, "FirstValue"},
                      CutCase{"ThreePacked", kMvrp, cut(MrpTest::Frames::kMvrpThreeVlans, 7), "ThreePackedEvents"},
                      CutCase{"MessageEndMark", kMvrp, cut(MrpTest::Frames::kMvrpThreeVlans, 8), "EndMark"},
                      CutCase{"FourPacked", kMsrp, cut(MrpTest::Frames::msrpListenerFrame(16), 18),
                              "FourPackedEvents"}),
    [](const ::testing::TestParamInfo<CutCase>& info) { return std::string(info.param.name); });

// Cut at every octet, the PDU reads as far as it goes and no further: it
// is whole only at its EndMark, or as a ProtocolVersion alone.
TEST(MrpduLayoutTest, EveryCutOfAPduEndsInsideAField) {
  const std::set<std::size_t> wholeAt = {1, kMsrpAllTypes.size()};
  for (std::size_t size = 0; size <= kMsrpAllTypes.size(); ++size) {
    const MrpduLayout layout = MrpduLayout::read(kMsrp, cut(kMsrpAllTypes, size));
    EXPECT_EQ(layout.endsShortOf == nullptr, wholeAt.count(size) == 1) << "cut at " << size;
    for (const MrpduLayout::Message& message : layout.messages) {
      for (const MrpduLayout::Vector& vector : message.vectors) {
        EXPECT_LE(vector.events.size(), vector.numberOfValues) << "cut at " << size;
        if (vector.firstValue) {
          EXPECT_EQ(vector.firstValue->size(), message.attributeLength) << "cut at " << size;
        }
      }
    }
  }
}

TEST(MrpduLayoutTest, AMessagesFirstVectorIsReadEvenWhenItsHeaderIsZero) {
  const MrpduLayout layout = MrpduLayout::read(kMvrp, Bytes{0x00, 0x01, 0x02, 0x00, 0x00, 0x00, 0x0a, 0x00, 0x00, 0x00, 0x00});
  EXPECT_EQ(layout.endsShortOf, nullptr);
  ASSERT_EQ(layout.messages.size(), 1u);
  ASSERT_EQ(layout.messages[0].vectors.size(), 1u);
  EXPECT_EQ(layout.messages[0].vectors[0].numberOfValues, 0);
  EXPECT_EQ(*layout.messages[0].vectors[0].firstValue, (Bytes{0x00, 0x0a}));
}

TEST(MrpduLayoutTest, AZeroLengthTypeStillEndsWithItsOctets) {
  // Type 7, length 0: every vector is a header and its packed events.
  const MrpduLayout layout = MrpduLayout::read(kMvrp, Bytes{0x00, 0x07, 0x00, 0x00, 0x01, 0x24, 0x00, 0x01});
  ASSERT_EQ(layout.messages.size(), 1u);
  EXPECT_EQ(layout.messages[0].vectors.size(), 2u);
  EXPECT_EQ(std::string(layout.endsShortOf), "ThreePackedEvents");
}

TEST(MrpduLayoutTest, AMessageWithoutThePdusEndMarkEndsInsideIt) {
  const Bytes withoutEndMark = cut(MrpTest::Frames::kMvrpThreeVlans, MrpTest::Frames::kMvrpThreeVlans.size() - 2);
  const MrpduLayout layout = MrpduLayout::read(kMvrp, withoutEndMark);
  EXPECT_EQ(layout.messages.size(), 1u);
  EXPECT_EQ(std::string(layout.endsShortOf), "EndMark");
}

}  // namespace
}  // namespace MrpCli
