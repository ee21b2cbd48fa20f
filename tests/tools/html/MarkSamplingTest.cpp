#include "html/MarkSampling.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace MrpTest {

using MrpCli::ReportData;

namespace {

ReportData::Mark markAt(double t, const std::string& kind) { return {t, kind, std::nullopt, 1}; }

struct SamplingCase {
  std::string name;
  std::vector<ReportData::Mark> marks;
  double until;
  std::size_t pixels;
  // What is kept: time, kind and how many it stands for.
  std::vector<std::tuple<double, std::string, std::size_t>> kept;
};

class MarkSamplingTest : public ::testing::TestWithParam<SamplingCase> {};

TEST_P(MarkSamplingTest, KeepsWhatAPixelCanShow) {
  std::vector<std::tuple<double, std::string, std::size_t>> kept;
  for (const ReportData::Mark& mark : MrpCli::sampledMarks(GetParam().marks, GetParam().until, GetParam().pixels)) {
    kept.emplace_back(mark.t, mark.kind, mark.count);
  }
  EXPECT_EQ(kept, GetParam().kept);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, MarkSamplingTest,
    ::testing::Values(
        SamplingCase{"ApartStay",
                     {markAt(1, "leaveAllSent"), markAt(3, "leaveAllSent")},
                     10,
                     10,
                     {{1, "leaveAllSent", 1}, {3, "leaveAllSent", 1}}},
        SamplingCase{"OnePixelOneMark",
                     {markAt(1.1, "leaveAllSent"), markAt(1.5, "leaveAllSent"), markAt(1.9, "leaveAllSent")},
                     10,
                     10,
                     {{1.1, "leaveAllSent", 3}}},
        SamplingCase{"KindsApart",
                     {markAt(1.1, "leaveAllSent"), markAt(1.2, "leaveAllReceived"), markAt(1.3, "leaveAllSent")},
                     10,
                     10,
                     {{1.1, "leaveAllSent", 2}, {1.2, "leaveAllReceived", 1}}},
        SamplingCase{"OtherMarksAllKept",
                     {markAt(1.1, "join"), markAt(1.2, "join"), markAt(1.3, "leaveAllSent")},
                     10,
                     10,
                     {{1.1, "join", 1}, {1.2, "join", 1}, {1.3, "leaveAllSent", 1}}},
        SamplingCase{"BackInAPixelAfterAnother",
                     {markAt(1.1, "leaveAllSent"), markAt(2.1, "leaveAllSent"), markAt(2.2, "leaveAllSent")},
                     10,
                     10,
                     {{1.1, "leaveAllSent", 1}, {2.1, "leaveAllSent", 2}}},
        SamplingCase{"NoWidthKeepsAll",
                     {markAt(1.1, "leaveAllSent"), markAt(1.2, "leaveAllSent")},
                     10,
                     0,
                     {{1.1, "leaveAllSent", 1}, {1.2, "leaveAllSent", 1}}}),
    [](const auto& info) { return info.param.name; });

TEST(MarkSamplingTest, AnHourOfLeaveAllsFitsTheWidth) {
  std::vector<ReportData::Mark> marks;
  for (double t = 0; t < 3600; t += 0.5) marks.push_back(markAt(t, "leaveAllSent"));
  const auto kept = MrpCli::sampledMarks(marks, 3600, 1000);
  EXPECT_EQ(kept.size(), 1000u);
  std::size_t total = 0;
  for (const ReportData::Mark& mark : kept) total += mark.count;
  EXPECT_EQ(total, marks.size());
}

}  // namespace
}  // namespace MrpTest
