#include "interface/AllEthPhyIntfStatusDir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

class MockNotifiee : public Interface::AllEthPhyIntfStatusDir::Notifiee {
 public:
  MOCK_METHOD(void, onEthPhyIntfStatus, (const Velo::IntfId&), (override));
};

const Velo::IntfId kEth1("Ethernet1");
const Velo::IntfId kEth2("Ethernet2");

TEST(AllEthPhyIntfStatusDirTest, EthPhyIntfStatusIsCreatesOnceAndNotifies) {
  Quarn::Ptr<Interface::AllEthPhyIntfStatusDir> dir = new Interface::AllEthPhyIntfStatusDir;
  testing::StrictMock<MockNotifiee> notifiee;
  notifiee.notifierIs(dir.ptr());
  EXPECT_EQ(dir->ethPhyIntfStatus(kEth1), nullptr);

  EXPECT_CALL(notifiee, onEthPhyIntfStatus(kEth1));
  Quarn::Ptr<Interface::EthPhyIntfStatus> entry = dir->ethPhyIntfStatusIs(kEth1);
  ASSERT_NE(entry, nullptr);
  EXPECT_EQ(entry->intfId(), kEth1);
  EXPECT_EQ(dir->ethPhyIntfStatusIs(kEth1), entry);
  EXPECT_EQ(dir->ethPhyIntfStatus(kEth1), entry);
  EXPECT_EQ(dir->ethPhyIntfStatusCount(), 1u);
}

TEST(AllEthPhyIntfStatusDirTest, EthPhyIntfStatusDelRemovesAndNotifiesOnce) {
  Quarn::Ptr<Interface::AllEthPhyIntfStatusDir> dir = new Interface::AllEthPhyIntfStatusDir;
  dir->ethPhyIntfStatusIs(kEth1);
  dir->ethPhyIntfStatusIs(kEth2);
  testing::StrictMock<MockNotifiee> notifiee;
  notifiee.notifierIs(dir.ptr());

  EXPECT_CALL(notifiee, onEthPhyIntfStatus(kEth1));
  dir->ethPhyIntfStatusDel(dir->ethPhyIntfStatuses().begin()->first);
  dir->ethPhyIntfStatusDel(kEth1);
  EXPECT_EQ(dir->ethPhyIntfStatus(kEth1), nullptr);
  ASSERT_EQ(dir->ethPhyIntfStatusCount(), 1u);
  EXPECT_EQ(dir->ethPhyIntfStatuses().begin()->first, kEth2);
}

}  // namespace
