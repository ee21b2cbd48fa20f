#include "agent/ServiceNotifier.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/NotifySocket.h"
#include "support/ScopedEnv.h"

namespace MrpTest {
namespace {

using Mrp::MrpApplication;
using MrpCli::ServiceNotifier;

struct Status {
  std::vector<MrpApplication> applications;
  std::vector<std::string> ports;
  std::string text;
};

class ServiceStatusTest : public ::testing::TestWithParam<Status> {};

TEST_P(ServiceStatusTest, NamesTheApplicationsAndThePorts) {
  EXPECT_EQ(ServiceNotifier::statusText(GetParam().applications, GetParam().ports), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Agents, ServiceStatusTest,
    ::testing::Values(Status{{MrpApplication::mvrp, MrpApplication::msrp}, {"eth1", "eth2"},
                             "running mvrp, msrp on eth1, eth2"},
                      Status{{MrpApplication::msrp}, {"eth0"}, "running msrp on eth0"}));

TEST(ServiceNotifierTest, ReadyIsSaidOnceWithTheStatus) {
  const NotifySocket manager;
  ServiceNotifier notifier;
  notifier.doReady("running mvrp on eth1");
  EXPECT_EQ(manager.next(), "READY=1\nSTATUS=running mvrp on eth1");
  notifier.doReady("running mvrp on eth1");
  EXPECT_EQ(manager.next(), std::nullopt);
}

TEST(ServiceNotifierTest, StoppingIsSaid) {
  const NotifySocket manager;
  ServiceNotifier().doStopping();
  EXPECT_EQ(manager.next(), "STOPPING=1");
}

TEST(ServiceNotifierTest, WithoutANotifySocketNothingIsSent) {
  const NotifySocket manager;
  const ScopedEnv outsideAService("NOTIFY_SOCKET", std::nullopt);
  ServiceNotifier notifier;
  notifier.doReady("running mvrp on eth1");
  notifier.doStopping();
  EXPECT_EQ(manager.next(), std::nullopt);
}

}  // namespace
}  // namespace MrpTest
