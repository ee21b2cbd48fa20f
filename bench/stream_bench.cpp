// Stream reservation at scale: a line h1 - sw1 - sw2 - sw3 - h2 of the
// reference agent's bridges with their MSRP engines, on in-memory links of
// 1 Gb/s and a simulated clock; every node runs class A (priority 3) and
// class B (priority 2). h1 declares 150 class B Talker Advertises at once
// (64-octet frames, one per 250 us: 3.392 Mb/s each, 508.8 Mb/s of the
// 750 the class may have) and h2 a Listener Ready for each. Timed, in wall
// time: the 300 declarations and 1.5 s of simulated time, by the end of
// which every stream must be reserved on every hop (h1:e0, sw1:p2, sw2:p2,
// sw3:p2; checked). The network is built and its Domains exchanged before
// the timing, and dropped after it.
//
// The baseline, measured first in the same run, is the same declarations
// with h2's Listeners AskingFailed: every Talker and Listener propagated
// along the line as before, nothing reserved. The ratio is what the
// reservations cost over the propagation.

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "Bridge.h"
#include "quarn/Clock.h"
#include "quarn/ClockScope.h"
#include "quarn/Log.h"
#include "velo/MemPam.h"
#include "velo/PamFactory.h"

namespace {

using MrpAgent::AttributeValue;
using MrpAgent::Bridge;

constexpr unsigned kStreams = 150;
constexpr std::uint64_t kFirstStream = 0x001b210000010001;
constexpr Quarn::Seconds kSettle = 1;  // the Domains registered on every port
constexpr Quarn::Seconds kGoal = 1.5;
constexpr std::size_t kHops = 4;
constexpr unsigned kSeed = 1;

// Counts the reservations the bridges make and the streams they refuse.
class ReservationCounter : public Bridge::Observer {
 public:
  void onJoin(const Bridge&, const std::string&, const AttributeValue&) override {}
  void onLeave(const Bridge&, const std::string&, const AttributeValue&) override {}
  void onForget(const Bridge&, const std::string&, const AttributeValue&, Bridge::ForgetCause) override {}
  void onReservation(const Bridge&, const std::string&, const MrpAgent::ReservationChange& change) override {
    reserved += change.reserved ? 1 : -1;
  }
  void onTalkerFailed(const Bridge&, const std::string&, const Mrp::MsrpTalkerFailedAttribute&) override { ++failed; }
  void onListenerDeclaration(const Bridge&, const std::string&, const Mrp::MsrpListenerAttribute&) override {}

  std::int64_t reserved = 0;
  std::uint64_t failed = 0;
};

Mrp::MsrpTalkerAdvertiseAttribute classBTalker(unsigned n) {
  return Mrp::MsrpTalkerAdvertiseAttribute(
      kFirstStream + n,
      Mrp::DataFrameParameters(
          Velo::EthAddr(0x91, 0xe0, 0xf0, 0, static_cast<std::uint8_t>(n >> 8), static_cast<std::uint8_t>(n)), 2),
      Mrp::Tspec(64, 1), Mrp::PriorityAndRank(2, 1), 1000);
}

// The line, on a simulated clock that is the process's while it lives.
class StreamLine {
 public:
  StreamLine() {
    Quarn::logSinkIs(&logSink_);
    unsetenv("DISABLE_LEAVE_ALL_RANDOMIZATION");
    std::srand(kSeed);
    const std::vector<std::vector<std::string>> ports = {{"e0"}, {"p1", "p2"}, {"p1", "p2"}, {"p1", "p2"}, {"e0"}};
    std::vector<Quarn::Ptr<Velo::MemPamFactory>> factories;
    for (std::size_t i = 0; i < ports.size(); ++i) factories.push_back(new Velo::MemPamFactory);
    // Node i's last port to node i + 1's first.
    for (std::size_t i = 0; i + 1 < ports.size(); ++i) {
      Quarn::Ptr<Velo::MemWire> wire = new Velo::MemWire(
          Velo::IntfId(ports[i].back()), Velo::EthAddr(2, 0, 0, 0, static_cast<std::uint8_t>(i), 2),
          Velo::IntfId(ports[i + 1].front()), Velo::EthAddr(2, 0, 0, 0, static_cast<std::uint8_t>(i + 1), 1), clock_);
      factories[i]->pamIs(wire->a());
      factories[i + 1]->pamIs(wire->b());
      wires_.push_back(wire);
    }
    MrpAgent::BridgeConfig config;
    config.msrpDomains = {Mrp::MsrpDomainAttribute(6, 3, 2), Mrp::MsrpDomainAttribute(5, 2, 2)};
    const std::vector<std::string> names = {"h1", "sw1", "sw2", "sw3", "h2"};
    for (std::size_t i = 0; i < names.size(); ++i) {
      auto& node = nodes_.emplace_back(std::make_unique<Bridge>(
          names[i], std::vector<Mrp::MrpApplication>{Mrp::MrpApplication::msrp}, config, factories[i]));
      for (const std::string& port : ports[i]) node->portIs(port);
      node->observerIs(&counter_);
    }
    clock_->advance(kSettle);
  }
  ~StreamLine() {
    nodes_.clear();
    Quarn::logSinkIs(nullptr);
  }
  StreamLine(const StreamLine&) = delete;
  StreamLine& operator=(const StreamLine&) = delete;

