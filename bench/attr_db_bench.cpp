// The attribute database at scale: adding, finding and deleting 100,000
// registrations (10 ports x 10,000 MSRP Talker streams), and the memory one
// stored registration costs.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "HeapBytes.h"
#include "MrpSm/MrpSm.h"
#include "quarn/ClockScope.h"
#include "quarn/NboAttrLog.h"
#include "support/EngineBuilder.h"

namespace {

constexpr int kPorts = 10;
constexpr std::uint64_t kStreamsPerPort = 10000;
constexpr std::int64_t kAttributes = kPorts * kStreamsPerPort;
constexpr std::uint8_t kTalkerAdvertise = 1;

// An active MSRP engine on a simulated clock, without an attribute log
// output (so reviews are never held back), and the registrations to work on.
class Bench {
 public:
  Bench() {
    Quarn::NboAttrLog::outputDelAll();
    engine_ = MrpTest::EngineBuilder(Mrp::MrpApplication::msrp).mrpLib(mrpLib_).build();
    for (int p = 0; p < kPorts; ++p) {
      const Velo::IntfId intfId("Ethernet" + std::to_string(p + 1));
      for (std::uint64_t s = 0; s < kStreamsPerPort; ++s) attributes_.push_back({intfId, kTalkerAdvertise, s});
    }
  }

  Mrp::MrpSm& engine() { return *engine_; }
  const std::vector<Mrp::MrpAttribute>& attributes() const { return attributes_; }

  // Declares every registration from the transmit field, as the applicant does.
  void addAll() {
    Mrp::MrpParseContext& context = *engine_->parseContext();
    for (const Mrp::MrpAttribute& a : attributes_) {
      context.intfIdIs(a.intfId);
      context.attributeTypeIs(a.attributeType);
      context.attributeKeyIs(a.attributeKey);
      mrpLib_->msrpTalkerAdvertiseTx().streamIdIs(a.attributeKey);
      engine_->mrpAddAttrToDatabase(a.intfId, a.attributeType, a.attributeKey, true);
    }
  }
  void deleteAll() {
    Mrp::MrpParseContext& context = *engine_->parseContext();
    for (const Mrp::MrpAttribute& a : attributes_) {
      context.intfIdIs(a.intfId);
      context.attributeTypeIs(a.attributeType);
      context.attributeKeyIs(a.attributeKey);
      engine_->mrpDeleteAttrFromDatabase();
    }
  }
  // Runs the pending review; the log never clogs, so one review commits all.
  void review() { clock_->advance(0.1); }

 private:
  Quarn::Ptr<Quarn::SimClock> clock_ = new Quarn::SimClock;
  Quarn::System::ClockScope clockScope_{clock_};
  Quarn::Ptr<Mrp::MrpLib> mrpLib_ = Mrp::mrpLibFactory();
  Quarn::Ptr<Mrp::MrpSm> engine_;
  std::vector<Mrp::MrpAttribute> attributes_;
};

// Reported as attributes per second of CPU time.
void perAttribute(benchmark::State& state) { state.SetItemsProcessed(state.iterations() * kAttributes); }

// Requesting 100,000 additions (pending entries, index) and committing them.
void BM_AddAndCommit(benchmark::State& state) {
  double pendingBytes = 0;
  double storedBytes = 0;
  for (auto _ : state) {
    state.PauseTiming();
    auto bench = std::make_unique<Bench>();
    const std::size_t before = MrpBench::liveHeapBytes;
    state.ResumeTiming();
    bench->addAll();
    state.PauseTiming();
    pendingBytes = static_cast<double>(MrpBench::liveHeapBytes - before) / kAttributes;
    state.ResumeTiming();
    bench->review();
    state.PauseTiming();
    storedBytes = static_cast<double>(MrpBench::liveHeapBytes - before) / kAttributes;
    if (!bench->engine().attributeStore().addPendingAttrs().empty()) state.SkipWithError("additions left uncommitted");
    bench.reset();
    state.ResumeTiming();
  }
  perAttribute(state);
  state.counters["bytes_per_pending_addition"] = pendingBytes;
  state.counters["bytes_per_stored_registration"] = storedBytes;
}
BENCHMARK(BM_AddAndCommit)->Unit(benchmark::kMillisecond);

// The same additions without the commit: the cost a caller sees.
void BM_AddRequest(benchmark::State& state) {
  for (auto _ : state) {
    state.PauseTiming();
    auto bench = std::make_unique<Bench>();
    state.ResumeTiming();
    bench->addAll();
    state.PauseTiming();
    bench.reset();
    state.ResumeTiming();
  }
  perAttribute(state);
}
BENCHMARK(BM_AddRequest)->Unit(benchmark::kMillisecond);

// Looking up each of 100,000 stored registrations.
void BM_Find(benchmark::State& state) {
  Bench bench;
  bench.addAll();
  bench.review();
  for (auto _ : state) {
    for (const Mrp::MrpAttribute& a : bench.attributes()) {
      auto entry = bench.engine().mrpGetAttrFromDatabase(a.intfId, a.attributeType, a.attributeKey, true);
      benchmark::DoNotOptimize(entry);
    }
  }
  perAttribute(state);
}
BENCHMARK(BM_Find)->Unit(benchmark::kMillisecond);

// Requesting the deletion of 100,000 stored registrations and committing it.
void BM_DeleteAndCommit(benchmark::State& state) {
  for (auto _ : state) {
    state.PauseTiming();
    auto bench = std::make_unique<Bench>();
    bench->addAll();
    bench->review();
    state.ResumeTiming();
    bench->deleteAll();
    bench->review();
    state.PauseTiming();
    if (!bench->engine().attributeStore().mrpAttrIters().empty()) state.SkipWithError("deletions left uncommitted");
    bench.reset();
    state.ResumeTiming();
  }
  perAttribute(state);
}
BENCHMARK(BM_DeleteAndCommit)->Unit(benchmark::kMillisecond);

}  // namespace
