// The wiring of an engine's packet access, alone: directories made and
// named, the manager configured and enabled, one socket filter per process,
// and the order in which it lets go.

#include "MrpSm/MrpPamWiring.h"

#include <gtest/gtest.h>

#include "support/MrpSmPamPeer.h"
#include "velo/PamFactory.h"

namespace MrpTest {
namespace {

using Mrp::MrpPamWiring;

const Velo::EthAddr kMvrpAddr(0x01, 0x80, 0xc2, 0x00, 0x00, 0x21);
const Velo::EthAddr kMsrpAddr(0x01, 0x80, 0xc2, 0x00, 0x00, 0x0e);

class MrpPamWiringTest : public ::testing::Test {
 protected:
  MrpPamWiringTest() { Mrp::MrpSmPamPeer::pamFilterProgramClear(); }
  ~MrpPamWiringTest() override { Mrp::MrpSmPamPeer::pamFilterProgramClear(); }

  Quarn::Ptr<Hive::EntityManager> entityManager = new Hive::EntityManager("mrp");
};

TEST_F(MrpPamWiringTest, TheManagerListensOnTheApplicationAddressWithTheFilterAndIsEnabled) {
  MrpPamWiring wiring(*entityManager, kMvrpAddr, 0x88f5);
  const Interface::EthDevPamManager& man = *wiring.pamMan();
  EXPECT_EQ(man.listenAddr(), kMvrpAddr);
  EXPECT_EQ(man.ethProtocol(), MrpPamWiring::kPamEthProtocol);
  EXPECT_EQ(man.filterProgram(), MrpPamWiring::pamFilterProgramOf(kMvrpAddr, 0x88f5));
  EXPECT_EQ(man.maxRxPktData(), MrpPamWiring::kPamMaxRxPktData);
  EXPECT_TRUE(man.enabled());
  EXPECT_EQ(man.desiredIntfDir(), wiring.desiredIntfDir());
  EXPECT_EQ(man.pamCollection(), wiring.pamCollection());
}

TEST_F(MrpPamWiringTest, TheFirstWiringOfTheProcessMakesTheFilterAndLaterOnesReuseIt) {
  MrpPamWiring first(*entityManager, kMsrpAddr, 0x22ea);
  MrpPamWiring second(*entityManager, kMvrpAddr, 0x88f5);
  EXPECT_EQ(second.pamMan()->filterProgram(), MrpPamWiring::pamFilterProgramOf(kMsrpAddr, 0x22ea));
  EXPECT_EQ(second.pamMan()->listenAddr(), kMvrpAddr);
}

TEST_F(MrpPamWiringTest, LocalDirectoriesAreKeptByNameUnderTheirRoot) {
  MrpPamWiring wiring(*entityManager, kMvrpAddr, 0x88f5);
  const Hive::EntityManager& root = *wiring.intfStatusManagerRoot();
  EXPECT_EQ(root.entity<Interface::PamDesiredIntfDir>(MrpPamWiring::kDesiredIntfDirName), wiring.desiredIntfDir());
  EXPECT_EQ(root.entity<Interface::EthDevPamCollection>(MrpPamWiring::kPamCollectionName), wiring.pamCollection());
  EXPECT_EQ(root.entity<Interface::DeviceIntfStatusDir>(MrpPamWiring::kDeviceIntfStatusDirName),
            wiring.deviceIntfStatusDir());
}

TEST_F(MrpPamWiringTest, ReleaseLetsGoOfEverythingItMade) {
  MrpPamWiring wiring(*entityManager, kMvrpAddr, 0x88f5);
  const Quarn::Ptr<Interface::EthDevPamManager> man = wiring.pamMan();
  wiring.release();
  EXPECT_FALSE(wiring.desiredIntfDir());
  EXPECT_FALSE(wiring.pamCollection());
  EXPECT_FALSE(wiring.deviceIntfStatusDir());
  EXPECT_FALSE(wiring.intfStatusManagerRoot());
  EXPECT_FALSE(wiring.pamMan());
  EXPECT_EQ(man->references(), 1u) << "nothing of the wiring still holds the manager";
}

}  // namespace
}  // namespace MrpTest
