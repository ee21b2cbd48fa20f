// Frames per second through the packet access receive path: a frame sent on
// an in-memory wire, delivered on the simulated clock, checked, stripped of
// its Ethernet header, parsed and counted by MrpIntfPamSm::handleMrpdu.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "MrpSm/MrpLib.h"
#include "MrpSm/MrpSm.h"
#include "quarn/Clock.h"
#include "support/EngineBuilder.h"
#include "support/MrpduFrames.h"
#include "support/SimHost.h"
#include "velo/MemPam.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kMinFrameBytes = 60;

// An active MVRP engine with port Ethernet1 on an in-memory wire.
class PamBench {
 public:
  PamBench()
      : testEnd_(host_.wireNew(Velo::IntfId("Ethernet1"), Velo::EthAddr(2, 0, 0, 0, 0, 2), Velo::IntfId("peer"),
                               Velo::EthAddr(2, 0, 0, 0, 0, 1))),
        engine_(MrpTest::EngineBuilder(Mrp::MrpApplication::mvrp).build()) {
    engine_->mrpLib()->mrpInterfaceEnable(Velo::IntfId("Ethernet1"));
  }

  // Three VLANs in one vector, behind the application's address and
  // EtherType (and `vlanTag`, unless 0), padded to the Ethernet minimum.
  Bytes mvrpFrame(std::uint16_t etherType, std::uint16_t vlanTag) const {
    const Velo::EthAddr& dst = engine_->mrpLib()->applicationMacAddr();
    Bytes frame(dst.octets().begin(), dst.octets().end());
    frame.insert(frame.end(), {0x02, 0x00, 0x00, 0x00, 0x00, 0x01});
    if (vlanTag) {
      frame.insert(frame.end(),
                   {0x81, 0x00, static_cast<std::uint8_t>(vlanTag >> 8), static_cast<std::uint8_t>(vlanTag)});
    }
    frame.insert(frame.end(), {static_cast<std::uint8_t>(etherType >> 8), static_cast<std::uint8_t>(etherType)});
    frame.insert(frame.end(), MrpTest::Frames::kMvrpThreeVlans.begin(), MrpTest::Frames::kMvrpThreeVlans.end());
    frame.resize(std::max(frame.size(), kMinFrameBytes), 0);
    return frame;
  }
  std::uint16_t etherType() const { return engine_->mrpLib()->applicationEtype(); }

  void run(benchmark::State& state, const Bytes& bytes) {
    Quarn::Ptr<Velo::Pkt> frame = Velo::Pkt::pktNew(bytes.data(), bytes.size());
    for (auto _ : state) {
      testEnd_->txPkt(*frame);
      host_.clock().advance(0);
    }
    state.SetItemsProcessed(state.iterations());
    if (engine_->mrpCounters()->numOfPktsProcessed() != static_cast<std::uint64_t>(state.iterations())) {
      state.SkipWithError("frames were lost");
    }
  }

 private:
  MrpTest::SimHost host_;
  Quarn::Ptr<Velo::MemPam> testEnd_;
  Quarn::Ptr<Mrp::MrpSm> engine_;
};

void BM_MvrpFrame(benchmark::State& state) {
  PamBench bench;
  bench.run(state, bench.mvrpFrame(bench.etherType(), 0));
}

void BM_MvrpFrameVlanTagged(benchmark::State& state) {
  PamBench bench;
  bench.run(state, bench.mvrpFrame(bench.etherType(), 0x0007));
}

void BM_WrongEtherTypeDropped(benchmark::State& state) {
  PamBench bench;
  bench.run(state, bench.mvrpFrame(0x0800, 0));
}

BENCHMARK(BM_MvrpFrame);
BENCHMARK(BM_MvrpFrameVlanTagged);
BENCHMARK(BM_WrongEtherTypeDropped);

}  // namespace
