// Declaring all 4094 VLANs on a port and transmitting them: the agent's
// request per VLAN (mrpSendAttribute with Join), the applicant, the database
// addition, the transmit assembly into the port's first and second packets,
// and the transmit timer's flush, which closes, frames and sends the packets
// on an in-memory wire. Beside it, in the same run, the wire work alone: the
// same two MRPDUs written with the encoder primitives. items_per_second
// counts VLANs; the frames counter is frames sent per iteration.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "WiredEngine.h"
#include "support/FrameBuilder.h"

namespace {

constexpr std::uint16_t kAllVlans = 4094;
constexpr std::uint8_t kVlanType = 1;
constexpr std::uint8_t kJoinIn = 1, kJoinMt = 3;

// An MVRP engine on one wired port.
class TransmitBench {
 public:
  TransmitBench() : wired_(Mrp::MrpApplication::mvrp, Mrp::mrpLibFactory(), 1) {}

  // The agent's Join request for every VLAN on the port.
  void declareAll() {
    Mrp::MrpLib& lib = wired_.lib();
    const Velo::IntfId& port = wired_.port(0);
    for (std::uint16_t vlan = 1; vlan <= kAllVlans; ++vlan) {
      lib.mvrpVlanVectorTx() = Mrp::MvrpVlanAttribute(vlan);
      lib.mrpOutIntfQueueEnq(port);
      lib.mrpSendAttribute({port, kVlanType, kJoinIn});
    }
  }
  // What the transmit timer does every 0.1 s.
  void transmit() { wired_.engine().mrpTransmitTxAttributes(); }
  std::size_t sentFramesTake() { return wired_.sentFramesTake(); }

 private:
  MrpBench::WiredEngine wired_;
};

void report(benchmark::State& state, std::size_t frames) {
  state.SetItemsProcessed(state.iterations() * kAllVlans);
  state.counters["frames"] = benchmark::Counter(static_cast<double>(frames), benchmark::Counter::kAvgIterations);
}

// First declaration: every VLAN new to the engine. A fresh engine per
// iteration, made and dropped outside the timing.
void BM_DeclareAndTransmitAllVlans(benchmark::State& state) {
  std::size_t frames = 0;
  for (auto _ : state) {
    state.PauseTiming();
    auto bench = std::make_unique<TransmitBench>();
    state.ResumeTiming();
    bench->declareAll();
    bench->transmit();
    state.PauseTiming();
    frames += bench->sentFramesTake();
    bench.reset();
    state.ResumeTiming();
  }
  report(state, frames);
}
BENCHMARK(BM_DeclareAndTransmitAllVlans)->Unit(benchmark::kMicrosecond);

// Declaring again what is declared already (the applicant sends the Joins
// again, the database has every entry).
void BM_RedeclareAndTransmitAllVlans(benchmark::State& state) {
  TransmitBench bench;
  bench.declareAll();
  bench.transmit();
  bench.sentFramesTake();
  std::size_t frames = 0;
  for (auto _ : state) {
    bench.declareAll();
    bench.transmit();
    state.PauseTiming();
    frames += bench.sentFramesTake();
    state.ResumeTiming();
  }
  report(state, frames);
}
BENCHMARK(BM_RedeclareAndTransmitAllVlans)->Unit(benchmark::kMicrosecond);

// Baseline: the same two MRPDUs (all VLANs JoinMt in one vector) written
// with the encoder primitives and closed, and nothing else.
void BM_EncodeAllVlansOnly(benchmark::State& state) {
  Quarn::Ptr<Mrp::MrpLib> lib = Mrp::mrpLibFactory();
  constexpr int kPackets = 2;
  std::size_t frames = 0;
  for (auto _ : state) {
    for (int packet = 0; packet < kPackets; ++packet) {
      MrpTest::FrameBuilder builder(*lib, Mrp::MrpApplication::mvrp);
      builder.message(kVlanType).vlan(Mrp::MvrpVlanAttribute(1), kJoinMt);
      for (std::uint16_t vlan = 2; vlan <= kAllVlans; ++vlan) builder.append(kJoinMt);
      benchmark::DoNotOptimize(builder.mrpdu());
      ++frames;
    }
  }
  report(state, frames);
}
BENCHMARK(BM_EncodeAllVlansOnly)->Unit(benchmark::kMicrosecond);

}  // namespace
