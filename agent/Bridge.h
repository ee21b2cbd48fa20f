#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <utility>
#include <string>
#include <vector>

#include "AttributeValue.h"
#include "BridgeConfig.h"
#include "BridgeMrpLib.h"
#include "MrpModel/MrpApplicantState.h"
#include "MrpModel/MrpRegistrarState.h"
#include "MrpSm/MrpSm.h"
#include "MrpSm/MrpSmRecords.h"
#include "PortReservations.h"
#include "ReservationChange.h"
#include "StreamTable.h"
#include "TalkerAdmission.h"
#include "quarn/Clock.h"
#include "stp/MstiPortStatus.h"
#include "velo/PamFactory.h"

namespace MrpAgent {

// One registration or declaration held by a bridge's engine on a port.
struct Registration {
  std::string port;
  Mrp::MrpApplication application{};
  AttributeValue value;
  Mrp::MrpRegistrarState registrar{};
  Mrp::MrpApplicantState applicant{};
};

// A bridge: named ports and one engine per application it runs, with the
// propagation that makes it a bridge and not an end station.
//
//  - MVRP: a VLAN registered on a forwarding port is declared on every other
//    forwarding port, and withdrawn when no other port registers it.
//  - MSRP: the bridge's domains are declared on every port. A Talker
//    Advertise registered on a forwarding port is declared on every other
//    forwarding port with the port's latency added, or as a Talker Failed
//    of this bridge where the stream cannot be reserved (TalkerAdmission);
//    a Talker Failed goes on as it came. A stream is reserved on a port
//    while the bridge declares its Talker Advertise there and a Listener
//    Ready or ReadyFailed is registered there; reservations are admitted
//    in the order they are made (within one propagation, by stream id).
//    The Listeners of a stream are declared, merged (ListenerMerge), on
//    the port where its Talker is registered.
//  - declare() with a port is an end station's declaration on that port;
//    without one it is the bridge's own, made on every port.
//  - A port that starts forwarding sends a LeaveAll, so that the neighbour
//    declares everything again at once: what the engines' Re-declare! put
//    in LV would otherwise leave, and come back only at the neighbour's
//    next LeaveAll.
//
// Declarations and withdrawals go to the engines as an agent's requests
// (the port queued, then mrpSendAttribute). What the indications change is
// propagated once the engine has returned to the event loop (a clock
// notification due at once), never from inside the engine.
//
// The engines run on the process clock and open their ports through a
// socket factory: the simulator gives each bridge an in-memory wire factory
// of its own (so that every bridge may have a port "p1"), the agent the
// process's Linux packet sockets.
class Bridge : public BridgeMrpLib::Owner {
 public:
  // Why a registration went without a leave indication.
  enum class ForgetCause {
    portClosed,  // the port was closed (its interface went down or away)
    blocked,     // the port stopped forwarding (the engines flushed it)
  };

  // Hears what the bridge's engines indicate, and what they forget.
  class Observer {
   public:
    virtual ~Observer() = default;
    virtual void onJoin(const Bridge& bridge, const std::string& port, const AttributeValue& value) = 0;
    virtual void onLeave(const Bridge& bridge, const std::string& port, const AttributeValue& value) = 0;
    virtual void onForget(const Bridge& bridge, const std::string& port, const AttributeValue& value,
                          ForgetCause cause) = 0;
    // A stream reserved or released on a port.
    virtual void onReservation(const Bridge& bridge, const std::string& port, const ReservationChange& change) = 0;
    // The bridge refuses a stream on a port: it declares this Talker Failed there.
    virtual void onTalkerFailed(const Bridge& bridge, const std::string& port,
                                const Mrp::MsrpTalkerFailedAttribute& declared) = 0;
    // A registered Listener's declaration changed.
    virtual void onListenerDeclaration(const Bridge& bridge, const std::string& port,
                                       const Mrp::MsrpListenerAttribute& listener) = 0;
  };

