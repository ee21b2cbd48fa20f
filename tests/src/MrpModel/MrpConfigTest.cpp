#include "MrpModel/MrpConfig.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace {

using Mrp::MrpConfig;

// Writes each notification as a line, e.g. "onIntfLeaveTime Ethernet1".
class RecordingNotifiee : public MrpConfig::Notifiee {
 public:
  void onLeaveTime() override { seen.push_back("onLeaveTime"); }
  void onIntfLeaveTime(const Velo::IntfId& id) override { seen.push_back("onIntfLeaveTime " + id.name()); }
  void onLeaveAllTime() override { seen.push_back("onLeaveAllTime"); }
  void onIntfLeaveAllTime(const Velo::IntfId& id) override { seen.push_back("onIntfLeaveAllTime " + id.name()); }
  void onTxLeaveAllExpiryTime() override { seen.push_back("onTxLeaveAllExpiryTime"); }
  void onMrpFlooding() override { seen.push_back("onMrpFlooding"); }
  void onTimersEnabled() override { seen.push_back("onTimersEnabled"); }

  std::vector<std::string> seen;
};

struct NotificationCase {
  const char* name;
  std::function<void(MrpConfig&)> change;
  const char* expected;
};

class MrpConfigNotificationTest : public ::testing::TestWithParam<NotificationCase> {};

TEST_P(MrpConfigNotificationTest, ChangeNotifiesOnceAndRepeatingItNotifiesNothing) {
  Quarn::Ptr<MrpConfig> config = new MrpConfig;
  RecordingNotifiee notifiee;
  notifiee.notifierIs(config.ptr());
  GetParam().change(*config);
  EXPECT_EQ(notifiee.seen, std::vector<std::string>{GetParam().expected});
  GetParam().change(*config);
  EXPECT_EQ(notifiee.seen.size(), 1u) << "an unchanged value notifies nothing";
}

const Velo::IntfId kEth1("Ethernet1");

INSTANTIATE_TEST_SUITE_P(
    Fields, MrpConfigNotificationTest,
    ::testing::Values(
        NotificationCase{"leaveTime", [](MrpConfig& c) { c.leaveTimeIs(1.0); }, "onLeaveTime"},
        NotificationCase{"intfLeaveTime", [](MrpConfig& c) { c.intfLeaveTimeIs(kEth1, 0.8); },
                         "onIntfLeaveTime Ethernet1"},
        NotificationCase{"leaveAllTime", [](MrpConfig& c) { c.leaveAllTimeIs(15.0); }, "onLeaveAllTime"},
        NotificationCase{"intfLeaveAllTime", [](MrpConfig& c) { c.intfLeaveAllTimeIs(kEth1, 20.0); },
                         "onIntfLeaveAllTime Ethernet1"},
        NotificationCase{"txLeaveAllExpiryTime", [](MrpConfig& c) { c.txLeaveAllExpiryTimeIs(2.0); },
                         "onTxLeaveAllExpiryTime"},
        NotificationCase{"mrpFlooding", [](MrpConfig& c) { c.mrpFloodingIs(true); }, "onMrpFlooding"},
        NotificationCase{"timersEnabled", [](MrpConfig& c) { c.timersEnabledIs(false); }, "onTimersEnabled"}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(MrpConfigTest, DefaultsAreTheStandardTimerValues) {
  Quarn::Ptr<MrpConfig> config = new MrpConfig;
  EXPECT_EQ(config->leaveTime(), 0.6);
  EXPECT_EQ(config->leaveAllTime(), 10.0);
  EXPECT_EQ(config->txLeaveAllExpiryTime(), 0.6);
  EXPECT_FALSE(config->mrpFlooding());
  EXPECT_TRUE(config->timersEnabled());
  EXPECT_FALSE(config->intfLeaveTime(kEth1));
  EXPECT_FALSE(config->intfLeaveAllTime(kEth1));
}

TEST(MrpConfigTest, PerPortTimesAreKeptPerPortAndDeletionNotifies) {
  Quarn::Ptr<MrpConfig> config = new MrpConfig;
  RecordingNotifiee notifiee;
  notifiee.notifierIs(config.ptr());
  const Velo::IntfId eth2("Ethernet2");
  config->intfLeaveAllTimeIs(kEth1, 12.0);
  config->intfLeaveAllTimeIs(eth2, 14.0);
  config->intfLeaveAllTimeIs(kEth1, 13.0);
  EXPECT_EQ(config->intfLeaveAllTime(kEth1), 13.0);
  EXPECT_EQ(config->intfLeaveAllTime(eth2), 14.0);
  config->intfLeaveAllTimeDel(eth2);
  config->intfLeaveAllTimeDel(eth2);
  config->intfLeaveTimeIs(eth2, 0.7);
  config->intfLeaveTimeDel(eth2);
  EXPECT_FALSE(config->intfLeaveAllTime(eth2));
  EXPECT_EQ(notifiee.seen, (std::vector<std::string>{"onIntfLeaveAllTime Ethernet1", "onIntfLeaveAllTime Ethernet2",
                                                     "onIntfLeaveAllTime Ethernet1", "onIntfLeaveAllTime Ethernet2",
                                                     "onIntfLeaveTime Ethernet2", "onIntfLeaveTime Ethernet2"}));
}

TEST(MrpConfigTest, DetachedNotifieeHearsNothing) {
  Quarn::Ptr<MrpConfig> config = new MrpConfig;
  RecordingNotifiee notifiee;
  notifiee.notifierIs(config.ptr());
  notifiee.notifierIs(nullptr);
  config->mrpFloodingIs(true);
  EXPECT_TRUE(notifiee.seen.empty());
}

}  // namespace
