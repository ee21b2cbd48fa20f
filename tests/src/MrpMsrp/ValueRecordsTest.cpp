#include <gtest/gtest.h>

#include <cstring>

#include "MrpMsrp/MsrpDomainAttribute.h"
#include "MrpMsrp/MsrpTalkerFailedAttribute.h"
#include "MrpMvrp/MvrpVlanAttribute.h"

namespace {

TEST(ValueRecordsTest, TalkerFailedIsItsWireImageInNetworkOrder) {
  Mrp::MsrpTalkerAdvertiseAttribute talker;
  talker.streamIdIs(0x0011223344556677ULL);
  talker.frameIs(Mrp::DataFrameParameters(Velo::EthAddr(0x91, 0xe0, 0xf0, 0x00, 0xfe, 0x00), 0x0abc));
  talker.tSpecIs(Mrp::Tspec(1500, 2));
  talker.priorityAndRankIs(Mrp::PriorityAndRank(3, 1));
  talker.accumulatedLatencyIs(0x01020304);
  Mrp::MsrpTalkerFailedAttribute failed;
  failed.talkerAdvertiseAttributeIs(talker);
  failed.failureInformationIs(Mrp::FailureInformation(0x8000aabbccddeeffULL, 9));

  const std::uint8_t expected[34] = {
      0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77,  // StreamID
      0x91, 0xe0, 0xf0, 0x00, 0xfe, 0x00,              // destination address
      0x0a, 0xbc,                                      // VLAN
      0x05, 0xdc, 0x00, 0x02,                          // MaxFrameSize, MaxIntervalFrames
      0x70,                                            // priority 3, rank 1
      0x01, 0x02, 0x03, 0x04,                          // AccumulatedLatency
      0x80, 0x00, 0xaa, 0xbb, 0xcc, 0xdd, 0xee, 0xff,  // Bridge ID
      0x09,                                            // Failure Code
  };
  std::uint8_t image[sizeof failed];
  std::memcpy(image, &failed, sizeof failed);
  EXPECT_EQ(std::memcmp(image, expected, sizeof expected), 0);
  EXPECT_EQ(failed.talkerAdvertiseAttribute().streamId(), 0x0011223344556677ULL);
  EXPECT_EQ(failed.talkerAdvertiseAttribute().frame().vlanId(), 0x0abc);
  EXPECT_FALSE(!failed);
  EXPECT_TRUE(!Mrp::MsrpTalkerFailedAttribute());
}

TEST(ValueRecordsTest, DomainAndVlanAreTheirWireImages) {
  const Mrp::MsrpDomainAttribute domain(6, 3, 2);
  const std::uint8_t domainBytes[4] = {6, 3, 0x00, 0x02};
  EXPECT_EQ(std::memcmp(&domain, domainBytes, 4), 0);
  const Mrp::MvrpVlanAttribute vlan(4095);
  const std::uint8_t vlanBytes[2] = {0x0f, 0xff};
  EXPECT_EQ(std::memcmp(&vlan, vlanBytes, 2), 0);
}

TEST(ValueRecordsTest, PriorityAndRankOrdersByTheWholeOctet) {
  EXPECT_EQ(Mrp::PriorityAndRank(3, 1).octet(), 0x70);
  EXPECT_LT(Mrp::PriorityAndRank(3, 0), Mrp::PriorityAndRank(3, 1));
  EXPECT_LT(Mrp::PriorityAndRank(2, 1), Mrp::PriorityAndRank(3, 0));
  EXPECT_EQ(Mrp::PriorityAndRank(9, 3).octet(), Mrp::PriorityAndRank(1, 1).octet()) << "only the low bits are kept";
}

}  // namespace
