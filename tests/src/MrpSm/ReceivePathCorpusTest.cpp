// The seed corpus of the receive path's fuzz target: fuzz/corpus/receive_path
// holds the seeds the frame set makes, and every seed runs through both
// engines with their invariants intact.

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "support/EngineInvariants.h"
#include "support/FileBytes.h"
#include "support/ReceivePathRig.h"
#include "support/ReceivePathSteps.h"

namespace MrpTest {
namespace {

using ReceivePath::Bytes;

const std::filesystem::path kCorpusDir = std::filesystem::path(MRP_SOURCE_DIR) / "fuzz/corpus/receive_path";

// Inputs the fuzzer grew and that were merged into the directory may sit
// beside the seeds.
TEST(ReceivePathCorpusTest, ShippedSeedsAreWhatTheFrameSetMakes) {
  const bool regenerate = [] {
    const char* value = std::getenv("MRP_REGENERATE_CORPUS");
    return value && std::string(value) == "1";
  }();
  if (regenerate) std::filesystem::create_directories(kCorpusDir);
  for (const auto& [name, bytes] : ReceivePath::seedCorpus()) {
    const std::string path = (kCorpusDir / name).string();
    if (regenerate) writeFileBytes(path, bytes);
    Bytes shipped;
    ASSERT_NO_THROW(shipped = readFileBytes(path)) << path << " is missing; run with MRP_REGENERATE_CORPUS=1";
    EXPECT_TRUE(shipped == bytes) << name << ": the frame set changed; regenerate with MRP_REGENERATE_CORPUS=1 and review";
  }
}

class ReceivePathSeedTest : public ::testing::TestWithParam<std::pair<std::string, Bytes>> {};

TEST_P(ReceivePathSeedTest, RunsWithTheInvariantsIntact) {
  ReceivePathRig rig;
  EngineInvariants msrp(*rig.msrp().sm);
  EngineInvariants mvrp(*rig.mvrp().sm);
  ReceivePath::StepReader steps(rig, GetParam().second);
  std::size_t step = 0;
  while (steps.next()) {
    ++step;
    EXPECT_EQ(msrp.violations(), std::vector<std::string>{}) << "MSRP, after step " << step;
    EXPECT_EQ(mvrp.violations(), std::vector<std::string>{}) << "MVRP, after step " << step;
  }
  EXPECT_GE(step, 2u) << "every seed has a step and time after it";
}

INSTANTIATE_TEST_SUITE_P(Seeds, ReceivePathSeedTest, ::testing::ValuesIn(ReceivePath::seedCorpus()),
                         [](const auto& info) { return info.param.first; });

}  // namespace
}  // namespace MrpTest
