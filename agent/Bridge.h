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
//  - MSRP: the bridge's domains are declared on every port; a talker
//    registered on a forwarding port is declared on every other forwarding
//    port; a listener registered on a port is declared on the port where its
//    stream's talker is registered (listeners of several ports merged:
//    ready, askingFailed, or readyFailed when they differ).
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
  };

  // `pamFactory` opens the ports; null for the process's factory.
  Bridge(std::string name, const std::vector<Mrp::MrpApplication>& applications, BridgeConfig config = {},
         Quarn::Ptr<Velo::PamFactory> pamFactory = nullptr);
  ~Bridge() override;
  Bridge(const Bridge&) = delete;
  Bridge& operator=(const Bridge&) = delete;

  const std::string& name() const { return name_; }
  const BridgeConfig& config() const { return config_; }
  // The engine of an application; null when the bridge does not run it.
  Mrp::MrpSm* engine(Mrp::MrpApplication application) const;
  std::vector<Mrp::MrpApplication> applications() const;

  // Opens a port on every engine; it starts forwarding (designated role).
  // No LeaveAll goes with it: a caller that wants the neighbour's
  // declarations at once asks for one with leaveAllIs.
  void portIs(const std::string& port);
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

  Observer* observer() const { return observer_; }
  void observerIs(Observer* observer) { observer_ = observer; }

  // BridgeMrpLib::Owner
  void handleJoin(const Mrp::MrpParameters& indication, const AttributeValue& value) override;
  void handleLeave(const Mrp::MrpParameters& indication, Mrp::MrpApplication application) override;

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

  static AttrId attrIdOf(const AttributeValue& value);
  Engine& engineOf(Mrp::MrpApplication application) const;
  // The attribute needs its declarations looked at again.
  void dirtyIs(const AttrId& id);
  void doPropagate();
  void doPropagate(const AttrId& id);
  // What the bridge should declare for the attribute on a port, if anything.
  std::optional<AttributeValue> desiredOn(const AttrId& id, const AttrState& state, const std::string& port) const;
  std::optional<AttributeValue> mergedListener(const AttrState& state, const std::string& talkerPort) const;
  std::optional<std::string> talkerPortOf(std::uint64_t streamId) const;
  // Forgets what the port registered, as the engine's Flush! does.
  void doForgetRegistrations(const std::string& port, ForgetCause cause);

  std::string name_;
  BridgeConfig config_;
  Quarn::Ptr<Mrp::MrpConfig> mrpConfig_;
  Quarn::Ptr<Mrp::MrpStatus> mrpStatus_;
  Quarn::Ptr<Stp::Status> stpStatus_;
  Quarn::Ptr<Stp::MstiStatus> msti_;
  Quarn::Ptr<Bridging::Config> brConfig_;
  Quarn::Ptr<Bridging::Topology::Config> brTopoConfig_;
  Quarn::Ptr<Interface::AllEthPhyIntfStatusDir> ethPhyIntfStatusDir_;
  Quarn::Ptr<Hive::EntityManager> entityManager_;
  std::map<Mrp::MrpApplication, std::unique_ptr<Engine>> engines_;
  std::vector<std::string> ports_;
  std::map<AttrId, AttrState> attrs_;
  std::set<AttrId> dirty_;
  Observer* observer_ = nullptr;
  bool withdrawnAll_ = false;
  PropagationTimer propagation_;
};

}  // namespace MrpAgent
