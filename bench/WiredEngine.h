#pragma once

// An engine whose ports are in-memory wires, for the benchmarks that drive
// whole frames through it.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "MrpModel/MrpWireFormat.h"
#include "MrpSm/MrpLib.h"
#include "MrpSm/MrpSm.h"
#include "quarn/Clock.h"
#include "quarn/Log.h"
#include "support/EngineBuilder.h"
#include "support/SimHost.h"
#include "velo/EthHdr.h"
#include "velo/MemPam.h"
#include "velo/Pkt.h"

namespace MrpBench {

// An active engine for one application on a simulated clock, with ports
// Ethernet1 .. EthernetN, each wired to a far end that the program holds.
// The clock, the port factory and the log sink are the process's while it
// lives.
class WiredEngine {
 public:
  WiredEngine(Mrp::MrpApplication application, Quarn::Ptr<Mrp::MrpLib> mrpLib, int ports) {
    Quarn::logSinkIs(&logSink_);
    for (int p = 0; p < ports; ++p) {
      const Velo::IntfId intfId("Ethernet" + std::to_string(p + 1));
      ports_.push_back(intfId);
      farEnds_.push_back(host_.wireNew(intfId, Velo::EthAddr(2, 0, 0, 0, 1, static_cast<std::uint8_t>(p)),
                                       Velo::IntfId("far" + std::to_string(p + 1)), kFarAddr));
    }
    engine_ = MrpTest::EngineBuilder(application).mrpLib(mrpLib).build();
    for (const Velo::IntfId& intfId : ports_) engine_->mrpLib()->mrpInterfaceEnable(intfId);
  }
  ~WiredEngine() {
    engine_ = nullptr;
    Quarn::logSinkIs(nullptr);
  }
  WiredEngine(const WiredEngine&) = delete;
  WiredEngine& operator=(const WiredEngine&) = delete;

  Mrp::MrpSm& engine() const { return *engine_; }
  Mrp::MrpLib& lib() const { return *engine_->mrpLib(); }
  const Velo::IntfId& port(int p) const { return ports_[static_cast<std::size_t>(p)]; }
  Quarn::SimClock& clock() const { return host_.clock(); }

  // `mrpdu` (from its ProtocolVersion octet on) as a frame from a far end:
  // the application's group address and EtherType.
  Quarn::Ptr<Velo::Pkt> frameOf(const std::vector<std::uint8_t>& mrpdu) const {
    const Mrp::MrpApplicationFraming framing = Mrp::mrpDefaultApplicationFraming(lib().application());
    std::vector<std::uint8_t> frame(Velo::EthHdr::kSize);
    Velo::EthHdr(framing.macAddr, kFarAddr, framing.etype).toBytes(frame.data());
    frame.insert(frame.end(), mrpdu.begin(), mrpdu.end());
    return Velo::Pkt::pktNew(frame.data(), frame.size());
  }

  // Sends `frame` from the far end of port `p` and lets the engine handle it.
  void receive(int p, const Velo::Pkt& frame) {
    farEnds_[static_cast<std::size_t>(p)]->txPkt(frame);
    host_.clock().advance(0);
  }

  // Takes what the engine sent from every far end; returns how many frames.
  std::size_t sentFramesTake() {
    std::size_t frames = 0;
    for (const Quarn::Ptr<Velo::MemPam>& far : farEnds_) {
      while (far->rxPkt()) ++frames;
    }
    return frames;
  }

 private:
  static inline const Velo::EthAddr kFarAddr{2, 0, 0, 0, 2, 1};

  // The engine formats its log lines; where an agent sends them is not its cost.
  Quarn::DiscardLogSink logSink_;
  MrpTest::SimHost host_;
  std::vector<Velo::IntfId> ports_;
  std::vector<Quarn::Ptr<Velo::MemPam>> farEnds_;
  Quarn::Ptr<Mrp::MrpSm> engine_;
};

}  // namespace MrpBench
