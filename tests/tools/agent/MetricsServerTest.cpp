#include "agent/MetricsServer.h"

#include <gtest/gtest.h>

#include <future>
#include <optional>
#include <stdexcept>
#include <string>

#include "support/HttpGet.h"

namespace {

using Json = nlohmann::ordered_json;

const Json kCounters = {{"ports", Json::array()},
                        {"applications", Json::array({{{"app", "mvrp"}, {"workerRestarts", 2}}})}};

// A scrape on a thread of its own while the loop runs here, as the agent's
// supervisor runs it; the loop runs until the scrape is answered.
std::optional<std::string> scrapeWhileLooping(Quarn::EventLoop& loop, int port) {
  auto body = std::async(std::launch::async, [port] { return MrpTest::httpGet(static_cast<std::uint16_t>(port), "/metrics"); });
  while (body.wait_for(std::chrono::seconds(0)) != std::future_status::ready) loop.runOnce(0.01);
  return body.get();
}

TEST(MetricsServerTest, AScrapeIsAnsweredByTheLoopWithTheCountersOfThatMoment) {
  Quarn::Ptr<Quarn::EventLoop> loop = Quarn::EventLoop::realLoopNew();
  unsigned asked = 0;
  MrpCli::MetricsServer server(loop, "127.0.0.1:0", [&asked] {
    ++asked;
    Json counters = kCounters;
    counters["applications"][0]["workerRestarts"] = asked;
    return counters;
  });
  ASSERT_GT(server.port(), 0);
  for (unsigned scrape = 1; scrape <= 2; ++scrape) {
    const std::optional<std::string> body = scrapeWhileLooping(*loop, server.port());
    ASSERT_TRUE(body);
    EXPECT_NE(body->find("mrp_worker_restarts_total{app=\"mvrp\"} " + std::to_string(scrape) + "\n"),
              std::string::npos)
        << *body;
  }
  EXPECT_EQ(asked, 2u);
}

TEST(MetricsServerTest, AnAddressInUseIsRefusedWithTheReason) {
  Quarn::Ptr<Quarn::EventLoop> loop = Quarn::EventLoop::realLoopNew();
  MrpCli::MetricsServer first(loop, "127.0.0.1:0", [] { return kCounters; });
  const std::string taken = "127.0.0.1:" + std::to_string(first.port());
  try {
    MrpCli::MetricsServer second(loop, taken, [] { return kCounters; });
    FAIL() << "a second server listens on " << taken;
  } catch (const std::runtime_error& error) {
    EXPECT_EQ(std::string(error.what()), "--metrics " + taken + ": cannot listen there (address in use, or not this host's)");
  }
  EXPECT_EQ(loop->fdCount(), 1u) << "the refused server's eventfd is no longer watched";
}

}  // namespace
