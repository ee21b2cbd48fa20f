#include "bridging/TopologyConfig.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using Bridging::Topology::Config;
using Bridging::Topology::Topology;

class MockNotifiee : public Config::Notifiee {
 public:
  MOCK_METHOD(void, onTopology, (const std::string&), (override));
  MOCK_METHOD(void, onVlanTopology, (std::uint16_t), (override));
};

TEST(TopologyConfigTest, TopologyIsNotifiesOnNewOrRenumberedTopology) {
  Quarn::Ptr<Config> config = new Config;
  testing::StrictMock<MockNotifiee> notifiee;
  notifiee.notifierIs(config.ptr());

  EXPECT_CALL(notifiee, onTopology("red")).Times(2);
  Quarn::Ptr<Topology> red = config->topologyIs("red", 1);
  EXPECT_EQ(red->name(), "red");
  EXPECT_EQ(red->number(), 1u);
  EXPECT_EQ(config->topologyIs("red", 1), red);

  Quarn::Ptr<Topology> renumbered = config->topologyIs("red", 2);
  EXPECT_EQ(renumbered->number(), 2u);
  EXPECT_EQ(config->topology("red"), renumbered);
  EXPECT_EQ(config->topologyCount(), 1u);
}

TEST(TopologyConfigTest, TopologyDelRemovesAndNotifiesOnce) {
  Quarn::Ptr<Config> config = new Config;
  config->topologyIs("blue", 1);
  config->topologyIs("red", 2);
  testing::StrictMock<MockNotifiee> notifiee;
  notifiee.notifierIs(config.ptr());

  EXPECT_CALL(notifiee, onTopology("blue"));
  config->topologyDel(config->topologies().begin()->first);
  config->topologyDel("blue");
  EXPECT_EQ(config->topology("blue"), nullptr);
  ASSERT_EQ(config->topologyCount(), 1u);
  EXPECT_EQ(config->topologies().begin()->first, "red");
}

TEST(TopologyConfigTest, VlanTopologyNotifiesOnSetChangeAndRemoval) {
  Quarn::Ptr<Config> config = new Config;
  testing::StrictMock<MockNotifiee> notifiee;
  notifiee.notifierIs(config.ptr());
  EXPECT_EQ(config->vlanTopology(10), std::nullopt);

  EXPECT_CALL(notifiee, onVlanTopology(10)).Times(3);
  config->vlanTopologyIs(10, "red");
  config->vlanTopologyIs(10, "red");
  EXPECT_EQ(config->vlanTopology(10), "red");
  config->vlanTopologyIs(10, "blue");
  EXPECT_EQ(config->vlanTopology(10), "blue");
  EXPECT_EQ(config->vlanTopologyCount(), 1u);
  EXPECT_EQ(config->vlanTopologies().at(10), "blue");

  config->vlanTopologyDel(10);
  config->vlanTopologyDel(10);
  EXPECT_EQ(config->vlanTopology(10), std::nullopt);
  EXPECT_EQ(config->vlanTopologyCount(), 0u);
}

TEST(TopologyConfigTest, TopologyOfVlanFollowsTheVlanToItsTopology) {
  Quarn::Ptr<Config> config = new Config;
  Quarn::Ptr<Topology> red = config->topologyIs("red", 1);
  config->vlanTopologyIs(10, "red");
  config->vlanTopologyIs(20, "green");
  EXPECT_EQ(config->topologyOfVlan(10), red);
  EXPECT_EQ(config->topologyOfVlan(20), nullptr);  // unknown topology
  EXPECT_EQ(config->topologyOfVlan(30), nullptr);  // VLAN in none
}

}  // namespace
