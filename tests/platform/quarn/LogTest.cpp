#include "quarn/Log.h"

#include <gtest/gtest.h>

#include <string>

namespace {

constexpr Quarn::LogMessage kPortFlap{
    "MRP-4-PORT_FLAP", 4, "A port went down and came back", "Port %s went %s", Quarn::kNoActionRequired};
constexpr Quarn::LogMessage kCount{"MRP-6-COUNT", 6, "A count", "%d attributes, %u%% full", Quarn::kNoActionRequired};
constexpr Quarn::LogMessage kPlain{"MRP-5-PLAIN", 5, "No arguments", "nothing to fill", Quarn::kNoActionRequired};

TEST(LogTest, StringArgumentsFillTheFormat) {
  Quarn::CaptureLogSink sink;
  Quarn::log(kPortFlap, "Ethernet1", "down");
  ASSERT_EQ(sink.lines().size(), 1u);
  EXPECT_EQ(sink.lines()[0].key, "MRP-4-PORT_FLAP");
  EXPECT_EQ(sink.lines()[0].severity, 4);
  EXPECT_EQ(sink.lines()[0].text, "Port Ethernet1 went down");
}

TEST(LogTest, NumericArgumentsAndPercentSignsFormat) {
  Quarn::CaptureLogSink sink;
  Quarn::log(kCount, 12, 75u);
  ASSERT_EQ(sink.lines().size(), 1u);
  EXPECT_EQ(sink.lines()[0].text, "12 attributes, 75% full");
}

TEST(LogTest, StringFieldsAndPercentSignsMix) {
  constexpr Quarn::LogMessage kShare{"MRP-6-SHARE", 6, "A share", "100%% of %s on %s", Quarn::kNoActionRequired};
  Quarn::CaptureLogSink sink;
  Quarn::log(kShare, "VLAN 10", "Ethernet3");
  ASSERT_EQ(sink.lines().size(), 1u);
  EXPECT_EQ(sink.lines()[0].text, "100% of VLAN 10 on Ethernet3");
}

TEST(LogTest, StringsWithOtherFieldsFormatLikePrintf) {
  constexpr Quarn::LogMessage kMixed{"MRP-6-MIXED", 6, "Mixed", "%s is %5s", Quarn::kNoActionRequired};
  Quarn::CaptureLogSink sink;
  Quarn::log(kMixed, "port", "up");
  ASSERT_EQ(sink.lines().size(), 1u);
  EXPECT_EQ(sink.lines()[0].text, "port is    up");
}

TEST(LogTest, FormatWithoutArgumentsIsTheText) {
  Quarn::CaptureLogSink sink;
  Quarn::log(kPlain);
  ASSERT_EQ(sink.lines().size(), 1u);
  EXPECT_EQ(sink.lines()[0].text, "nothing to fill");
}

TEST(LogTest, LongArgumentIsNotTruncated) {
  Quarn::CaptureLogSink sink;
  const std::string longName(1000, 'x');
  Quarn::log(kPortFlap, longName.c_str(), "up");
  ASSERT_EQ(sink.lines().size(), 1u);
  EXPECT_EQ(sink.lines()[0].text, "Port " + longName + " went up");
}

TEST(LogTest, EachCallIsOneLineInOrder) {
  Quarn::CaptureLogSink sink;
  Quarn::log(kPortFlap, "Ethernet1", "down");
  Quarn::log(kPortFlap, "Ethernet2", "up");
  ASSERT_EQ(sink.lines().size(), 2u);
  EXPECT_EQ(sink.lines()[1].text, "Port Ethernet2 went up");
}

}  // namespace