  // `pamFactory` opens the ports; null for the process's factory.
  Bridge(std::string name, const std::vector<Mrp::MrpApplication>& applications, BridgeConfig config = {},
         Quarn::Ptr<Velo::PamFactory> pamFactory = nullptr);
  ~Bridge() override;
  Bridge(const Bridge&) = delete;
  Bridge& operator=(const Bridge&) = delete;

  const std::string& name() const { return name_; }
  const BridgeConfig& config() const { return config_; }
  // What the bridge's Talker Failed declarations name it by.
  std::uint64_t bridgeId() const { return bridgeId_; }
  // The engine of an application; null when the bridge does not run it.
  Mrp::MrpSm* engine(Mrp::MrpApplication application) const;
  std::vector<Mrp::MrpApplication> applications() const;

  // Opens a port on every engine; it starts forwarding (designated role).
  // No LeaveAll goes with it: a caller that wants the neighbour's
  // declarations at once asks for one with leaveAllIs.
  void portIs(const std::string& port);
  // The speed of a port from when it next opens; one that is open keeps
  // the speed it opened with.
  void portSpeedIs(const std::string& port, std::uint64_t bitsPerSecond) { config_.portSpeed[port] = bitsPerSecond; }
  // Closes a port: its registrations and declarations go.
  void portDel(const std::string& port);
  const std::vector<std::string>& ports() const { return ports_; }
  bool port(const std::string& port) const;
  // The spanning-tree role of a port: the engines flush or re-declare, and
  // only root and designated ports forward.
  void portRoleIs(const std::string& port, Stp::MstiPortStatus::Role role);
  Stp::MstiPortStatus::Role portRole(const std::string& port) const;
  bool forwarding(const std::string& port) const;
  // Sends a LeaveAll of every attribute type on the port at once, so that
  // the neighbour declares again everything it declares there. A port that
  // starts forwarding gets one; the agent asks for one when an interface
  // comes up. A direct request to the engines: not for an Observer to make
  // from inside an indication.
  void leaveAllIs(const std::string& port);

  // Declares (Join, or New when `declareNew`) or withdraws a value on one
  // port, or bridge-wide without a port.
  void declare(const AttributeValue& value, const std::optional<std::string>& port, bool declareNew = false);
  void withdraw(const AttributeValue& value, const std::optional<std::string>& port);

  // Withdraws every declaration the bridge makes on every port (its own,
  // its end stations' and what it propagates) and makes none from then on:
  // for an agent that is going away and leaves its neighbours nothing to
  // time out. The Lv messages go once the engines have returned to the
  // event loop, as other requests do.
  void withdrawAll();
  bool withdrawnAll() const { return withdrawnAll_; }

  // What the engines hold, per port, application, type and key.
  std::vector<Registration> registrations() const;
  // What the bridge has asked its engines to declare, per port.
  std::vector<std::pair<std::string, AttributeValue>> declarations() const;
  // Its streams, reservations and shapers.
  StreamTable streamTable() const;

  Observer* observer() const { return observer_; }
  void observerIs(Observer* observer) { observer_ = observer; }

  // BridgeMrpLib::Owner
  void handleJoin(const Mrp::MrpParameters& indication, const AttributeValue& value) override;
  void handleLeave(const Mrp::MrpParameters& indication, Mrp::MrpApplication application) override;
  void handleListenerJoin(const Mrp::MrpParameters& join, const AttributeValue& value) override;

 private:
  class Engine;

  // One attribute of one application, across the ports.
  struct AttrId {
    Mrp::MrpApplication application{};
    std::uint8_t attributeType = 0;
    std::uint64_t attributeKey = 0;
    friend auto operator<=>(const AttrId&, const AttrId&) = default;
  };
  struct AttrState {
    std::map<std::string, AttributeValue> registeredOn;  // heard on these ports
    std::optional<AttributeValue> bridgeWide;            // declared on every port
    std::map<std::string, AttributeValue> portDeclared;  // declared on one port
    std::set<std::string> declaredNew;                   // ...with New
    std::map<std::string, AttributeValue> declaredOn;    // what the engine was asked to declare
    bool empty() const {
      return registeredOn.empty() && !bridgeWide && portDeclared.empty() && declaredOn.empty();
    }
  };

