#include "bridging/SwitchIntfConfig.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

class MockNotifiee : public Bridging::SwitchIntfConfig::Notifiee {
 public:
  MOCK_METHOD(void, onNativeVlan, (), (override));
};

TEST(SwitchIntfConfigTest, StartsWithoutNativeVlan) {
  Quarn::Ptr<Bridging::SwitchIntfConfig> config = new Bridging::SwitchIntfConfig(Velo::IntfId("Ethernet1"));
  EXPECT_EQ(config->intfId(), Velo::IntfId("Ethernet1"));
  EXPECT_EQ(config->nativeVlan(), 0u);
}

TEST(SwitchIntfConfigTest, NativeVlanIsNotifiesOnlyOnChange) {
  Quarn::Ptr<Bridging::SwitchIntfConfig> config = new Bridging::SwitchIntfConfig(Velo::IntfId("Ethernet1"));
  testing::StrictMock<MockNotifiee> notifiee;
  notifiee.notifierIs(config.ptr());

  EXPECT_CALL(notifiee, onNativeVlan()).Times(2);
  config->nativeVlanIs(10);
  config->nativeVlanIs(10);
  EXPECT_EQ(config->nativeVlan(), 10u);
  config->nativeVlanIs(0);
  EXPECT_EQ(config->nativeVlan(), 0u);
}

}  // namespace
