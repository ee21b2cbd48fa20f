// A whole switch in steady state: one bridge (the reference agent's, with
// its MVRP engine) with 48 ports, each wired to a neighbour, an end station
// (a bridge with one port) that declares all 4094 VLANs. The switch
// registers the 4094 VLANs on each of its 48 ports (196,512 registrations)
// and declares every VLAN on every port onward, so each neighbour registers
// all 4094 too. The network then runs for 600 s of simulated time with
// randomised LeaveAll periods (seeded): every port's LeaveAll makes its
// peer answer with all 4094 VLANs, and nothing may leave.
//
// Measured for the whole process (getrusage): CPU seconds per simulated
// second over the 600 s, and the peak resident set. The baseline, run just
// before in the same process, is the same network idle: the same 96 engines
// and their timers, LeaveAlls included, with no VLAN declared, so the ratio
// is what carrying 4094 VLANs per port costs over keeping time.

#include <benchmark/benchmark.h>

#include <sys/resource.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "Bridge.h"
#include "MrpMvrp/MvrpVlanAttribute.h"
#include "quarn/Clock.h"
#include "quarn/ClockScope.h"
#include "quarn/Log.h"
#include "velo/MemPam.h"
#include "velo/PamFactory.h"
#include "velo/Pkt.h"

namespace {

using MrpAgent::AttributeValue;
using MrpAgent::Bridge;

constexpr int kPorts = 48;
constexpr std::uint16_t kAllVlans = 4094;
constexpr Quarn::Seconds kSettle = 5;  // joins propagated and committed
constexpr Quarn::Seconds kRun = 600;
constexpr unsigned kSeed = 1;
constexpr double kBytesPerMiB = 1024.0 * 1024.0;

// "p1", "h48": built in a buffer, since g++ 12 at -O3 warns falsely
// (-Wrestrict) about "p" + std::to_string(n).
std::string numbered(char prefix, int n) {
  char name[16];
  std::snprintf(name, sizeof name, "%c%d", prefix, n);
  return name;
}

// User and system CPU seconds of the whole process so far.
double processCpuSeconds() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  const auto seconds = [](const timeval& t) { return static_cast<double>(t.tv_sec) + t.tv_usec / 1e6; };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

// The process's largest resident set so far (Linux reports KiB).
double peakResidentMiB() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_maxrss) * 1024.0 / kBytesPerMiB;
}

// Counts what the bridges indicate, and the frames that carry a LeaveAll.
class NetworkRecorder : public Bridge::Observer, public Velo::MemPam::Tap {
 public:
  void onJoin(const Bridge&, const std::string&, const AttributeValue&) override { ++joins; }
  void onLeave(const Bridge&, const std::string&, const AttributeValue&) override { ++leaves; }
  // No port closes or stops forwarding in this network.
  void onForget(const Bridge&, const std::string&, const AttributeValue&, Bridge::ForgetCause) override {}
  void onReservation(const Bridge&, const std::string&, const MrpAgent::ReservationChange&) override {}
  void onTalkerFailed(const Bridge&, const std::string&, const Mrp::MsrpTalkerFailedAttribute&) override {}
  void onListenerDeclaration(const Bridge&, const std::string&, const Mrp::MsrpListenerAttribute&) override {}

  // The engines put a LeaveAll on the first vector of the frame that
  // carries it: after the Ethernet header, the protocol version, the
  // attribute type and length, its vector header's top three bits are 1.
  void onFrame(const Velo::MemPam&, const Velo::Pkt& frame) override {
    constexpr std::size_t kFirstVectorHeader = 14 + 3;
    constexpr std::uint8_t kLeaveAllEvent = 1;
    ++frames;
    const auto octets = frame.span();
    if (octets.size() > kFirstVectorHeader && (octets[kFirstVectorHeader] >> 5) == kLeaveAllEvent) ++leaveAllFrames;
  }

  std::uint64_t joins = 0;
  std::uint64_t leaves = 0;
  std::uint64_t frames = 0;
  std::uint64_t leaveAllFrames = 0;
};

// The switch "sw" with ports p1 .. p48, each wired to the port e0 of its
// neighbour h1 .. h48, on a simulated clock that is the process's while
// the network lives. LeaveAll periods are randomised from `seed`.
class SwitchNetwork {
 public:
  SwitchNetwork(bool neighboursDeclareAllVlans, unsigned seed) {
    Quarn::logSinkIs(&logSink_);
    unsetenv("DISABLE_LEAVE_ALL_RANDOMIZATION");
    std::srand(seed);

    Quarn::Ptr<Velo::MemPamFactory> switchPorts = new Velo::MemPamFactory;
    std::vector<Quarn::Ptr<Velo::MemPamFactory>> neighbourPorts;
    for (int p = 1; p <= kPorts; ++p) {
      const auto index = static_cast<std::uint8_t>(p);
      Quarn::Ptr<Velo::MemPam> switchEnd =
          new Velo::MemPam(Velo::IntfId(numbered('p', p)), Velo::EthAddr(2, 0, 0, 0, 0, index), clock_);
      Quarn::Ptr<Velo::MemPam> neighbourEnd =
          new Velo::MemPam(Velo::IntfId("e0"), Velo::EthAddr(2, 0, 0, 1, 0, index), clock_);
      switchEnd->peerIs(neighbourEnd.ptr());
      switchEnd->tapIs(&recorder_);
      neighbourEnd->tapIs(&recorder_);
      switchPorts->pamIs(switchEnd);
      neighbourPorts.push_back(new Velo::MemPamFactory);
      neighbourPorts.back()->pamIs(neighbourEnd);
      pams_.push_back(switchEnd);
      pams_.push_back(neighbourEnd);
    }

    switch_ = bridgeNew("sw", switchPorts);
    for (int p = 1; p <= kPorts; ++p) switch_->portIs(numbered('p', p));
    for (int p = 1; p <= kPorts; ++p) {
      std::unique_ptr<Bridge>& neighbour =
          neighbours_.emplace_back(bridgeNew(numbered('h', p), neighbourPorts[static_cast<std::size_t>(p - 1)]));
      neighbour->portIs("e0");
      if (!neighboursDeclareAllVlans) continue;
      for (std::uint16_t vlan = 1; vlan <= kAllVlans; ++vlan) {
        neighbour->declare(AttributeValue(Mrp::MvrpVlanAttribute(vlan)), "e0");
      }
    }
    clock_->advance(kSettle);
  }
  ~SwitchNetwork() {
    neighbours_.clear();
    switch_.reset();
    Quarn::logSinkIs(nullptr);
  }
  SwitchNetwork(const SwitchNetwork&) = delete;
  SwitchNetwork& operator=(const SwitchNetwork&) = delete;

