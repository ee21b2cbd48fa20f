#include "interface/EthDevPamManager.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "velo/MemPam.h"

namespace {

const Velo::IntfId kEth1("Ethernet1");
const Velo::IntfId kEth2("Ethernet2");
const Velo::EthAddr kMac1(0x02, 0, 0, 0, 0, 1);

class EthDevPamManagerTest : public ::testing::Test {
 protected:
  EthDevPamManagerTest() {
    factory->pamIs(pam1);
    man = new Interface::EthDevPamManager(desired, collection, devices, factory);
  }

  Quarn::Ptr<Quarn::SimClock> clock = new Quarn::SimClock;
  Quarn::Ptr<Velo::MemPamFactory> factory = new Velo::MemPamFactory;
  Quarn::Ptr<Velo::MemPam> pam1 = new Velo::MemPam(kEth1, kMac1, clock);
  Quarn::Ptr<Interface::PamDesiredIntfDir> desired = new Interface::PamDesiredIntfDir("desired");
  Quarn::Ptr<Interface::EthDevPamCollection> collection = new Interface::EthDevPamCollection("pams");
  Quarn::Ptr<Interface::DeviceIntfStatusDir> devices = new Interface::DeviceIntfStatusDir("devices");
  Quarn::Ptr<Interface::EthDevPamManager> man;
};

TEST_F(EthDevPamManagerTest, ConfigurationIsHandedToTheFactory) {
  man->ethProtocolIs(3);
  man->listenAddrIs(Velo::EthAddr(0x01, 0x80, 0xc2, 0, 0, 0x21));
  man->filterProgramIs({{Velo::PamFilterOp::kReturn, 0, 0, 0xffff}});
  man->maxRxPktDataIs(100);
  man->perIntfSocketIs(true);
  EXPECT_EQ(man->ethProtocol(), 3);
  EXPECT_EQ(man->listenAddr(), Velo::EthAddr(0x01, 0x80, 0xc2, 0, 0, 0x21));
  EXPECT_EQ(man->filterProgram().size(), 1u);
  EXPECT_EQ(man->maxRxPktData(), 100u);
  EXPECT_TRUE(man->perIntfSocket());
  EXPECT_EQ(man->pamConfig().maxRxPktData, 100u);
  man->enabledIs(true);
  desired->intfDesiredIs(kEth1, true);
  EXPECT_EQ(pam1->rxLimit(), 100u) << "opened with the manager's receive size";
}

TEST_F(EthDevPamManagerTest, OpensExactlyThePortsListedTrueWhileEnabled) {
  desired->intfDesiredIs(kEth1, true);
  EXPECT_EQ(collection->intfPamCount(), 0u) << "disabled";
  man->enabledIs(true);
  EXPECT_EQ(collection->intfPam(kEth1), Quarn::Ptr<Velo::Pam>(pam1));
  EXPECT_EQ(devices->deviceIntfStatus(kEth1)->ethAddr(), kMac1);
  EXPECT_EQ(devices->deviceIntfStatus(kEth1)->pamError(), "");

  desired->intfDesiredIs(kEth1, false);
  EXPECT_EQ(collection->intfPam(kEth1), nullptr);
  EXPECT_EQ(devices->deviceIntfStatus(kEth1), nullptr);
  desired->intfDesiredIs(kEth1, true);
  EXPECT_TRUE(collection->intfPam(kEth1));
  desired->intfDesiredDel(kEth1);
  EXPECT_EQ(collection->intfPam(kEth1), nullptr);
}

TEST_F(EthDevPamManagerTest, DisablingClosesEverySocketAndEnablingReopens) {
  man->enabledIs(true);
  desired->intfDesiredIs(kEth1, true);
  man->enabledIs(false);
  EXPECT_EQ(collection->intfPamCount(), 0u);
  EXPECT_TRUE(devices->deviceIntfStatus(kEth1)) << "still desired";
  man->enabledIs(true);
  EXPECT_TRUE(collection->intfPam(kEth1));
}

TEST_F(EthDevPamManagerTest, AFailedOpenIsRecordedAndLeavesThePortWithoutSocket) {
  man->enabledIs(true);
  desired->intfDesiredIs(kEth2, true);
  EXPECT_EQ(collection->intfPam(kEth2), nullptr);
  ASSERT_TRUE(devices->deviceIntfStatus(kEth2));
  EXPECT_EQ(devices->deviceIntfStatus(kEth2)->pamError(), "MemPamFactory: no port Ethernet2");
}

TEST_F(EthDevPamManagerTest, WithoutAFactoryNothingOpens) {
  Quarn::Ptr<Interface::EthDevPamManager> bare = new Interface::EthDevPamManager(
      new Interface::PamDesiredIntfDir("d"), collection, devices, nullptr);
  bare->enabledIs(true);
  bare->desiredIntfDir()->intfDesiredIs(kEth1, true);
  EXPECT_EQ(collection->intfPamCount(), 0u);
  EXPECT_EQ(devices->deviceIntfStatus(kEth1)->pamError(), "no packet access factory");
}

TEST_F(EthDevPamManagerTest, ASocketWhosePortDisappearsLeavesTheCollection) {
  man->enabledIs(true);
  desired->intfDesiredIs(kEth1, true);
  pam1->close();
  EXPECT_EQ(collection->intfPam(kEth1), nullptr);
  EXPECT_EQ(devices->deviceIntfStatus(kEth1)->pamError(), "interface gone");
  EXPECT_TRUE(desired->intfDesired(kEth1)) << "the port stays desired";
}

TEST_F(EthDevPamManagerTest, TheManagerGoingAwayLeavesTheCollectionToItsHolders) {
  man->enabledIs(true);
  desired->intfDesiredIs(kEth1, true);
  man = nullptr;
  EXPECT_TRUE(collection->intfPam(kEth1));
  desired->intfDesiredIs(kEth1, false);
  EXPECT_TRUE(collection->intfPam(kEth1)) << "no one reacts any more";
  pam1->close();
  EXPECT_TRUE(collection->intfPam(kEth1));
}

TEST_F(EthDevPamManagerTest, SharedSocketsAreRejected) {
  EXPECT_THROW(man->perIntfSocketIs(false), std::invalid_argument);
  EXPECT_TRUE(man->perIntfSocket());
}

using EthDevPamManagerDeathTest = EthDevPamManagerTest;

TEST_F(EthDevPamManagerDeathTest, ConfigurationChangesWhileEnabledAbort) {
  man->enabledIs(true);
  EXPECT_DEATH(man->ethProtocolIs(3), "Assertion failed: !enabled\\(\\)");
  EXPECT_DEATH(man->listenAddrIs(kMac1), "Assertion failed: !enabled\\(\\)");
  EXPECT_DEATH(man->filterProgramIs({}), "Assertion failed: !enabled\\(\\)");
  EXPECT_DEATH(man->maxRxPktDataIs(1), "Assertion failed: !enabled\\(\\)");
  EXPECT_DEATH(man->perIntfSocketIs(true), "Assertion failed: !enabled\\(\\)");
}

}  // namespace
