// Receiving an MVRP frame that declares all 4094 VLANs with JoinIn, end to
// end on a port: the frame into the port's in-memory socket, the receive
// checks, parsing, the applicant and registrar of every VLAN, the join
// indications and the queued database commits. Beside it, in the same run,
// the parse alone and a bare loop that only unpacks the frame's three-packed
// octets. items_per_second counts VLANs.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "ParseLoop.h"
#include "WiredEngine.h"
#include "support/MrpduFrames.h"
#include "support/StandaloneEngine.h"

namespace {

constexpr std::uint16_t kAllVlans = 4094;
constexpr std::uint8_t kJoinIn = 1;
constexpr std::uint8_t kEvents = 6;  // New .. Lv

const std::vector<std::uint8_t>& allVlansPdu() {
  static const std::vector<std::uint8_t> pdu = MrpTest::Frames::mvrpVlanRunPdu(1, kAllVlans, kJoinIn);
  return pdu;
}

// An agent that only counts the joins it hears.
class CountingMrpLib : public Mrp::MrpLib {
 public:
  bool mrpJoinIndication(const Mrp::MrpParameters&) override {
    ++joins;
    return false;
  }
  std::uint64_t joins = 0;
};

// An MVRP engine on one wired port, and the frame to give it.
class ReceiveBench {
 public:
  ReceiveBench() : wired_(Mrp::MrpApplication::mvrp, lib_, 1), frame_(wired_.frameOf(allVlansPdu())) {}

  void receive() { wired_.receive(0, *frame_); }
  // Runs the clock past the add review, which commits the queued additions.
  void commit() { wired_.clock().advance(1.0); }

  std::uint64_t joins() const { return lib_->joins; }
  Mrp::MrpSm& engine() const { return wired_.engine(); }
  bool allRegistered() const {
    for (std::uint16_t vlan = 1; vlan <= kAllVlans; ++vlan) {
      auto entry = engine().mrpGetAttrFromDatabase(wired_.port(0), 1, vlan, true);
      if (!entry || entry->registrarState() != Mrp::MrpRegistrarState::in) return false;
    }
    return true;
  }

 private:
  Quarn::Ptr<CountingMrpLib> lib_ = new CountingMrpLib;
  MrpBench::WiredEngine wired_;
  Quarn::Ptr<Velo::Pkt> frame_;
};

void perVlan(benchmark::State& state) { state.SetItemsProcessed(state.iterations() * kAllVlans); }

// The first reception: 4094 new registrations, indicated, their additions
// queued. A fresh engine per iteration, made and dropped outside the timing.
void BM_ReceiveAllVlansFirstTime(benchmark::State& state) {
  for (auto _ : state) {
    state.PauseTiming();
    auto bench = std::make_unique<ReceiveBench>();
    state.ResumeTiming();
    bench->receive();
    state.PauseTiming();
    if (bench->joins() != kAllVlans) state.SkipWithError("not every VLAN was indicated");
    if (bench->engine().addPendingAttrs().size() != kAllVlans) state.SkipWithError("additions not queued");
    bench.reset();
    state.ResumeTiming();
  }
  perVlan(state);
}
BENCHMARK(BM_ReceiveAllVlansFirstTime)->Unit(benchmark::kMicrosecond);

// The steady state: every VLAN registered and committed already; the frame
// repeats them (no indication, nothing to commit).
void BM_ReceiveAllVlansRegistered(benchmark::State& state) {
  ReceiveBench bench;
  bench.receive();
  bench.commit();
  if (!bench.allRegistered() || !bench.engine().addPendingAttrs().empty()) {
    state.SkipWithError("registrations not committed");
  }
  for (auto _ : state) bench.receive();
  if (bench.joins() != kAllVlans) state.SkipWithError("repeated VLANs were indicated again");
  perVlan(state);
}
BENCHMARK(BM_ReceiveAllVlansRegistered)->Unit(benchmark::kMicrosecond);

// Baseline: parsing the same MRPDU and collecting its values, no more.
void BM_ParseAllVlansOnly(benchmark::State& state) {
  Quarn::Ptr<Mrp::MrpSm> engine = MrpTest::standaloneEngineNew(Mrp::MrpApplication::mvrp);
  MrpBench::parseLoop(state, *engine, allVlansPdu(), kAllVlans);
}
BENCHMARK(BM_ParseAllVlansOnly)->Unit(benchmark::kMicrosecond);

// Baseline: the least any receiver does, unpacking the three events of each
// packed octet of the same MRPDU and counting them by event.
void BM_UnpackThreePackedOnly(benchmark::State& state) {
  constexpr std::size_t kPackedStart = 1 + 2 + 2 + 2;  // ProtocolVersion, type and length, VectorHeader, FirstValue
  const std::vector<std::uint8_t>& pdu = allVlansPdu();
  const std::size_t packedEnd = kPackedStart + (kAllVlans + 2) / 3;
  std::uint32_t byEvent[kEvents + 1] = {};
  for (auto _ : state) {
    benchmark::DoNotOptimize(pdu.data());
    for (std::size_t i = kPackedStart; i < packedEnd; ++i) {
      const unsigned octet = pdu[i];
      ++byEvent[std::min<unsigned>(octet / 36, kEvents)];
      ++byEvent[octet / 6 % 6];
      ++byEvent[octet % 6];
    }
    benchmark::DoNotOptimize(byEvent);
  }
  if (byEvent[kJoinIn] < kAllVlans) state.SkipWithError("the events were not read");
  perVlan(state);
}
BENCHMARK(BM_UnpackThreePackedOnly)->Unit(benchmark::kMicrosecond);

}  // namespace