  // h1's Talkers and h2's Listeners, all at once.
  void declare(Mrp::MsrpListenerEvent listener) {
    for (unsigned n = 0; n < kStreams; ++n) {
      nodes_.front()->declare(AttributeValue(classBTalker(n)), "e0");
      nodes_.back()->declare(AttributeValue(Mrp::MsrpListenerAttribute(kFirstStream + n, listener)), "e0");
    }
  }
  void run(Quarn::Seconds seconds) { clock_->advance(seconds); }
  const ReservationCounter& counter() const { return counter_; }

 private:
  Quarn::Ptr<Quarn::SimClock> clock_ = new Quarn::SimClock;
  Quarn::System::ClockScope clockScope_{clock_};
  Quarn::DiscardLogSink logSink_;
  ReservationCounter counter_;
  std::vector<Quarn::Ptr<Velo::MemWire>> wires_;
  std::vector<std::unique_ptr<Bridge>> nodes_;
};

// The baseline's mean wall time per run, once measured.
double baselineSeconds = 0;

// Times the declarations and kGoal of simulated time on a fresh line per
// iteration; returns the mean wall time.
double runLine(benchmark::State& state, Mrp::MsrpListenerEvent listener, std::int64_t reservations) {
  double total = 0;
  for (auto _ : state) {
    StreamLine line;
    const auto start = std::chrono::steady_clock::now();
    line.declare(listener);
    line.run(kGoal);
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    state.SetIterationTime(seconds);
    total += seconds;
    if (line.counter().reserved != reservations || line.counter().failed != 0) {
      state.SkipWithError("not every stream is reserved on every hop as expected");
      break;
    }
  }
  const double mean = total / static_cast<double>(state.iterations());
  state.counters["streams"] = kStreams;
  state.counters["reservations"] = static_cast<double>(reservations);
  if (baselineSeconds > 0 && reservations > 0) state.counters["x_baseline"] = mean / baselineSeconds;
  return mean;
}

// Baseline: the Listeners AskingFailed, nothing reserved.
void BM_StreamsPropagatedBaseline(benchmark::State& state) {
  baselineSeconds = runLine(state, Mrp::MsrpListenerEvent::askingFailed, 0);
}

// 150 class B streams reserved on the four hops.
void BM_StreamsReservedOnEveryHop(benchmark::State& state) {
  runLine(state, Mrp::MsrpListenerEvent::ready, static_cast<std::int64_t>(kStreams * kHops));
}

BENCHMARK(BM_StreamsPropagatedBaseline)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_StreamsReservedOnEveryHop)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
