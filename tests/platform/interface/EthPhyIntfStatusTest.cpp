#include "interface/EthPhyIntfStatus.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

class MockNotifiee : public Interface::EthPhyIntfStatus::Notifiee {
 public:
  MOCK_METHOD(void, onMtu, (), (override));
};

TEST(EthPhyIntfStatusTest, StartsWithoutMtu) {
  Quarn::Ptr<Interface::EthPhyIntfStatus> status = new Interface::EthPhyIntfStatus(Velo::IntfId("Ethernet1"));
  EXPECT_EQ(status->intfId(), Velo::IntfId("Ethernet1"));
  EXPECT_EQ(status->mtu(), 0u);
}

TEST(EthPhyIntfStatusTest, MtuIsNotifiesOnlyOnChange) {
  Quarn::Ptr<Interface::EthPhyIntfStatus> status = new Interface::EthPhyIntfStatus(Velo::IntfId("Ethernet1"));
  testing::StrictMock<MockNotifiee> notifiee;
  notifiee.notifierIs(status.ptr());

  EXPECT_CALL(notifiee, onMtu()).WillOnce([&] { EXPECT_EQ(status->mtu(), 9214u); });
  status->mtuIs(9214);
  status->mtuIs(9214);
}

}  // namespace
