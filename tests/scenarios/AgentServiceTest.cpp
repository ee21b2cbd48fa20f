// `mrp agent` as a service: with NOTIFY_SOCKET set, as a service manager
// starts it, it says READY=1 once it can be used and STOPPING=1 when it is
// told to stop; on a real port in a network namespace of the test's own.

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <signal.h>

#include <string>

#include "support/AgentProcess.h"
#include "support/NetNamespace.h"
#include "support/NotifySocket.h"

namespace MrpTest {
namespace {

// How long a start or a stop may take.
constexpr double kSeconds = 5;

TEST(AgentServiceTest, IsReadyWithItsPortsOpenAndTheControlSocketAnsweringAndSaysWhenItStops) {
  NetNamespace ns;
  MRP_REQUIRE_NET_NAMESPACE(ns);
  ASSERT_TRUE(ns.vethAdd("s0", "s1")) << ns.error();
  const NotifySocket manager;
  AgentProcess agent({"s0"}, "", "{}", ns.name());

  EXPECT_EQ(manager.next(kSeconds), "READY=1\nSTATUS=running mvrp, msrp on s0") << agent.process().err();
  // Ready means usable: asked once, the agent answers, each worker's socket open.
  const MrpRun ports = agent.ctl({"ports", "--json"});
  ASSERT_EQ(ports.status, 0) << ports.err;
  const auto answer = nlohmann::json::parse(ports.out);
  EXPECT_EQ(answer["ports"][0]["sockets"], nlohmann::json({{"mvrp", "open"}, {"msrp", "open"}})) << ports.out;

  agent.process().signal(SIGTERM);
  EXPECT_EQ(manager.next(kSeconds), "STOPPING=1");
  EXPECT_EQ(agent.process().exitStatus(kSeconds), 0) << agent.process().err();
  EXPECT_EQ(manager.next(), std::nullopt);
}

}  // namespace
}  // namespace MrpTest
