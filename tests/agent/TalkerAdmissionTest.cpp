#include <gtest/gtest.h>

#include "TalkerAdmission.h"

namespace MrpTest {
namespace {

using MrpAgent::kSrClassA;
using MrpAgent::PortReservations;
using MrpAgent::StreamClass;

constexpr std::uint64_t kGigabit = 1'000'000'000;
constexpr std::uint64_t kBridgeId = 0x8000020000000001ULL;
constexpr std::uint64_t kStream = 0x001b210000010001ULL;

// A class A talker of 100-octet frames, one per interval: 9,088,000 bit/s.
Mrp::MsrpTalkerAdvertiseAttribute talker(std::uint32_t latency = 1000) {
  return {kStream, Mrp::DataFrameParameters(Velo::EthAddr(0x91, 0xe0, 0xf0, 0, 0xfe, 1), 2), Mrp::Tspec(100, 1),
          Mrp::PriorityAndRank(3, 1), latency};
}

enum class Load { none, full, fullButThisStreamReserved };

struct AdmissionRow {
  const char* name;
  StreamClass streamClass;
  Load load;
  std::optional<std::uint8_t> failureCode;  // none: advertised
};

// clang-format off
const AdmissionRow kAdmissions[] = {
  {"fits",                                 {kSrClassA, false},    Load::none,                      std::nullopt},
  {"no room",                              {kSrClassA, false},    Load::full,                      1},
  {"no room, but reserved already",        {kSrClassA, false},    Load::fullButThisStreamReserved, std::nullopt},
  {"boundary port",                        {kSrClassA, true},     Load::none,                      8},
  {"boundary port, even when reserved",    {kSrClassA, true},     Load::fullButThisStreamReserved, 8},
  {"not an SR class priority",             {std::nullopt, false}, Load::none,                      13},
  {"not an SR class priority before room", {std::nullopt, true},  Load::full,                      13},
};
// clang-format on

TEST(TalkerAdmissionTest, ATalkerIsAdvertisedWhereItMayBeReservedAndRefusedWithTheReasonElsewhere) {
  for (const AdmissionRow& row : kAdmissions) {
    SCOPED_TRACE(row.name);
    PortReservations port(kGigabit, MrpAgent::kDefaultDeltaBandwidth);
    if (row.load == Load::full) port.reserve({99, kSrClassA, 745'000'000, 1542});
    if (row.load == Load::fullButThisStreamReserved) {
      port.reserve({99, kSrClassA, 740'912'000, 1542});
      port.reserve({kStream, kSrClassA, 9'088'000, 142});
    }
    const MrpAgent::AttributeValue declared =
        MrpAgent::talkerDeclarationOn(talker(1000), row.streamClass, {port, 12'336}, kBridgeId);
    Mrp::MsrpTalkerAdvertiseAttribute advertised = talker(13'336);
    if (!row.failureCode) {
      EXPECT_EQ(declared, MrpAgent::AttributeValue(advertised));
    } else {
      EXPECT_EQ(declared, MrpAgent::AttributeValue(Mrp::MsrpTalkerFailedAttribute(
                              advertised, Mrp::FailureInformation(kBridgeId, *row.failureCode))));
    }
  }
}

TEST(TalkerAdmissionTest, TheLatencyAddedStopsAtTheLargestItCanCarry) {
  const PortReservations port(kGigabit, MrpAgent::kDefaultDeltaBandwidth);
  const MrpAgent::AttributeValue declared =
      MrpAgent::talkerDeclarationOn(talker(0xfffffff0U), {kSrClassA, false}, {port, 12'336}, kBridgeId);
  EXPECT_EQ(std::get<Mrp::MsrpTalkerAdvertiseAttribute>(declared.record()).accumulatedLatency(), 0xffffffffU);
}

TEST(TalkerAdmissionTest, FailureCodesHaveTheirWords) {
  EXPECT_EQ(MrpAgent::failureCodeText(1), "insufficient bandwidth");
  EXPECT_EQ(MrpAgent::failureCodeText(8), "egress port is not AVB capable");
  EXPECT_EQ(MrpAgent::failureCodeText(13), "requested priority is not an SR class priority");
  EXPECT_EQ(MrpAgent::failureCodeText(5), "stream destination address already in use");
  EXPECT_EQ(MrpAgent::failureCodeText(19), "SR class priority mismatch");
  EXPECT_EQ(MrpAgent::failureCodeText(0), "failure code 0");
  EXPECT_EQ(MrpAgent::failureCodeText(20), "failure code 20");
}

}  // namespace
}  // namespace MrpTest
