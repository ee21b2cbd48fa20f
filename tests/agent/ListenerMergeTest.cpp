#include <gtest/gtest.h>

#include <vector>

#include "ListenerMerge.h"

namespace MrpTest {
namespace {

using Declaration = Mrp::MsrpListenerEvent;
using MrpAgent::PortListener;

constexpr PortListener kReadyReserved{Declaration::ready, true, false};
constexpr PortListener kReadyFailedReserved{Declaration::readyFailed, true, false};
constexpr PortListener kAsking{Declaration::askingFailed, false, false};
// The listener says Ready, but the bridge declared Talker Failed on its port.
constexpr PortListener kReadyBehindFailed{Declaration::ready, false, true};
// Ready, not (yet) reserved: the talker is not advertised on its port.
constexpr PortListener kReadyUnreserved{Declaration::ready, false, false};

struct MergeRow {
  const char* name;
  std::vector<PortListener> listeners;
  std::optional<Declaration> merged;
};

// clang-format off
const MergeRow kMerges[] = {
  {"no listener",                       {},                                          std::nullopt},
  {"one ready and reserved",            {kReadyReserved},                            Declaration::ready},
  {"every one ready and reserved",      {kReadyReserved, kReadyReserved},            Declaration::ready},
  {"one asking",                        {kAsking},                                   Declaration::askingFailed},
  {"every one asking",                  {kAsking, kAsking},                          Declaration::askingFailed},
  {"ready and asking",                  {kReadyReserved, kAsking},                   Declaration::readyFailed},
  {"readyFailed alone",                 {kReadyFailedReserved},                      Declaration::readyFailed},
  {"ready and readyFailed",             {kReadyReserved, kReadyFailedReserved},      Declaration::readyFailed},
  {"ready behind a Talker Failed",      {kReadyBehindFailed},                        Declaration::askingFailed},
  {"ready, and one behind Talker Failed", {kReadyReserved, kReadyBehindFailed},      Declaration::readyFailed},
  {"ready but not reserved",            {kReadyUnreserved},                          Declaration::askingFailed},
};
// clang-format on

TEST(ListenerMergeTest, ListenersMergeToReadyAskingFailedOrReadyFailed) {
  for (const MergeRow& row : kMerges) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(MrpAgent::mergedListenerDeclaration(row.listeners), row.merged);
  }
}

}  // namespace
}  // namespace MrpTest
