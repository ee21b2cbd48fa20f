#include "report/VlanSetText.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace {

struct VlanSet {
  std::vector<std::uint16_t> vlans;
  std::string text;
};

class VlanSetTextTest : public ::testing::TestWithParam<VlanSet> {};

TEST_P(VlanSetTextTest, ListsAscendingWithRunsAsRanges) {
  EXPECT_EQ(MrpCli::vlanSetText(GetParam().vlans), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(Sets, VlanSetTextTest,
                         ::testing::Values(VlanSet{{}, ""}, VlanSet{{10}, "10"}, VlanSet{{10, 11}, "10-11"},
                                           VlanSet{{10, 12}, "10, 12"},
                                           VlanSet{{100, 101, 102, 103, 104, 105, 106, 107, 108, 109, 110}, "100-110"},
                                           VlanSet{{2, 100, 101, 102, 200}, "2, 100-102, 200"},
                                           VlanSet{{200, 101, 2, 100, 102, 4}, "2, 4, 100-102, 200"},
                                           VlanSet{{7, 7, 8, 7}, "7-8"}, VlanSet{{1, 4094}, "1, 4094"},
                                           VlanSet{{4093, 4094, 1, 2}, "1-2, 4093-4094"}));

}  // namespace