  void run(Quarn::Seconds seconds) { clock_->advance(seconds); }
  const NetworkRecorder& recorder() const { return recorder_; }

  // The switch's registrations in IN, over all its ports.
  std::size_t switchRegistrations() const {
    std::size_t registered = 0;
    for (const MrpAgent::Registration& held : switch_->registrations()) {
      if (held.registrar == Mrp::MrpRegistrarState::in) ++registered;
    }
    return registered;
  }

 private:
  std::unique_ptr<Bridge> bridgeNew(const std::string& name, const Quarn::Ptr<Velo::MemPamFactory>& ports) {
    auto bridge = std::make_unique<Bridge>(name, std::vector<Mrp::MrpApplication>{Mrp::MrpApplication::mvrp},
                                           MrpAgent::BridgeConfig{}, ports);
    bridge->observerIs(&recorder_);
    return bridge;
  }

  Quarn::Ptr<Quarn::SimClock> clock_ = new Quarn::SimClock;
  Quarn::System::ClockScope clockScope_{clock_};
  Quarn::DiscardLogSink logSink_;
  NetworkRecorder recorder_;
  std::vector<Quarn::Ptr<Velo::MemPam>> pams_;
  std::unique_ptr<Bridge> switch_;
  std::vector<std::unique_ptr<Bridge>> neighbours_;
};

// The idle network's CPU seconds per simulated second, once measured.
double idleCpuPerSimulatedSecond = 0;

// Runs the network for kRun simulated seconds once and reports the counters.
double runSwitch(benchmark::State& state, bool loaded) {
  const double setupStart = processCpuSeconds();
  SwitchNetwork network(loaded, kSeed);
  const double setupCpu = processCpuSeconds() - setupStart;
  const NetworkRecorder& recorder = network.recorder();
  const std::uint64_t framesBefore = recorder.frames;
  const std::uint64_t leaveAllsBefore = recorder.leaveAllFrames;
  const std::uint64_t leavesBefore = recorder.leaves;

  double runCpu = 0;
  for (auto _ : state) {
    const double start = processCpuSeconds();
    network.run(kRun);
    runCpu = processCpuSeconds() - start;
  }
  const double peakMiB = peakResidentMiB();
  const double perSimulatedSecond = runCpu / kRun;
  const auto leaveAlls = static_cast<double>(recorder.leaveAllFrames - leaveAllsBefore);

  state.counters["cpu_s_per_sim_s"] = perSimulatedSecond;
  state.counters["peak_rss_MiB"] = peakMiB;
  state.counters["setup_cpu_s"] = setupCpu;
  state.counters["frames_per_sim_s"] = static_cast<double>(recorder.frames - framesBefore) / kRun;
  state.counters["leaveall_frames"] = leaveAlls;
  if (leaveAlls > 0) state.counters["cpu_ms_per_leaveall"] = runCpu * 1e3 / leaveAlls;

  if (loaded) {
    const std::size_t registered = network.switchRegistrations();
    state.counters["switch_registrations"] = static_cast<double>(registered);
    if (idleCpuPerSimulatedSecond > 0) state.counters["x_idle"] = perSimulatedSecond / idleCpuPerSimulatedSecond;
    if (registered != std::size_t{kPorts} * kAllVlans) state.SkipWithError("the switch does not hold every VLAN");
  }
  if (recorder.leaves != leavesBefore) state.SkipWithError("a registration left while the network ran");
  return perSimulatedSecond;
}

// Baseline: the same 49 bridges with nothing declared.
void BM_IdleSwitchBaseline(benchmark::State& state) { idleCpuPerSimulatedSecond = runSwitch(state, false); }

// 48 neighbours declaring all 4094 VLANs each.
void BM_SwitchAllVlansOn48Ports(benchmark::State& state) { runSwitch(state, true); }

BENCHMARK(BM_IdleSwitchBaseline)->Iterations(1)->Unit(benchmark::kSecond);
BENCHMARK(BM_SwitchAllVlansOn48Ports)->Iterations(1)->Unit(benchmark::kSecond);

}  // namespace
