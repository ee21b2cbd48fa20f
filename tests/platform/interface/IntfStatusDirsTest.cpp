#include <gtest/gtest.h>

#include "interface/AllIntfStatusDir.h"
#include "interface/DeviceIntfStatusDir.h"

namespace {

const Velo::IntfId kEth1("Ethernet1");

TEST(AllIntfStatusDirTest, EntriesAreCreatedOnceAndRemoved) {
  EXPECT_STREQ(Interface::AllIntfStatusDir::kAllPath, "interface/status/all");
  EXPECT_STREQ(Interface::AllIntfStatusDir::kLocalPath, "interface/status/local");
  Quarn::Ptr<Interface::AllIntfStatusDir> dir = new Interface::AllIntfStatusDir;
  auto entry = dir->intfStatusIs(kEth1);
  EXPECT_EQ(entry->intfId(), kEth1);
  EXPECT_FALSE(entry->operUp());
  entry->operUpIs(true);
  EXPECT_EQ(dir->intfStatusIs(kEth1), entry);
  EXPECT_TRUE(dir->intfStatus(kEth1)->operUp());
  dir->intfStatusDel(kEth1);
  EXPECT_EQ(dir->intfStatus(kEth1), nullptr);
  EXPECT_EQ(dir->intfStatusCount(), 0u);
}

TEST(DeviceIntfStatusDirTest, EntriesHoldAddressAndError) {
  Quarn::Ptr<Interface::DeviceIntfStatusDir> dir = new Interface::DeviceIntfStatusDir("devices");
  EXPECT_EQ(dir->name(), Quarn::Name("devices"));
  auto entry = dir->deviceIntfStatusIs(kEth1);
  EXPECT_EQ(dir->deviceIntfStatusIs(kEth1), entry);
  entry->ethAddrIs(Velo::EthAddr(2, 0, 0, 0, 0, 1));
  entry->pamErrorIs("no such device");
  EXPECT_EQ(dir->deviceIntfStatus(kEth1)->pamError(), "no such device");
  EXPECT_EQ(dir->deviceIntfStatus(kEth1)->ethAddr(), Velo::EthAddr(2, 0, 0, 0, 0, 1));
  dir->deviceIntfStatusDel(kEth1);
  EXPECT_EQ(dir->deviceIntfStatusCount(), 0u);
}

}  // namespace
