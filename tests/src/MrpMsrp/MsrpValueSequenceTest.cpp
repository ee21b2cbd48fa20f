#include "MrpMsrp/MsrpValueSequence.h"

#include <gtest/gtest.h>

#include <vector>

#include "MrpModel/MrpValueBytes.h"
#include "MrpSm/MrpValueAt.h"
#include "quarn/Trace.h"

namespace {

using Mrp::mrpDomainValueInSequence;
using Mrp::mrpTalkerValueInSequence;
using Velo::EthAddr;

const EthAddr kAllOnes(0xff, 0xff, 0xff, 0xff, 0xff, 0xff);

Mrp::MsrpTalkerAdvertiseAttribute talkerOf(std::uint64_t streamId, const EthAddr& dmac) {
  return Mrp::MsrpTalkerAdvertiseAttribute(streamId, Mrp::DataFrameParameters(dmac, 2), Mrp::Tspec(1500, 1),
                                           Mrp::PriorityAndRank(3, 0), 7);
}

class MsrpValueSequenceTest : public ::testing::Test {
 protected:
  MsrpValueSequenceTest() { Quarn::traceLevelsClear(); }
  ~MsrpValueSequenceTest() override { Quarn::traceLevelsClear(); }

  Quarn::CaptureTraceSink sink_;
};

TEST_F(MsrpValueSequenceTest, TalkerIncrementCarriesAcrossOctetsOfStreamIdAndDmac) {
  const auto talker = talkerOf(0x00112233ffffffffULL, EthAddr(0x91, 0xe0, 0xf0, 0x00, 0xfe, 0xff));
  const auto next = Mrp::mrpIncrementTalkerAttribute(talker);
  const auto bytes = Mrp::valueBytes(next);
  const std::vector<std::uint8_t> expected{
      0x00, 0x11, 0x22, 0x34, 0x00, 0x00, 0x00, 0x00,  // StreamID
      0x91, 0xe0, 0xf0, 0x00, 0xff, 0x00,              // destination address
      0x00, 0x02,                                      // VLAN unchanged
      0x05, 0xdc, 0x00, 0x01,                          // TSpec unchanged
      0x60,                                            // priority and rank unchanged
      0x00, 0x00, 0x00, 0x07,                          // AccumulatedLatency unchanged
  };
  EXPECT_EQ(std::vector<std::uint8_t>(bytes.begin(), bytes.end()), expected);
}

TEST_F(MsrpValueSequenceTest, TalkerIncrementLosesTheCarryOutOfTheDmacAndWrapsTheStreamId) {
  const auto next = Mrp::mrpIncrementTalkerAttribute(talkerOf(UINT64_MAX, kAllOnes));
  EXPECT_EQ(next.streamId(), 0u);
  EXPECT_EQ(next.frame().dmac(), EthAddr());
}

TEST_F(MsrpValueSequenceTest, TalkerIncrementTracesBothAddresses) {
  ASSERT_TRUE(Quarn::traceLevelsIs("MrpSm/0-9"));
  Mrp::mrpIncrementTalkerAttribute(talkerOf(1, EthAddr(0x91, 0xe0, 0xf0, 0x00, 0xfe, 0xff)));
  EXPECT_TRUE(sink_.contains("original dmac = 91:e0:f0:00:fe:ff, converted dmac = 91:e0:f0:00:ff:00"));
}

TEST_F(MsrpValueSequenceTest, TalkerInSequenceWhenStreamIdAndDmacAreBothDistanceAhead) {
  const EthAddr first(0x91, 0xe0, 0xf0, 0x00, 0xfe, 0xff);
  EXPECT_TRUE(mrpTalkerValueInSequence(10, 10, first, first, 0));
  EXPECT_TRUE(mrpTalkerValueInSequence(10, 13, first, EthAddr(0x91, 0xe0, 0xf0, 0x00, 0xff, 0x02), 3));
  EXPECT_FALSE(mrpTalkerValueInSequence(10, 13, first, EthAddr(0x91, 0xe0, 0xf0, 0x00, 0xff, 0x03), 3));
  EXPECT_FALSE(mrpTalkerValueInSequence(10, 14, first, EthAddr(0x91, 0xe0, 0xf0, 0x00, 0xff, 0x02), 3));
  EXPECT_TRUE(mrpTalkerValueInSequence(UINT64_MAX, 0, EthAddr(0, 0, 0, 0, 0, 1), EthAddr(0, 0, 0, 0, 0, 2), 1))
      << "the stream id sum is taken modulo 2^64";
}

TEST_F(MsrpValueSequenceTest, TalkerAfterTheAllOnesDmacStartsANewVector) {
  const auto first = talkerOf(100, kAllOnes);
  const auto next = Mrp::mrpIncrementTalkerAttribute(first);
  EXPECT_FALSE(
      mrpTalkerValueInSequence(first.streamId(), next.streamId(), first.frame().dmac(), next.frame().dmac(), 1));
}

TEST_F(MsrpValueSequenceTest, DomainInSequenceDoesNotWrapAt256) {
  EXPECT_TRUE(mrpDomainValueInSequence(6, 7, 3, 4, 1));
  EXPECT_TRUE(mrpDomainValueInSequence(6, 6, 3, 3, 0));
  EXPECT_FALSE(mrpDomainValueInSequence(6, 7, 3, 5, 1));
  EXPECT_FALSE(mrpDomainValueInSequence(6, 8, 3, 4, 1));
  EXPECT_FALSE(mrpDomainValueInSequence(255, 0, 255, 0, 1));
  EXPECT_FALSE(mrpDomainValueInSequence(0, 0, 0, 0, 256));
}

}  // namespace

namespace {

// Advancing n positions at once is advancing one position n times.
TEST(MrpValueAtTest, AdvancingManyPositionsIsAdvancingOneAtATime) {
  const Mrp::MsrpTalkerAdvertiseAttribute talker(
      0x00112233FFFFFFF0, Mrp::DataFrameParameters(Velo::EthAddr(0xff, 0xff, 0xff, 0xff, 0xff, 0xf8), 2),
      Mrp::Tspec(100, 1), Mrp::PriorityAndRank(3, 1), 7);
  const Mrp::MsrpDomainAttribute domain(250, 252, 2);
  const Mrp::MvrpVlanAttribute vlan(65530);
  Mrp::MsrpTalkerAdvertiseAttribute t = talker;
  Mrp::MsrpDomainAttribute d = domain;
  Mrp::MvrpVlanAttribute v = vlan;
  for (std::uint64_t distance = 1; distance <= 20; ++distance) {
    t = Mrp::mrpIncrementTalkerAttribute(t);
    d = Mrp::mrpValueAt(d, 1);
    v = Mrp::mrpValueAt(v, 1);
    EXPECT_EQ(Mrp::mrpValueAt(talker, distance), t) << distance;
    EXPECT_EQ(Mrp::mrpValueAt(domain, distance), d) << distance;
    EXPECT_EQ(Mrp::mrpValueAt(vlan, distance), v) << distance;
  }
  EXPECT_EQ(d.srClassVID(), 2) << "the VID stays";
  EXPECT_EQ(v.vlanId(), (65530 + 20) % 65536) << "VLAN ids wrap at 2^16";
}

}  // namespace
