// The seed corpus of the receive path's fuzz target: the files shipped in
// fuzz/corpus/receive_path are the ones the frame set makes, and every seed
// runs through both engines with their invariants intact.

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <map>
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

std::map<std::string, Bytes> shippedCorpus() {
  std::map<std::string, Bytes> files;
  if (!std::filesystem::is_directory(kCorpusDir)) return files;
  for (const auto& entry : std::filesystem::directory_iterator(kCorpusDir)) {
    files[entry.path().filename().string()] = readFileBytes(entry.path().string());
  }
  return files;
}

std::vector<std::string> namesOf(const std::map<std::string, Bytes>& files) {
  std::vector<std::string> names;
  for (const auto& [name, bytes] : files) names.push_back(name);
  return names;
}

TEST(ReceivePathCorpusTest, ShippedSeedsAreWhatTheFrameSetMakes) {
  std::map<std::string, Bytes> expected;
  for (const auto& [name, bytes] : ReceivePath::seedCorpus()) expected[name] = bytes;
  if (const char* regenerate = std::getenv("MRP_REGENERATE_CORPUS"); regenerate && std::string(regenerate) == "1") {
    std::filesystem::remove_all(kCorpusDir);
    std::filesystem::create_directories(kCorpusDir);
    for (const auto& [name, bytes] : expected) writeFileBytes((kCorpusDir / name).string(), bytes);
  }
  const std::map<std::string, Bytes> shipped = shippedCorpus();
  const char* regenerateHint = "the frame set changed; regenerate with MRP_REGENERATE_CORPUS=1 and review";
  ASSERT_EQ(namesOf(shipped), namesOf(expected)) << regenerateHint;
  for (const auto& [name, bytes] : expected) EXPECT_TRUE(shipped.at(name) == bytes) << name << ": " << regenerateHint;
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
