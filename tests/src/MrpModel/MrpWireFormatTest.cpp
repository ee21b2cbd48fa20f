#include "MrpModel/MrpWireFormat.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>

#include "quarn/Trace.h"

namespace MrpTest {
namespace {

using Mrp::MrpApplication;

constexpr std::uint8_t kMsrp = 1;
constexpr std::uint8_t kMvrp = 2;

struct SizeRow {
  std::uint8_t application;
  std::uint8_t attributeType;
  std::uint16_t size;
};

// The FirstValue length table; everything not listed is 0.
constexpr SizeRow kSizes[] = {
    {kMsrp, 0, 0}, {kMsrp, 1, 25}, {kMsrp, 2, 34}, {kMsrp, 3, 8}, {kMsrp, 4, 4}, {kMsrp, 5, 0},
    {kMvrp, 0, 0}, {kMvrp, 1, 2},  {kMvrp, 2, 0},  {0, 1, 0},     {3, 1, 0},
};

TEST(MrpWireFormatTest, FirstValueLengthsFollowTheTable) {
  for (const SizeRow& row : kSizes) {
    EXPECT_EQ(Mrp::mrpSizeOfAttribute(row.attributeType, row.application), row.size)
        << "application " << unsigned{row.application} << " type " << unsigned{row.attributeType};
  }
  EXPECT_EQ(Mrp::mrpSizeOfMsrpAttribute(3), 8);
  EXPECT_EQ(Mrp::mrpSizeOfMvrpAttribute(1), 2);
}

class MrpWireFormatTraceTest : public ::testing::Test {
 protected:
  MrpWireFormatTraceTest() { Quarn::traceLevelsIs("MrpSm/0-9"); }
  ~MrpWireFormatTraceTest() override { Quarn::traceLevelsClear(); }

  Quarn::CaptureTraceSink traces;
};

TEST_F(MrpWireFormatTraceTest, UnknownTypeIsTraced) {
  EXPECT_EQ(Mrp::mrpSizeOfMsrpAttribute(9), 0);
  EXPECT_TRUE(traces.contains(" Invalid attribute type: 9"));
  traces.clear();
  EXPECT_EQ(Mrp::mrpSizeOfMvrpAttribute(7), 0);
  EXPECT_TRUE(traces.contains(" Invalid attribute type: 7"));
}

TEST_F(MrpWireFormatTraceTest, UnknownApplicationIsTraced) {
  EXPECT_EQ(Mrp::mrpSizeOfAttribute(1, 3), 0);
  EXPECT_TRUE(traces.contains(" Invalid application type: 3"));
}

TEST(MrpWireFormatTest, VectorHeaderCountsValuesInItsLowThirteenBits) {
  const std::uint8_t leaveAllOnly[] = {0x20, 0x00};
  const std::uint8_t fiveValues[] = {0x40, 0x05};
  const std::uint8_t most[] = {0xFF, 0xFF};
  EXPECT_EQ(Mrp::mrpGetNumOfValues(leaveAllOnly), 0);
  EXPECT_EQ(Mrp::mrpGetNumOfValues(fiveValues), 5);
  EXPECT_EQ(Mrp::mrpGetNumOfValues(most), 8191);
}

TEST(MrpWireFormatTest, PackedOctetCountsRoundUp) {
  EXPECT_EQ(Mrp::mrpThreePackedOctets(0), 0);
  EXPECT_EQ(Mrp::mrpThreePackedOctets(3), 1) << "three values fill one octet";
  EXPECT_EQ(Mrp::mrpThreePackedOctets(4), 2) << "the fourth value starts a new octet";
  EXPECT_EQ(Mrp::mrpFourPackedOctets(4), 1);
  EXPECT_EQ(Mrp::mrpFourPackedOctets(5), 2);
  EXPECT_EQ(Mrp::mrpThreePackedOctets(8191), 2731);
}

TEST(MrpWireFormatTest, ThreePackedOctetSplitsIntoItsEvents) {
  using Events = std::array<std::uint8_t, 3>;
  EXPECT_EQ(Mrp::mrpUnpackThreePacked(53), (Events{1, 2, 5})) << "JoinIn, In, Lv";
  EXPECT_EQ(Mrp::mrpUnpackThreePacked(0x2F), (Events{1, 1, 5})) << "JoinIn, JoinIn, Lv";
  EXPECT_EQ(Mrp::mrpUnpackThreePacked(0), (Events{0, 0, 0}));
  EXPECT_EQ(Mrp::mrpUnpackThreePacked(215), (Events{5, 5, 5}));
  EXPECT_EQ(Mrp::mrpUnpackThreePacked(216), (Events{6, 0, 0})) << "beyond 215 the first event has no name";
  EXPECT_EQ(Mrp::mrpUnpackThreePacked(255), (Events{7, 0, 3}));
}

TEST(MrpWireFormatTest, EveryThreePackedOctetUnpacksToWhatPackedIt) {
  for (unsigned e1 = 0; e1 < 6; ++e1) {
    for (unsigned e2 = 0; e2 < 6; ++e2) {
      for (unsigned e3 = 0; e3 < 6; ++e3) {
        const auto octet = static_cast<std::uint8_t>((e1 * 6 + e2) * 6 + e3);
        const std::array<std::uint8_t, 3> expected{static_cast<std::uint8_t>(e1), static_cast<std::uint8_t>(e2),
                                                   static_cast<std::uint8_t>(e3)};
        EXPECT_EQ(Mrp::mrpUnpackThreePacked(octet), expected) << unsigned{octet};
      }
    }
  }
}

TEST(MrpWireFormatTest, FourPackedOctetSplitsFromTheTopBits) {
  // ready, ignore, askingFailed, readyFailed
  EXPECT_EQ(Mrp::mrpUnpackFourPacked(135, 0), 2);
  EXPECT_EQ(Mrp::mrpUnpackFourPacked(135, 1), 0);
  EXPECT_EQ(Mrp::mrpUnpackFourPacked(135, 2), 1);
  EXPECT_EQ(Mrp::mrpUnpackFourPacked(135, 3), 3);
}

TEST(MrpWireFormatTest, ApplicationsDefaultToTheirAssignedAddressAndEtherType) {
  const Mrp::MrpApplicationFraming msrp = Mrp::mrpDefaultApplicationFraming(MrpApplication::msrp);
  EXPECT_EQ(msrp.macAddr.toString(), "01:80:c2:00:00:0e");
  EXPECT_EQ(msrp.etype, 0x22EA);
  const Mrp::MrpApplicationFraming mvrp = Mrp::mrpDefaultApplicationFraming(MrpApplication::mvrp);
  EXPECT_EQ(mvrp.macAddr.toString(), "01:80:c2:00:00:21");
  EXPECT_EQ(mvrp.etype, 0x88F5);
  const Mrp::MrpApplicationFraming unknown = Mrp::mrpDefaultApplicationFraming(static_cast<MrpApplication>(3));
  EXPECT_TRUE(unknown.macAddr.isZero());
  EXPECT_EQ(unknown.etype, 0);
}

}  // namespace
}  // namespace MrpTest
