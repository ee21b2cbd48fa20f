#include <gtest/gtest.h>

#include <vector>

#include "MrpModel/MrpValueBytes.h"
#include "MrpMsrp/MsrpDomainAttribute.h"
#include "MrpMsrp/MsrpListenerAttribute.h"
#include "MrpMsrp/MsrpListenerStreamAttribute.h"
#include "MrpMsrp/MsrpTalkerFailedAttribute.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

template <class Record>
Bytes bytesOf(const Record& record) {
  const auto bytes = Mrp::valueBytes(record);
  return Bytes(bytes.begin(), bytes.end());
}

// The stored octets are the record, and the record reads back from them.
template <class Record>
void expectWireImage(const Record& record, const Bytes& expected) {
  EXPECT_EQ(bytesOf(record), expected);
  EXPECT_EQ(Mrp::valueFromBytes<Record>(expected), record);
}

Mrp::MsrpTalkerAdvertiseAttribute sampleTalker() {
  return Mrp::MsrpTalkerAdvertiseAttribute(
      0x0011223344556677ULL, Mrp::DataFrameParameters(Velo::EthAddr(0x91, 0xe0, 0xf0, 0x00, 0xfe, 0x00), 0x0abc),
      Mrp::Tspec(1500, 2), Mrp::PriorityAndRank(3, 1), 0x01020304);
}

TEST(ValueRecordsTest, TalkerFailedIsItsWireImageInNetworkOrder) {
  const Mrp::MsrpTalkerFailedAttribute failed(sampleTalker(), Mrp::FailureInformation(0x8000aabbccddeeffULL, 9));
  expectWireImage(failed, {
                              0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77,  // StreamID
                              0x91, 0xe0, 0xf0, 0x00, 0xfe, 0x00,              // destination address
                              0x0a, 0xbc,                                      // VLAN
                              0x05, 0xdc, 0x00, 0x02,                          // MaxFrameSize, MaxIntervalFrames
                              0x70,                                            // priority 3, rank 1
                              0x01, 0x02, 0x03, 0x04,                          // AccumulatedLatency
                              0x80, 0x00, 0xaa, 0xbb, 0xcc, 0xdd, 0xee, 0xff,  // Bridge ID
                              0x09,                                            // Failure Code
                          });
  EXPECT_EQ(bytesOf(failed.talkerAdvertiseAttribute()).size(), 25u);
  EXPECT_EQ(failed.talkerAdvertiseAttribute().streamId(), 0x0011223344556677ULL);
  EXPECT_EQ(failed.talkerAdvertiseAttribute().frame().vlanId(), 0x0abc);
}

TEST(ValueRecordsTest, PartsOfTheTalkerAreTheirWireImages) {
  expectWireImage(Mrp::DataFrameParameters(Velo::EthAddr(1, 2, 3, 4, 5, 6), 0x0102), {1, 2, 3, 4, 5, 6, 0x01, 0x02});
  expectWireImage(Mrp::Tspec(0x0102, 0x0304), {0x01, 0x02, 0x03, 0x04});
  expectWireImage(Mrp::PriorityAndRank(2, 1), {0x50});
  expectWireImage(Mrp::FailureInformation(0x0102030405060708ULL, 0xff), {1, 2, 3, 4, 5, 6, 7, 8, 0xff});
}

TEST(ValueRecordsTest, DomainIsItsWireImage) { expectWireImage(Mrp::MsrpDomainAttribute(6, 3, 2), {6, 3, 0x00, 0x02}); }

TEST(ValueRecordsTest, ListenerIsStreamIdThenDeclarationLeastSignificantOctetFirst) {
  expectWireImage(Mrp::MsrpListenerAttribute(0x0011223344556677ULL, Mrp::MsrpListenerEvent::readyFailed),
                  {0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77, 0x03, 0x00, 0x00, 0x00});
  expectWireImage(Mrp::MsrpListenerStreamAttribute(0x0011223344556677ULL),
                  {0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77});
}

