#include "agent/MetricsServer.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <stdexcept>
#include <system_error>

#include "agent/MetricsExposition.h"

namespace MrpCli {

MetricsServer::MetricsServer(Quarn::Ptr<Quarn::EventLoop> loop, const std::string& address, Counters counters)
    : loop_(std::move(loop)),
      counters_(std::move(counters)),
      wakeFd_(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)),
      wakeReactor_(this),
      exposition_(std::make_shared<Exposition>(this)) {
  if (wakeFd_ < 0) throw std::system_error(errno, std::generic_category(), "metrics: eventfd");
  loop_->fdNotifieeIs(wakeFd_, &wakeReactor_);
  try {
    exposer_ = std::make_unique<prometheus::Exposer>(address, 1);
  } catch (const std::exception&) {
    loop_->fdNotifieeDel(wakeFd_);
    close(wakeFd_);
    throw std::runtime_error("--metrics " + address + ": cannot listen there (address in use, or not this host's)");
  }
  exposer_->RegisterCollectable(exposition_);
}

MetricsServer::~MetricsServer() {
  {
    const std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  answered_.notify_all();
  exposer_.reset();
  loop_->fdNotifieeDel(wakeFd_);
  close(wakeFd_);
}

int MetricsServer::port() const {
  const std::vector<int> ports = exposer_->GetListeningPorts();
  return ports.empty() ? 0 : ports.front();
}

std::vector<prometheus::MetricFamily> MetricsServer::scrape() {
  const std::lock_guard scrapeLock(scrapeMutex_);
  std::unique_lock lock(mutex_);
  if (stopping_) return {};
  asked_ = true;
  answer_.reset();
  const std::uint64_t one = 1;
  if (write(wakeFd_, &one, sizeof one) != sizeof one) return {};
  const auto limit = std::chrono::duration<double>(kScrapeSeconds);
  answered_.wait_for(lock, limit, [this] { return answer_.has_value() || stopping_; });
  asked_ = false;
  if (!answer_) return {};
  return metricFamiliesOf(*std::exchange(answer_, std::nullopt));
}

void MetricsServer::handleWake() {
  std::uint64_t count = 0;
  if (read(wakeFd_, &count, sizeof count) != sizeof count) return;
  {
    const std::lock_guard lock(mutex_);
    if (!asked_) return;  // a scrape that gave up
  }
  nlohmann::ordered_json counters = counters_();
  {
    const std::lock_guard lock(mutex_);
    if (asked_) answer_ = std::move(counters);
  }
  answered_.notify_all();
}

}  // namespace MrpCli
