#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "MrpModel/MrpApplication.h"
#include "MrpModel/MrpValueBytes.h"
#include "MrpSm/MrpLib.h"
#include "MrpSm/MrpSm.h"
#include "quarn/Clock.h"
#include "quarn/Log.h"
#include "stp/MstiPortStatus.h"
#include "support/CistPortStatus.h"
#include "support/EngineBuilder.h"
#include "support/ReceivePathFrames.h"
#include "support/SimHost.h"
#include "velo/MemPam.h"
#include "velo/PamFactory.h"
#include "velo/Pkt.h"

namespace MrpTest {

// An MSRP and an MVRP engine on one simulated clock, each with three ports
// on in-memory wires whose far ends the rig holds, set up with
// registrations and declarations that the frames of ReceivePathFrames.h
// meet. It offers the events an engine sees: frames on a port, time, the
// agent's requests, port-role changes and ports going down and up. The
// clock and the port factory are the process's while it lives, and the
// engines' log lines are dropped.
// Header-only: the receive path's fuzz target and its tests share it.
class ReceivePathRig {
 public:
  static constexpr std::size_t kPorts = 3;

  struct Engine {
    Quarn::Ptr<Mrp::MrpSm> sm;
    std::vector<Velo::IntfId> ports;
    std::vector<Quarn::Ptr<Velo::MemPam>> farEnds;
    std::vector<bool> enabled;

    Mrp::MrpLib& lib() const { return *sm->mrpLib(); }
  };

  ReceivePathRig() {
    Quarn::logSinkIs(&logSink_);
    msrp_ = engineNew(Mrp::MrpApplication::msrp, "m");
    mvrp_ = engineNew(Mrp::MrpApplication::mvrp, "v");
    registrationsIs();
  }
  ~ReceivePathRig() {
    // The engines go before the wires and the clock they run on.
    msrp_.reset();
    mvrp_.reset();
    Velo::pamMaxRxPktDataIs(Velo::kDefaultMaxRxPktData);
    Quarn::logSinkIs(nullptr);
  }
  ReceivePathRig(const ReceivePathRig&) = delete;
  ReceivePathRig& operator=(const ReceivePathRig&) = delete;

  Engine& msrp() const { return *msrp_; }
  Engine& mvrp() const { return *mvrp_; }
  Engine& engine(Mrp::MrpApplication application) const {
    return application == Mrp::MrpApplication::msrp ? msrp() : mvrp();
  }
  Quarn::SimClock& clock() const { return host_.clock(); }

  // The far end of `port` sends the frame and the engine handles it. False
  // when the wire refuses it: shorter than an Ethernet header.
  bool receive(Engine& engine, std::size_t port, std::span<const std::uint8_t> frame) {
    const bool sent = engine.farEnds[port]->txPkt(*Velo::Pkt::pktNew(frame.data(), frame.size()));
    advance(0);
    return sent;
  }

  // Runs the clock forward; what the engines send on the way is dropped.
  void advance(Quarn::Seconds seconds) {
    host_.clock().advance(seconds);
    for (Engine* engine : {msrp_.get(), mvrp_.get()}) {
      for (const Quarn::Ptr<Velo::MemPam>& far : engine->farEnds) {
        while (far->rxPkt()) {
        }
      }
    }
  }

  // The agent's request on `port`: `value` (octets in wire order, missing
  // ones zero) as the transmit value of `type`, the port queued, and
  // mrpSendAttribute with `event` (New 0, JoinIn 1, JoinMt 3, Lv 5,
  // LeaveAll 6, internal leave 7). A type outside the application sets no
  // value.
  void request(Engine& engine, std::size_t port, std::uint8_t type, std::uint8_t event,
               std::span<const std::uint8_t> value) {
    Mrp::MrpLib& lib = engine.lib();
    if (lib.application() == Mrp::MrpApplication::mvrp) {
      if (type == 1) lib.mvrpVlanVectorTx() = Mrp::valueFromBytes<Mrp::MvrpVlanAttribute>(value);
    } else {
      switch (type) {
        case 1: lib.msrpTalkerAdvertiseTx() = Mrp::valueFromBytes<Mrp::MsrpTalkerAdvertiseAttribute>(value); break;
        case 2: lib.msrpTalkerFailedTx() = Mrp::valueFromBytes<Mrp::MsrpTalkerFailedAttribute>(value); break;
        case 3: lib.msrpListenerVectorTx() = Mrp::valueFromBytes<Mrp::MsrpListenerAttribute>(value); break;
        case 4: lib.msrpDomainVectorTx() = Mrp::valueFromBytes<Mrp::MsrpDomainAttribute>(value); break;
        default: break;
      }
    }
    lib.mrpOutIntfQueueEnq(engine.ports[port]);
    lib.mrpSendAttribute({engine.ports[port], type, event});
  }
  template <class Record>
  void request(Engine& engine, std::size_t port, std::uint8_t type, std::uint8_t event, const Record& value) {
    request(engine, port, type, event, std::span<const std::uint8_t>(Mrp::valueBytes(value)));
  }