TEST(ValueRecordsTest, ValueFromShortBytesZeroFillsTheRest) {
  const Bytes streamIdOnly{0, 0, 0, 0, 0, 0, 0, 9};
  EXPECT_EQ(Mrp::valueFromBytes<Mrp::MsrpListenerAttribute>(streamIdOnly),
            Mrp::MsrpListenerAttribute(9, Mrp::MsrpListenerEvent::ignore));
  EXPECT_TRUE(!Mrp::valueFromBytes<Mrp::MsrpTalkerFailedAttribute>({}));
}

TEST(ValueRecordsTest, ListenerFieldsReadBackAndCompare) {
  Mrp::MsrpListenerAttribute listener;
  EXPECT_EQ(listener.listenerEvent(), Mrp::MsrpListenerEvent::ignore);
  listener.streamIdIs(5);
  listener.listenerEventIs(Mrp::MsrpListenerEvent::ready);
  EXPECT_EQ(listener.streamId(), 5u);
  EXPECT_EQ(listener.listenerEvent(), Mrp::MsrpListenerEvent::ready);
  EXPECT_NE(listener, Mrp::MsrpListenerAttribute(5, Mrp::MsrpListenerEvent::askingFailed));
  EXPECT_EQ(listener, Mrp::MsrpListenerAttribute(5, Mrp::MsrpListenerEvent::ready));
}

TEST(ValueRecordsTest, ListenerStreamComparesAllSixtyFourBits) {
  EXPECT_EQ(Mrp::MsrpListenerStreamAttribute(0x8000000000000001ULL),
            Mrp::MsrpListenerStreamAttribute(0x8000000000000001ULL));
  EXPECT_NE(Mrp::MsrpListenerStreamAttribute(0x8000000000000001ULL), Mrp::MsrpListenerStreamAttribute(1));
  EXPECT_NE(Mrp::MsrpListenerStreamAttribute(0x0000000100000000ULL), Mrp::MsrpListenerStreamAttribute(0));
}

TEST(ValueRecordsTest, TalkersAreNotOnlyWhenAllZero) {
  EXPECT_TRUE(!Mrp::MsrpTalkerAdvertiseAttribute());
  EXPECT_TRUE(!Mrp::MsrpTalkerFailedAttribute());
  Mrp::MsrpTalkerAdvertiseAttribute talker;
  talker.accumulatedLatencyIs(1);
  EXPECT_FALSE(!talker) << "any non-zero field counts, the last one included";
  Mrp::MsrpTalkerFailedAttribute failed;
  failed.failureInformationIs(Mrp::FailureInformation(0, 1));
  EXPECT_FALSE(!failed);
  EXPECT_FALSE(!Mrp::MsrpTalkerFailedAttribute(sampleTalker(), Mrp::FailureInformation()));
}

TEST(ValueRecordsTest, PriorityAndRankOrdersByTheWholeOctet) {
  EXPECT_EQ(Mrp::PriorityAndRank(3, 1).octet(), 0x70);
  EXPECT_EQ(Mrp::PriorityAndRank(3, 0).octet(), 0x60);
  EXPECT_EQ(Mrp::PriorityAndRank(2, 1).octet(), 0x50);
  EXPECT_LT(Mrp::PriorityAndRank(3, 0), Mrp::PriorityAndRank(3, 1));
  EXPECT_LT(Mrp::PriorityAndRank(2, 1), Mrp::PriorityAndRank(3, 0));
  EXPECT_LT(Mrp::PriorityAndRank(2, 1), Mrp::PriorityAndRank(3, 1));
  EXPECT_EQ(Mrp::PriorityAndRank(3, 1).priority(), 3);
  EXPECT_EQ(Mrp::PriorityAndRank(3, 1).rank(), 1);
  EXPECT_EQ(Mrp::PriorityAndRank(9, 3).octet(), Mrp::PriorityAndRank(1, 1).octet()) << "only the low bits are kept";
}

}  // namespace
