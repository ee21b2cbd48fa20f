// LeaveAll on a port with N VLANs registered (N = 500, 1000, 2000, 4094):
// the port's LeaveAll timer expiring (txLA! to the applicant and registrar
// of each registration, their leave timing and the frames it sends) and a
// LeaveAll received on that port (rLA! to each, its answer and the leave
// timing), beside baselines measured in the same run: the peer's PDU
// declaring the N VLANs received on the same port, and a bare loop that
// unpacks that PDU's three-packed octets.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <vector>

#include "MrpSm/MrpIntfLeaveAllSm.h"
#include "MrpSm/MrpLeaveAllSm.h"
#include "MrpSm/MrpLib.h"
#include "MrpSm/MrpSm.h"
#include "quarn/Clock.h"
#include "UnpackLoop.h"
#include "support/EngineBuilder.h"
#include "support/FrameBuilder.h"
#include "support/MrpduFrames.h"
#include "support/SimHost.h"
#include "velo/EthHdr.h"
#include "velo/MemPam.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

const Velo::IntfId kPort("Ethernet1");
const Velo::EthAddr kPeerMac(2, 0, 0, 0, 0, 1);

constexpr std::uint8_t kJoinIn = 1;

// The argument of each benchmark: how many VLANs the port has registered.
void vlanCounts(benchmark::internal::Benchmark* bench) {
  for (int vlans : {500, 1000, 2000, 4094}) bench->Arg(vlans);
  bench->Unit(benchmark::kMicrosecond);
}

std::uint16_t vlansOf(const benchmark::State& state) { return static_cast<std::uint16_t>(state.range(0)); }

// An active MVRP engine whose port Ethernet1 has registered VLANs 1 to
// `vlans` from the peer at the far end of an in-memory wire.
class LeaveAllBench {
 public:
  explicit LeaveAllBench(std::uint16_t vlans)
      : peer_(host_.wireNew(kPort, Velo::EthAddr(2, 0, 0, 0, 0, 2), Velo::IntfId("peer"), kPeerMac)),
        engine_(MrpTest::EngineBuilder(Mrp::MrpApplication::mvrp).build()) {
    engine_->mrpLib()->mrpInterfaceEnable(kPort);

    Mrp::MrpLib& lib = *engine_->mrpLib();
    allVlansJoinIn_ = frameOf(lib, MrpTest::Frames::mvrpVlanRunPdu(1, vlans, kJoinIn));
    MrpTest::FrameBuilder leaveAll(lib, Mrp::MrpApplication::mvrp);
    leaveAll.message(1).vlan(Mrp::MvrpVlanAttribute(0), kLeaveAllOnly);
    leaveAll_ = frameOf(lib, leaveAll.mrpdu());

    receive(*allVlansJoinIn_);
    host_.clock().advance(1);  // the additions are committed
    drainPeer();
  }
  // The frame arrives on the port and is handled completely.
  void receive(const Velo::Pkt& frame) {
    peer_->txPkt(frame);
    host_.clock().advance(0);
  }
  void receiveAllVlans() { receive(*allVlansJoinIn_); }
  void receiveLeaveAll() { receive(*leaveAll_); }

  // Every registration back in IN with no leave timing, as the peer's next
  // declaration leaves them, and nothing left on the wire.
  void reregister() {
    receiveAllVlans();
    drainPeer();
  }
  void leaveAllTimerExpires() {
    Mrp::MrpIntfLeaveAllSm& machine = *engine_->leaveAllSm()->intfLeaveAllSm(kPort);
    machine.leaveAllPending(1)->expiryTimeIs(host_.clock().now());
    machine.handleLeaveAllTimer();
  }
  // Sent frames collect at the peer: count and drop them.
  std::size_t drainPeer() {
    std::size_t frames = 0;
    while (peer_->rxPkt()) ++frames;
    return frames;
  }

  std::uint64_t registered() const {
    const Quarn::Ptr<Mrp::MrpAttrIter> iter = engine_->attributeStore().mrpAttrIter({kPort, 1});
    return iter ? iter->attributeKeys().size() : 0;
  }

 private:
  static constexpr std::uint8_t kLeaveAllOnly = 6;

  // `mrpdu` from the peer, behind the application's address and EtherType.
  static Quarn::Ptr<Velo::Pkt> frameOf(const Mrp::MrpLib& lib, const Bytes& mrpdu) {
    Bytes frame(Velo::EthHdr::kSize);
    Velo::EthHdr(lib.applicationMacAddr(), kPeerMac, lib.applicationEtype()).toBytes(frame.data());
    frame.insert(frame.end(), mrpdu.begin(), mrpdu.end());
    return Velo::Pkt::pktNew(frame.data(), frame.size());
  }

  MrpTest::SimHost host_;
  Quarn::Ptr<Velo::MemPam> peer_;
  Quarn::Ptr<Mrp::MrpSm> engine_;
  Quarn::Ptr<Velo::Pkt> allVlansJoinIn_;
  Quarn::Ptr<Velo::Pkt> leaveAll_;
};

void checkRegistered(benchmark::State& state, const LeaveAllBench& bench) {
  if (bench.registered() != vlansOf(state)) state.SkipWithError("the port lost registrations");
}

// Baseline: the peer's periodic declaration of the same VLANs, received on
// the port that has them registered (parse, then applicant and registrar
// for each).
void BM_ReceivedVlansBaseline(benchmark::State& state) {
  LeaveAllBench bench(vlansOf(state));
  for (auto _ : state) bench.receiveAllVlans();
  state.SetItemsProcessed(state.iterations() * state.range(0));
  checkRegistered(state, bench);
}

// Baseline: unpacking the three-packed octets of that declaration, no more.
void BM_UnpackOnly(benchmark::State& state) {
  MrpBench::unpackLoop(state, MrpTest::Frames::mvrpVlanRunPdu(1, vlansOf(state), kJoinIn), vlansOf(state));
}

// Times `leaveAll` on the port, each time with every registration back in
// IN and the previous frames gone; counts the frames it sends.
template <class LeaveAll>
void timeLeaveAll(benchmark::State& state, LeaveAll&& leaveAll) {
  LeaveAllBench bench(vlansOf(state));
  std::size_t frames = 0;
  for (auto _ : state) {
    state.PauseTiming();
    frames += bench.drainPeer();
    bench.reregister();
    state.ResumeTiming();
    leaveAll(bench);
  }
  frames += bench.drainPeer();
  state.SetItemsProcessed(state.iterations() * state.range(0));
  state.counters["frames"] = benchmark::Counter(static_cast<double>(frames) / state.iterations());
  checkRegistered(state, bench);
}

// The port's LeaveAll timer expires: txLA! for each registration, the In
// messages and the LeaveAll they carry sent on the wire.
void BM_LeaveAllTimerExpiry(benchmark::State& state) {
  timeLeaveAll(state, [](LeaveAllBench& bench) { bench.leaveAllTimerExpires(); });
}

// A LeaveAll from the peer arrives: rLA! for each registration, the In
// messages that answer it sent on the wire.
void BM_ReceivedLeaveAll(benchmark::State& state) {
  timeLeaveAll(state, [](LeaveAllBench& bench) { bench.receiveLeaveAll(); });
}

BENCHMARK(BM_UnpackOnly)->Apply(vlanCounts);
BENCHMARK(BM_ReceivedVlansBaseline)->Apply(vlanCounts);
BENCHMARK(BM_LeaveAllTimerExpiry)->Apply(vlanCounts);
BENCHMARK(BM_ReceivedLeaveAll)->Apply(vlanCounts);

}  // namespace
