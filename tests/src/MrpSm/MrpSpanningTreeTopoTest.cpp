#include <gtest/gtest.h>

#include <cstdint>
#include <stdexcept>
#include <string>

#include "stp/PvstInstanceName.h"
#include "stp/Status.h"
#include "support/EngineFixture.h"

namespace MrpTest {
namespace {

using Mrp::MrpApplication;

const Velo::IntfId kEth1("Ethernet1"), kEth2("Ethernet2");

// Ethernet1 has native VLAN 20, which topology "Topo7" (number 7) carries;
// Ethernet2 has no bridging entry.
class MrpSpanningTreeTopoTest : public EngineFixture {
 protected:
  MrpSpanningTreeTopoTest() {
    records.brConfig->switchIntfConfigIs(kEth1)->nativeVlanIs(20);
    records.brTopoConfig->topologyIs("Topo7", 7);
    records.brTopoConfig->vlanTopologyIs(20, "Topo7");
  }
  Quarn::Ptr<Mrp::MrpSm> engine = engineNew(MrpApplication::mvrp, false);
};

TEST_F(MrpSpanningTreeTopoTest, NativeVlanIsTheBridgingOneOrZeroWithoutAnEntry) {
  EXPECT_EQ(mrpLib->getNativeVlanId(kEth1), 20);
  EXPECT_EQ(mrpLib->getNativeVlanId(kEth2), 0);
}

// A spanning-tree mode and the instance that then governs Ethernet1.
struct TopoCase {
  Stp::Mode mode;
  std::string instance;  // empty: the per-VLAN instance of VLAN 20
};

class MrpSpanningTreeTopoModeTest : public MrpSpanningTreeTopoTest, public ::testing::WithParamInterface<TopoCase> {};

TEST_P(MrpSpanningTreeTopoModeTest, InstanceFollowsTheMode) {
  records.stpStatus->modeIs(GetParam().mode);
  const std::string expected = GetParam().instance.empty() ? Stp::pvstInstanceName(20) : GetParam().instance;
  EXPECT_EQ(mrpLib->baseSpanningTreeTopo(kEth1), expected);
}

INSTANTIATE_TEST_SUITE_P(Modes, MrpSpanningTreeTopoModeTest,
                         ::testing::Values(TopoCase{0, "Cist"}, TopoCase{2, "Cist"}, TopoCase{3, "Cist"},
                                           TopoCase{0xFFFFFFFF, "NoStp"},
                                           TopoCase{100, "Bkup7"},  // prefix and topology number
                                           TopoCase{101, ""},       // the per-VLAN instance
                                           TopoCase{1, "Topo7"},    // any other mode: the topology's name
                                           TopoCase{7, "Topo7"}));

class MrpSpanningTreeTopoRangeTest : public MrpSpanningTreeTopoTest, public ::testing::WithParamInterface<Stp::Mode> {};

TEST_P(MrpSpanningTreeTopoRangeTest, NativeVlanOutsideTheRangeIsARangeErrorInTheVlanModes) {
  records.stpStatus->modeIs(GetParam());
  records.brConfig->switchIntfConfigIs(kEth1)->nativeVlanIs(4095);
  try {
    mrpLib->baseSpanningTreeTopo(kEth1);
    FAIL() << "4095 is no VLAN";
  } catch (const std::range_error& error) {
    EXPECT_STREQ(error.what(), "VlanId::value < 1 or > 4094 not allowed");
  }
}

INSTANTIATE_TEST_SUITE_P(VlanModes, MrpSpanningTreeTopoRangeTest, ::testing::Values(1, 100, 101));

TEST_F(MrpSpanningTreeTopoTest, SingleTreeModesDoNotLookAtTheNativeVlan) {
  records.brConfig->switchIntfConfigIs(kEth1)->nativeVlanIs(4095);
  records.stpStatus->modeIs(0);
  EXPECT_EQ(mrpLib->baseSpanningTreeTopo(kEth1), "Cist");
  records.stpStatus->modeIs(0xFFFFFFFF);
  EXPECT_EQ(mrpLib->baseSpanningTreeTopo(kEth1), "NoStp");
}

}  // namespace
}  // namespace MrpTest
