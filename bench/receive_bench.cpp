// Receiving an MVRP frame that declares N VLANs with JoinIn (N = 500, 1000,
// 2000, 4094), end to end on a port: the frame into the port's in-memory
// socket, the receive checks, parsing, the applicant and registrar of every
// VLAN, the join indications and the queued database commits. Beside it, in
// the same run, the parse alone and a bare loop that only unpacks the frame's
// three-packed octets. items_per_second counts VLANs; allocations_per_frame
// counts calls of operator new in the timed part.

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "HeapBytes.h"
#include "ParseLoop.h"
#include "UnpackLoop.h"
#include "WiredEngine.h"
#include "support/EngineBuilder.h"
#include "support/MrpduFrames.h"

namespace {

constexpr std::uint8_t kJoinIn = 1;

// The argument of each benchmark: how many VLANs the frame declares.
void vlanCounts(benchmark::internal::Benchmark* bench) {
  for (int vlans : {500, 1000, 2000, 4094}) bench->Arg(vlans);
  bench->Unit(benchmark::kMicrosecond);
}

std::vector<std::uint8_t> vlansPdu(std::uint16_t vlans) { return MrpTest::Frames::mvrpVlanRunPdu(1, vlans, kJoinIn); }
std::uint16_t vlansOf(const benchmark::State& state) { return static_cast<std::uint16_t>(state.range(0)); }

// An agent that only counts the joins it hears.
class CountingMrpLib : public Mrp::MrpLib {
 public:
  bool mrpJoinIndication(const Mrp::MrpParameters&) override {
    ++joins;
    return false;
  }
  std::uint64_t joins = 0;
};

// An MVRP engine on one wired port, and the frame of `vlans` VLANs to give it.
class ReceiveBench {
 public:
  explicit ReceiveBench(std::uint16_t vlans)
      : vlans_(vlans), wired_(Mrp::MrpApplication::mvrp, lib_, 1), frame_(wired_.frameOf(vlansPdu(vlans))) {}

  void receive() { wired_.receive(0, *frame_); }
  // Runs the clock past the add review, which commits the queued additions.
  void commit() { wired_.clock().advance(1.0); }

  std::uint64_t joins() const { return lib_->joins; }
  Mrp::MrpSm& engine() const { return wired_.engine(); }
  bool allRegistered() const {
    for (std::uint16_t vlan = 1; vlan <= vlans_; ++vlan) {
      auto entry = engine().mrpGetAttrFromDatabase(wired_.port(0), 1, vlan, true);
      if (!entry || entry->registrarState() != Mrp::MrpRegistrarState::in) return false;
    }
    return true;
  }

 private:
  std::uint16_t vlans_;
  Quarn::Ptr<CountingMrpLib> lib_ = new CountingMrpLib;
  MrpBench::WiredEngine wired_;
  Quarn::Ptr<Velo::Pkt> frame_;
};

void perVlan(benchmark::State& state) { state.SetItemsProcessed(state.iterations() * state.range(0)); }

void allocationsPerFrame(benchmark::State& state, std::size_t allocations) {
  state.counters["allocations_per_frame"] =
      benchmark::Counter(static_cast<double>(allocations), benchmark::Counter::kAvgIterations);
}

// The first reception: N new registrations, indicated, their additions
// queued. A fresh engine per iteration, made and dropped outside the timing.
void BM_ReceiveFirstTime(benchmark::State& state) {
  std::size_t allocations = 0;
  for (auto _ : state) {
    state.PauseTiming();
    auto bench = std::make_unique<ReceiveBench>(vlansOf(state));
    const std::size_t before = MrpBench::heapAllocations;
    state.ResumeTiming();
    bench->receive();
    state.PauseTiming();
    allocations += MrpBench::heapAllocations - before;
    if (bench->joins() != vlansOf(state)) state.SkipWithError("not every VLAN was indicated");
    if (bench->engine().attributeStore().addPendingAttrs().size() != vlansOf(state)) state.SkipWithError("additions not queued");
    bench.reset();
    state.ResumeTiming();
  }
  perVlan(state);
  allocationsPerFrame(state, allocations);
}
BENCHMARK(BM_ReceiveFirstTime)->Apply(vlanCounts);

// The steady state: every VLAN registered and committed already; the frame
// repeats them (no indication, nothing to commit).
void BM_ReceiveRegistered(benchmark::State& state) {
  ReceiveBench bench(vlansOf(state));
  bench.receive();
  bench.commit();
  if (!bench.allRegistered() || !bench.engine().attributeStore().addPendingAttrs().empty()) {
    state.SkipWithError("registrations not committed");
  }
  const std::size_t before = MrpBench::heapAllocations;
  for (auto _ : state) bench.receive();
  allocationsPerFrame(state, MrpBench::heapAllocations - before);
  if (bench.joins() != vlansOf(state)) state.SkipWithError("repeated VLANs were indicated again");
  perVlan(state);
}
BENCHMARK(BM_ReceiveRegistered)->Apply(vlanCounts);

// Baseline: parsing the same MRPDU and collecting its values, no more.
void BM_ParseOnly(benchmark::State& state) {
  Quarn::Ptr<Mrp::MrpSm> engine = MrpTest::EngineBuilder(Mrp::MrpApplication::mvrp).build();
  const std::vector<std::uint8_t> pdu = vlansPdu(vlansOf(state));
  const std::size_t before = MrpBench::heapAllocations;
  MrpBench::parseLoop(state, *engine, pdu, vlansOf(state));
  allocationsPerFrame(state, MrpBench::heapAllocations - before);
}
BENCHMARK(BM_ParseOnly)->Apply(vlanCounts);

// Baseline: the least any receiver does, unpacking the three events of each
// packed octet of the same MRPDU and counting them by event.
void BM_UnpackOnly(benchmark::State& state) {
  MrpBench::unpackLoop(state, vlansPdu(vlansOf(state)), vlansOf(state));
}
BENCHMARK(BM_UnpackOnly)->Apply(vlanCounts);

}  // namespace
