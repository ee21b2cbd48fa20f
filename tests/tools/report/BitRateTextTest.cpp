#include <gtest/gtest.h>

#include "report/BitRateText.h"

namespace MrpTest {
namespace {

struct RateRow {
  std::uint64_t bitsPerSecond;
  const char* text;
};

// clang-format off
const RateRow kRates[] = {
  {0,                       "0 bit/s"},
  {800,                     "800 bit/s"},
  {1'000,                   "1 kb/s"},
  {9'088'000,               "9.088 Mb/s"},
  {3'392'000,               "3.392 Mb/s"},
  {750'000'000,             "750 Mb/s"},
  {100'000'000,             "100 Mb/s"},
  {1'000'000'000,           "1 Gb/s"},
  {10'000'000'000,          "10 Gb/s"},
  {508'800'000,             "508.8 Mb/s"},
  {1'999'999,               "2 Mb/s"},      // rounded up into the next whole
  {1'234'567,               "1.235 Mb/s"},
  {275'045'676'480'000,     "275045.676 Gb/s"},  // the largest stream does not overflow
};
// clang-format on

TEST(BitRateTextTest, RatesAreInTheLargestUnitWithUpToThreeDecimals) {
  for (const RateRow& row : kRates) EXPECT_EQ(MrpCli::bitRateText(row.bitsPerSecond), row.text) << row.bitsPerSecond;
}

}  // namespace
}  // namespace MrpTest