  class PropagationTimer : public Quarn::Clock::Notifiee {
   public:
    PropagationTimer(Quarn::Clock* clock, Bridge* owner) : Notifiee(clock), owner_(owner) {}
    void onTime() override { owner_->doPropagate(); }

   private:
    Bridge* owner_;
  };

  // Where a stream's Talker is registered, and what it is.
  struct HeardTalker {
    std::string port;
    AttributeValue value;
  };

  static AttrId attrIdOf(const AttributeValue& value);
  Engine& engineOf(Mrp::MrpApplication application) const;
  // The attribute needs its declarations looked at again.
  void dirtyIs(const AttrId& id);
  void doPropagate();
  void doPropagate(const AttrId& id);
  // What the bridge should declare for the attribute on a port, if anything.
  std::optional<AttributeValue> desiredOn(const AttrId& id, const AttrState& state, const std::string& port) const;
  std::optional<AttributeValue> mergedListener(std::uint64_t streamId, const AttrState& state,
                                              const std::string& talkerPort) const;
  std::optional<HeardTalker> talkerOf(std::uint64_t streamId) const;
  // A stream's Talker, Talker Failed and Listener are propagated together:
  // what the bridge declares for the Talker on each port decides the
  // reservations there, which decide the Listener it declares.
  void doPropagateStream(std::uint64_t streamId);
  std::optional<AttributeValue> talkerDeclarationOf(std::uint64_t streamId, const std::optional<HeardTalker>& talker,
                                                    const std::string& port) const;
  // The bridge's own Talker declaration for a stream on a port, if any.
  std::optional<AttributeValue> ownTalkerOn(std::uint64_t streamId, const std::string& port) const;
  StreamClass streamClassOn(const Mrp::MsrpTalkerAdvertiseAttribute& talker, const std::string& port) const;
  std::optional<SrClass> srClassOfPriority(std::uint8_t priority) const;
  const AttributeValue* registered(const AttrId& id, const std::string& port) const;
  // The Talker Advertise the bridge admitted for a stream on a port, while
  // its engine declares it there; null otherwise.
  const Mrp::MsrpTalkerAdvertiseAttribute* advertisedOn(std::uint64_t streamId, const std::string& port) const;
  // Reserves the stream on the port, or releases it, as its declarations
  // and Listener there say.
  void doReserve(std::uint64_t streamId, const std::string& port);
  void doRelease(std::uint64_t streamId, const std::string& port);
  void dirtyAllStreams();
  // Forgets what the port registered, as the engine's Flush! does.
  void doForgetRegistrations(const std::string& port, ForgetCause cause);

  std::string name_;
  BridgeConfig config_;
  // Shared by the bridge's engines, each with its own service object.
  Mrp::MrpSmRecords records_;
  Quarn::Ptr<Stp::MstiStatus> msti_;
  std::map<Mrp::MrpApplication, std::unique_ptr<Engine>> engines_;
  std::vector<std::string> ports_;
  std::uint64_t bridgeId_;
  std::map<AttrId, AttrState> attrs_;
  // What the bridge declares for each stream's Talker on each port.
  std::map<std::uint64_t, std::map<std::string, AttributeValue>> talkerDeclared_;
  std::map<std::string, PortReservations> reservations_;
  bool reservationsChanged_ = false;
  std::set<AttrId> dirty_;
  Observer* observer_ = nullptr;
  bool withdrawnAll_ = false;
  PropagationTimer propagation_;
};

}  // namespace MrpAgent
