#include "bridging/Config.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

class MockNotifiee : public Bridging::Config::Notifiee {
 public:
  MOCK_METHOD(void, onSwitchIntfConfig, (const Velo::IntfId&), (override));
};

const Velo::IntfId kEth1("Ethernet1");
const Velo::IntfId kEth2("Ethernet2");

TEST(BridgingConfigTest, SwitchIntfConfigIsCreatesOnceAndNotifies) {
  Quarn::Ptr<Bridging::Config> config = new Bridging::Config;
  testing::StrictMock<MockNotifiee> notifiee;
  notifiee.notifierIs(config.ptr());
  EXPECT_EQ(config->switchIntfConfig(kEth1), nullptr);

  EXPECT_CALL(notifiee, onSwitchIntfConfig(kEth1));
  Quarn::Ptr<Bridging::SwitchIntfConfig> entry = config->switchIntfConfigIs(kEth1);
  ASSERT_NE(entry, nullptr);
  EXPECT_EQ(entry->intfId(), kEth1);
  EXPECT_EQ(config->switchIntfConfigIs(kEth1), entry);
  EXPECT_EQ(config->switchIntfConfig(kEth1), entry);
  EXPECT_EQ(config->switchIntfConfigCount(), 1u);
}

TEST(BridgingConfigTest, SwitchIntfConfigDelRemovesAndNotifiesOnce) {
  Quarn::Ptr<Bridging::Config> config = new Bridging::Config;
  config->switchIntfConfigIs(kEth1);
  config->switchIntfConfigIs(kEth2);
  testing::StrictMock<MockNotifiee> notifiee;
  notifiee.notifierIs(config.ptr());

  EXPECT_CALL(notifiee, onSwitchIntfConfig(kEth1));
  config->switchIntfConfigDel(config->switchIntfConfigs().begin()->first);
  config->switchIntfConfigDel(kEth1);
  EXPECT_EQ(config->switchIntfConfig(kEth1), nullptr);
  ASSERT_EQ(config->switchIntfConfigCount(), 1u);
  EXPECT_EQ(config->switchIntfConfigs().begin()->first, kEth2);
}

}  // namespace
