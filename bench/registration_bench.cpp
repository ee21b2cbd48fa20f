// The memory of 100,000 registrations (48 ports x 2084 MVRP VLANs), each
// registered from a received JoinIn and committed, and then each left by a
// received Lv, which keeps the registration (LV) and gives it a leave
// machine of its own with its timer. Heap bytes are counted by the
// program's operator new (as malloc_usable_size reports them); the bytes of
// a registration alone, measured in the same run, are the baseline.
// items_per_second counts registrations.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <memory>

#include "HeapBytes.h"
#include "WiredEngine.h"
#include "support/MrpduFrames.h"

namespace {

constexpr std::uint8_t kJoinIn = 1, kLv = 5;

// The arguments of each benchmark: ports, and VLANs per port. 48 x 2084
// makes 100,032 registrations, a switch's ports; fewer show how the costs
// scale.
void portsAndVlans(benchmark::internal::Benchmark* bench) {
  bench->Args({1, 4000})->Args({5, 4000})->Args({25, 4000})->Args({48, 2084})->Unit(benchmark::kMillisecond);
}

// An MVRP engine with wired ports, and the frames that declare and leave
// VLANs 1..vlansPerPort on each.
class RegistrationBench {
 public:
  explicit RegistrationBench(const benchmark::State& state)
      : ports_(static_cast<int>(state.range(0))),
        vlansPerPort_(static_cast<std::uint16_t>(state.range(1))),
        wired_(Mrp::MrpApplication::mvrp, Mrp::mrpLibFactory(), ports_),
        joinFrame_(wired_.frameOf(MrpTest::Frames::mvrpVlanRunPdu(1, vlansPerPort_, kJoinIn))),
        leaveFrame_(wired_.frameOf(MrpTest::Frames::mvrpVlanRunPdu(1, vlansPerPort_, kLv))) {}

  void receiveJoins() { receiveOnEveryPort(*joinFrame_); }
  void receiveLeaves() { receiveOnEveryPort(*leaveFrame_); }
  // Runs the clock past the add review, which commits the queued additions.
  // Leave timers would fire too: call it before any Lv.
  void commit() { wired_.clock().advance(1.0); }
  // The engine answers a Lv with In; those frames are not the registrations'.
  void sentFramesDrop() { wired_.sentFramesTake(); }

  std::int64_t registrations() const { return std::int64_t{ports_} * vlansPerPort_; }
  double bytesPerRegistration(std::size_t bytes) const { return static_cast<double>(bytes) / registrations(); }
  std::size_t leaveMachines() const { return wired_.engine().registrarSm()->explicitLeaveSms().size(); }
  std::size_t pendingAdditions() const { return wired_.engine().attributeStore().addPendingAttrs().size(); }

 private:
  void receiveOnEveryPort(const Velo::Pkt& frame) {
    for (int p = 0; p < ports_; ++p) wired_.receive(p, frame);
  }

  int ports_;
  std::uint16_t vlansPerPort_;
  MrpBench::WiredEngine wired_;
  Quarn::Ptr<Velo::Pkt> joinFrame_;
  Quarn::Ptr<Velo::Pkt> leaveFrame_;
};

// The registrations (JoinIn received, additions committed): their bytes
// are the baseline. Timed: receiving the JoinIns.
void BM_Register(benchmark::State& state) {
  double registered = 0;
  for (auto _ : state) {
    state.PauseTiming();
    auto bench = std::make_unique<RegistrationBench>(state);
    const std::size_t before = MrpBench::liveHeapBytes;
    state.ResumeTiming();
    bench->receiveJoins();
    state.PauseTiming();
    bench->commit();
    bench->sentFramesDrop();
    if (bench->pendingAdditions() != 0) state.SkipWithError("additions left uncommitted");
    registered = bench->bytesPerRegistration(MrpBench::liveHeapBytes - before);
    bench.reset();
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * state.range(0) * state.range(1));
  state.counters["bytes_per_registration"] = registered;
}
BENCHMARK(BM_Register)->Apply(portsAndVlans);

// The same registrations, each then left by a Lv: registration and leave
// machine together, beside the registration alone of the same iteration.
// Timed: receiving the Lvs.
void BM_RegisterThenLeave(benchmark::State& state) {
  double registered = 0;
  double withLeaveMachine = 0;
  for (auto _ : state) {
    state.PauseTiming();
    auto bench = std::make_unique<RegistrationBench>(state);
    const std::size_t before = MrpBench::liveHeapBytes;
    bench->receiveJoins();
    bench->commit();
    bench->sentFramesDrop();
    registered = bench->bytesPerRegistration(MrpBench::liveHeapBytes - before);
    state.ResumeTiming();
    bench->receiveLeaves();
    state.PauseTiming();
    bench->sentFramesDrop();
    if (bench->leaveMachines() != static_cast<std::size_t>(bench->registrations())) {
      state.SkipWithError("not every registration has its leave machine");
    }
    withLeaveMachine = bench->bytesPerRegistration(MrpBench::liveHeapBytes - before);
    bench.reset();
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * state.range(0) * state.range(1));
  state.counters["bytes_per_registration"] = registered;
  state.counters["bytes_per_registration_with_leave_machine"] = withLeaveMachine;
  state.counters["bytes_per_leave_machine"] = withLeaveMachine - registered;
}
BENCHMARK(BM_RegisterThenLeave)->Apply(portsAndVlans);

}  // namespace
