// The agent's view of its Linux interfaces, in a network namespace of the
// test's own.

#include "agent/PortWatcher.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "support/NetNamespace.h"

namespace MrpTest {
namespace {

using MrpCli::PortWatcher;
using State = PortWatcher::State;

class PortWatcherTest : public ::testing::Test, public PortWatcher::Observer {
 protected:
  void SetUp() override {
    MRP_REQUIRE_NET_NAMESPACE(ns);
    ASSERT_TRUE(ns.vethAdd("v1", "w1")) << ns.error();
    watcher = std::make_unique<PortWatcher>(loop, std::vector<std::string>{"v1", "v2"}, this);
    watcher->doRefresh();
  }

  void onPortState(const std::string& port, State state) override {
    reports.push_back(port + " " + MrpCli::portStateName(state));
  }

  // Runs the loop, each wait bounded, until `port` is reported `state` or
  // about five seconds have passed.
  bool reported(const std::string& port, State state) {
    for (int i = 0; i < 100 && watcher->state(port) != state; ++i) loop->runOnce(0.05);
    return watcher->state(port) == state;
  }

  NetNamespace ns;
  Quarn::Ptr<Quarn::EventLoop> loop = Quarn::EventLoop::realLoopNew();
  std::vector<std::string> reports;
  std::unique_ptr<PortWatcher> watcher;
};

TEST_F(PortWatcherTest, TheFirstLookReportsEveryPort) {
  EXPECT_THAT(reports, ::testing::ElementsAre("v1 up", "v2 absent"));
  reports.clear();
  watcher->doRefresh();
  EXPECT_TRUE(reports.empty()) << "only changes after the first look";
}

TEST_F(PortWatcherTest, AnInterfaceMadeLaterIsReportedWhenItComesUp) {
  ASSERT_TRUE(ns.ip("link add v2 type veth peer name w2"));
  ASSERT_TRUE(reported("v2", State::down));
  ASSERT_TRUE(ns.ip("link set w2 up") && ns.ip("link set v2 up"));
  EXPECT_TRUE(reported("v2", State::up));
  EXPECT_THAT(reports, ::testing::ElementsAre("v1 up", "v2 absent", "v2 down", "v2 up"));
}

TEST_F(PortWatcherTest, APortIsDownWhenSetDownOrWhenItsCarrierGoes) {
  ASSERT_TRUE(ns.ip("link set v1 down"));
  EXPECT_TRUE(reported("v1", State::down));
  ASSERT_TRUE(ns.ip("link set v1 up"));
  EXPECT_TRUE(reported("v1", State::up));
  ASSERT_TRUE(ns.ip("link set w1 down"));
  EXPECT_TRUE(reported("v1", State::down)) << "the peer's end went down";
}

TEST_F(PortWatcherTest, ADeletedInterfaceIsAbsent) {
  ASSERT_TRUE(ns.ip("link del v1"));
  EXPECT_TRUE(reported("v1", State::absent));
}

TEST_F(PortWatcherTest, AnInterfaceMadeAgainUnderTheSameNameBetweenTwoLooksIsReportedGoneFirst) {
  ASSERT_TRUE(ns.ip("link del v1"));
  ASSERT_TRUE(ns.vethAdd("v1", "w1"));
  reports.clear();
  watcher->doRefresh();
  EXPECT_THAT(reports, ::testing::ElementsAre("v1 absent", "v1 up"));
}

}  // namespace
}  // namespace MrpTest
