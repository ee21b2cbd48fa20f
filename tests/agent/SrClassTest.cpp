#include <gtest/gtest.h>

#include "BridgeConfig.h"
#include "SrClass.h"

namespace MrpTest {
namespace {

using MrpAgent::SrClass;

struct BandwidthRow {
  SrClass srClass;
  std::uint16_t maxFrameSize;
  std::uint16_t maxIntervalFrames;
  std::uint64_t bitsPerSecond;
};

// (MaxFrameSize + 42) x 8 bits x MaxIntervalFrames, 8000 class A or 4000
// class B intervals a second.
// clang-format off
const BandwidthRow kBandwidths[] = {
  {MrpAgent::kSrClassA,  100, 1,     9'088'000},  // 142 x 8 x 8000
  {MrpAgent::kSrClassB,   64, 1,     3'392'000},  // 106 x 8 x 4000
  {MrpAgent::kSrClassA, 1000, 2,   133'376'000},  // 1042 x 8 x 2 x 8000
  {MrpAgent::kSrClassB, 1500, 3,   148'032'000},  // 1542 x 8 x 3 x 4000
  {MrpAgent::kSrClassA,    0, 0,             0},
  {MrpAgent::kSrClassA, 65535, 65535, 275'045'676'480'000},  // the largest TSpec does not overflow
};
// clang-format on

TEST(SrClassTest, AStreamsBandwidthIsItsFramesWithOverheadInEveryInterval) {
  for (const BandwidthRow& row : kBandwidths) {
    SCOPED_TRACE(::testing::Message() << row.srClass.name << " " << row.maxFrameSize << " x " << row.maxIntervalFrames);
    EXPECT_EQ(MrpAgent::streamBandwidth(Mrp::Tspec(row.maxFrameSize, row.maxIntervalFrames), row.srClass),
              row.bitsPerSecond);
  }
}

TEST(SrClassTest, ClassesAreFoundByIdAndLetterInPriorityOrder) {
  EXPECT_EQ(MrpAgent::srClassOfId(6), MrpAgent::kSrClassA);
  EXPECT_EQ(MrpAgent::srClassOfId(5), MrpAgent::kSrClassB);
  EXPECT_EQ(MrpAgent::srClassOfId(4), std::nullopt);
  EXPECT_EQ(MrpAgent::srClassNamed('B'), MrpAgent::kSrClassB);
  EXPECT_EQ(MrpAgent::srClassNamed('C'), std::nullopt);
  EXPECT_EQ(MrpAgent::srClassIndex(MrpAgent::kSrClassA), 0u);
  EXPECT_EQ(MrpAgent::srClassIndex(MrpAgent::kSrClassB), 1u);
  EXPECT_EQ(MrpAgent::kSrClassA.intervalsPerSecond(), 8000u);
  EXPECT_EQ(MrpAgent::kSrClassB.intervalsPerSecond(), 4000u);
}

struct LatencyRow {
  std::uint64_t speed;
  std::optional<std::uint32_t> configured;
  std::uint32_t latency;
};

// A port adds the time one 1542-octet frame takes at its speed unless told.
// clang-format off
const LatencyRow kLatencies[] = {
  {1'000'000'000,   std::nullopt, 12'336},
  {100'000'000,     std::nullopt, 123'360},
  {10'000'000'000,  std::nullopt, 1'233},
  {1'000'000'000,   20'000,       20'000},
  {0,               std::nullopt, 0},
  {1'000,           std::nullopt, 0xffffffff},  // beyond what AccumulatedLatency carries
};
// clang-format on

TEST(SrClassTest, APortsLatencyIsConfiguredOrOneLargestFrameAtItsSpeed) {
  for (const LatencyRow& row : kLatencies) {
    SCOPED_TRACE(::testing::Message() << row.speed << " bit/s");
    MrpAgent::BridgeConfig config;
    config.portSpeed["p1"] = row.speed;
    if (row.configured) config.portLatency["p1"] = *row.configured;
    EXPECT_EQ(config.latencyOf("p1"), row.latency);
  }
  MrpAgent::BridgeConfig config;
  EXPECT_EQ(config.speedOf("p9"), 1'000'000'000u);
  EXPECT_EQ(config.latencyOf("p9"), 12'336u);
}

}  // namespace
}  // namespace MrpTest