  // The port's role in the spanning tree that governs it.
  void roleIs(Engine& engine, std::size_t port, Stp::MstiPortStatus::Role role) {
    cistPortStatusIs(*engine.sm->stpStatus(), engine.ports[port].name())->roleIs(role);
  }

  // The agent enables or disables the port for the application.
  void portEnabledIs(Engine& engine, std::size_t port, bool enabled) {
    if (engine.enabled[port] == enabled) return;
    engine.enabled[port] = enabled;
    if (enabled) {
      engine.lib().mrpInterfaceEnable(engine.ports[port]);
    } else {
      engine.lib().mrpInterfaceDisable(engine.ports[port]);
    }
  }

 private:
  // Ports <prefix>1 .. <prefix>3, enabled, on an active engine.
  std::unique_ptr<Engine> engineNew(Mrp::MrpApplication application, const std::string& prefix) {
    auto engine = std::make_unique<Engine>();
    for (std::size_t p = 0; p < kPorts; ++p) {
      const Velo::IntfId intfId(prefix + std::to_string(p + 1));
      engine->ports.push_back(intfId);
      engine->farEnds.push_back(host_.wireNew(intfId, Velo::EthAddr(0x02, 0, 0, 0, 0x0a, static_cast<std::uint8_t>(p)),
                                              Velo::IntfId(intfId.name() + "-far"), ReceivePath::kFarEndMac));
      engine->enabled.push_back(true);
    }
    engine->sm = EngineBuilder(application).build();
    for (const Velo::IntfId& intfId : engine->ports) engine->lib().mrpInterfaceEnable(intfId);
    return engine;
  }

  // Registrations from the far ends and the engines' own declarations, on
  // the streams, classes and VLANs the frames carry; committed to the store.
  void registrationsIs() {
    using namespace ReceivePath;
    using Mrp::MrpApplication;
    constexpr std::uint8_t kNew = 0, kJoinIn = 1;
    const auto receiveMrpdu = [&](Engine& engine, std::size_t port, const Bytes& mrpdu) {
      const Bytes frame = framed(engine.lib().application(), mrpdu);
      receive(engine, port, frame);
    };
    receiveMrpdu(mvrp(), 0, Frames::mvrpVlanRunPdu(1, 40, kJoinIn));
    receiveMrpdu(mvrp(), 1, Frames::kMvrpThreeVlans);
    for (std::size_t port : {0, 1}) {
      for (std::uint16_t vlan : {10, 11}) request(mvrp(), port, 1, kJoinIn, Mrp::MvrpVlanAttribute(vlan));
    }
    request(mvrp(), 2, 1, kNew, Mrp::MvrpVlanAttribute(100));

    receiveMrpdu(msrp(), 0, Frames::kMsrpAllTypes);
    receiveMrpdu(msrp(), 1, Frames::msrpListenerFrame(Frames::kListenerListLength));
    request(msrp(), 1, 1, kJoinIn, talkerOf(kStream1));
    request(msrp(), 2, 2, kJoinIn, talkerFailedOf(kStream9));
    request(msrp(), 0, 3, kJoinIn, Mrp::MsrpListenerAttribute(kStream9, Mrp::MsrpListenerEvent::ready));
    for (std::size_t port = 0; port < kPorts; ++port) request(msrp(), port, 4, kJoinIn, domainOf(6));
    advance(1);
  }

  // A registration logs every join and leave; no one reads them here.
  Quarn::DiscardLogSink logSink_;
  SimHost host_;
  std::unique_ptr<Engine> msrp_;
  std::unique_ptr<Engine> mvrp_;
};

}  // namespace MrpTest
