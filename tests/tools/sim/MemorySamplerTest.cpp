#include "sim/MemorySampler.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <sstream>

#include "quarn/Clock.h"

namespace MrpTest {
namespace {

using MrpCli::MemorySampler;

// A reader that reports 1000, 2000, 3000 ... bytes.
MemorySampler::Reader countingReader() {
  auto bytes = std::make_shared<std::uint64_t>(0);
  return [bytes] { return *bytes += 1000; };
}

TEST(MemorySamplerTest, WritesOneLinePerPeriodCountedFromTheStart) {
  Quarn::Ptr<Quarn::SimClock> clock = new Quarn::SimClock;
  clock->advanceTo(5);
  std::ostringstream out;
  MemorySampler sampler(clock.ptr(), 60, out, countingReader());
  clock->advanceTo(5 + 179.9);
  EXPECT_EQ(out.str(), "{\"t\": 60.0, \"rss\": 1000}\n{\"t\": 120.0, \"rss\": 2000}\n");
  clock->advanceTo(5 + 180);
  EXPECT_EQ(out.str(), "{\"t\": 60.0, \"rss\": 1000}\n{\"t\": 120.0, \"rss\": 2000}\n{\"t\": 180.0, \"rss\": 3000}\n");
}

TEST(MemorySamplerTest, AThousandPeriodsOfATenthLandOnTheirTimes) {
  Quarn::Ptr<Quarn::SimClock> clock = new Quarn::SimClock;
  std::ostringstream out;
  MemorySampler sampler(clock.ptr(), 0.1, out, countingReader());
  clock->advanceTo(100);
  const std::string text = out.str();
  EXPECT_EQ(text.substr(text.rfind('{')), "{\"t\": 100.0, \"rss\": 1000000}\n");
}

TEST(MemorySamplerTest, AnUnreadableResidentSetIsWrittenAsNull) {
  Quarn::Ptr<Quarn::SimClock> clock = new Quarn::SimClock;
  std::ostringstream out;
  MemorySampler sampler(clock.ptr(), 1, out, [] { return std::optional<std::uint64_t>(); });
  clock->advanceTo(1);
  EXPECT_EQ(out.str(), "{\"t\": 1.0, \"rss\": null}\n");
}

TEST(MemorySamplerTest, NothingIsWrittenOnceTheSamplerIsGone) {
  Quarn::Ptr<Quarn::SimClock> clock = new Quarn::SimClock;
  std::ostringstream out;
  { MemorySampler sampler(clock.ptr(), 1, out, countingReader()); }
  clock->advanceTo(3);
  EXPECT_EQ(out.str(), "");
}

TEST(ResidentBytesTest, GrowsByTheMemoryTheProcessTouches) {
  constexpr std::size_t kTouched = 64 << 20;
  const auto before = MrpCli::residentBytes();
  ASSERT_TRUE(before);
  auto block = std::make_unique<char[]>(kTouched);
  for (std::size_t i = 0; i < kTouched; i += 4096) block[i] = 1;
  const auto after = MrpCli::residentBytes();
  ASSERT_TRUE(after);
  EXPECT_GE(*after, *before + kTouched * 15 / 16);
  EXPECT_EQ(block[kTouched / 2], 1);
}

}  // namespace
}  // namespace MrpTest
