#pragma once

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>
#include <prometheus/collectable.h>
#include <prometheus/exposer.h>
#include <prometheus/metric_family.h>

#include "quarn/EventLoop.h"

namespace MrpCli {

// Serves the agent's counters as Prometheus text on http://ADDR:PORT/metrics.
// The web server answers on threads of its own; a scrape hands its question
// to the loop (through an eventfd), where `counters` asks the workers, and
// waits for the answer, at most kScrapeSeconds.
class MetricsServer {
 public:
  static constexpr double kScrapeSeconds = 5;
  // Runs on the loop; returns what mergedCounters() gives as its result.
  using Counters = std::function<nlohmann::ordered_json()>;

  // `address` is "ADDR:PORT" (an IPv6 address in brackets). Throws
  // std::runtime_error saying why it cannot listen there.
  MetricsServer(Quarn::Ptr<Quarn::EventLoop> loop, const std::string& address, Counters counters);
  ~MetricsServer();
  MetricsServer(const MetricsServer&) = delete;
  MetricsServer& operator=(const MetricsServer&) = delete;

  // The port it listens on (the one asked for, or the one the kernel chose for port 0).
  int port() const;

 private:
  class Exposition : public prometheus::Collectable {
   public:
    explicit Exposition(MetricsServer* owner) : owner_(owner) {}
    std::vector<prometheus::MetricFamily> Collect() const override { return owner_->scrape(); }

   private:
    MetricsServer* owner_;
  };

  class WakeReactor : public Quarn::EventLoop::FdNotifiee {
   public:
    explicit WakeReactor(MetricsServer* owner) : owner_(owner) {}
    void onReadable() override { owner_->handleWake(); }

   private:
    MetricsServer* owner_;
  };

  // On a web server thread.
  std::vector<prometheus::MetricFamily> scrape();
  // On the loop.
  void handleWake();

  Quarn::Ptr<Quarn::EventLoop> loop_;
  Counters counters_;
  int wakeFd_ = -1;
  WakeReactor wakeReactor_;
  // One scrape at a time.
  std::mutex scrapeMutex_;
  // Guards what follows, between a scrape and the loop.
  std::mutex mutex_;
  std::condition_variable answered_;
  bool asked_ = false;
  bool stopping_ = false;
  std::optional<nlohmann::ordered_json> answer_;
  std::shared_ptr<Exposition> exposition_;
  // Last: its threads stop first.
  std::unique_ptr<prometheus::Exposer> exposer_;
};

}  // namespace MrpCli
