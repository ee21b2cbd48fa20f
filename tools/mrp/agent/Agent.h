#pragma once

#include <nlohmann/json.hpp>

#include <iosfwd>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "Bridge.h"
#include "agent/CountingPamFactory.h"
#include "agent/Declaration.h"
#include "agent/PortWatcher.h"
#include "quarn/ClockScope.h"
#include "quarn/EventLoop.h"
#include "report/Timeline.h"

namespace MrpCli {

// The bridge of one application on real Linux ports: what an agent's worker
// process runs. Its ports are Linux interfaces opened with packet sockets
// on the real clock and the worker's loop.
//
// A port is open on the bridge while its interface exists and is up; one
// that goes down or is deleted is closed (its registrations go with it, each
// told to the timeline) and opened again when it is back. A port that opens
// gets a LeaveAll, so that its neighbour declares everything again at once.
// What the agent was asked to declare on a port is declared again then.
class Agent : public MrpAgent::Bridge::Observer, public PortWatcher::Observer {
 public:
  // The name the bridge has in the timeline.
  static constexpr const char* kBridgeName = "agent";

  struct Options {
    std::vector<std::string> ports;
    Mrp::MrpApplication application = Mrp::MrpApplication::mvrp;
    MrpAgent::BridgeConfig config;
    // The time on the loop's clock that the timeline counts from.
    Quarn::Seconds origin = 0;
  };

  // Registrations, requests and port changes go to `timeline`; what goes
  // wrong to `log`, one line each. Installs the loop's clock as the
  // process's. Throws std::system_error when the ports cannot be watched.
  Agent(Options options, Quarn::Ptr<Quarn::EventLoop> loop, Timeline& timeline, std::ostream& log);
  ~Agent() override;
  Agent(const Agent&) = delete;
  Agent& operator=(const Agent&) = delete;

  // Declares or withdraws a value on a port, or on every port without one.
  void declare(const MrpAgent::AttributeValue& value, const std::optional<std::string>& port);
  void withdraw(const MrpAgent::AttributeValue& value, const std::optional<std::string>& port);

  // What the engine holds: [{"port", "attribute", "registrar", "applicant"}]
  // with the attribute as attributeMessage() writes it and the states as codes.
  nlohmann::ordered_json registrationsMessage() const;
  // {"engine": {<the engine's counters by name>}, "ports": [{"port", <PortCounters'
  // json()>, "registrations": {<attribute type>: count}, "reservations":
  // [{"class", "streams", "bandwidth"}]}]}; "engine" empty while it is not active.
  nlohmann::ordered_json countersMessage() const;
  // Each port: [{"port", "state", "socket", "speed", "speedFrom"}], socket
  // "open", "closed" or why not; the speed in bit/s from "configuration",
  // "kernel" or "default".
  nlohmann::ordered_json portsMessage() const;
  // The bridge's stream table, as streamTableJson() writes it.
  nlohmann::ordered_json streamsMessage() const;

  // Withdraws every declaration the bridge makes (each told to the
  // timeline) and sends the Lv messages: for an agent that is going away.
  void doStop();

  // MrpAgent::Bridge::Observer
  void onJoin(const MrpAgent::Bridge& bridge, const std::string& port, const MrpAgent::AttributeValue& value) override;
  void onLeave(const MrpAgent::Bridge& bridge, const std::string& port, const MrpAgent::AttributeValue& value) override;
  void onForget(const MrpAgent::Bridge& bridge, const std::string& port, const MrpAgent::AttributeValue& value,
                MrpAgent::Bridge::ForgetCause cause) override;
  void onReservation(const MrpAgent::Bridge& bridge, const std::string& port,
                     const MrpAgent::ReservationChange& change) override;
  void onTalkerFailed(const MrpAgent::Bridge& bridge, const std::string& port,
                      const Mrp::MsrpTalkerFailedAttribute& declared) override;
  void onListenerDeclaration(const MrpAgent::Bridge& bridge, const std::string& port,
                             const Mrp::MsrpListenerAttribute& listener) override;
  // PortWatcher::Observer
  void onPortState(const std::string& port, PortWatcher::State state) override;

 private:
  // Forgets the time stamp of a dispatch once it is over.
  class StampEnd : public Quarn::Clock::Notifiee {
   public:
    StampEnd(Quarn::Clock* clock, Agent* owner) : Notifiee(clock), owner_(owner) {}
    void onTime() override { owner_->stamp_.reset(); }

   private:
    Agent* owner_;
  };

  // A port's speed and where the agent took it from.
  struct PortSpeed {
    std::uint64_t bitsPerSecond = 0;
    const char* from = "";
  };
  using PortSpeeds = std::map<std::string, PortSpeed>;
  // The configuration's speeds, else what the kernel tells of the ports (at
  // start, and again when one comes up), else the bridge's default.
  static PortSpeeds portSpeedsOf(const Options& options);
  // The configuration with every port's speed, and a bridge id made from the
  // first port's MAC address when none is configured.
  static MrpAgent::BridgeConfig bridgeConfigOf(const Options& options, const PortSpeeds& speeds);

  void doOpen(const std::string& port);
  // Sends what the engine holds back, then lets the loop run a moment for
  // what its transmit timer still has.
  void doFlush();
  TimelinePlace placeOf(const std::string& port) const;
  std::string socketState(const std::string& port) const;
  const Mrp::MrpCounters* engineCounters() const;
  // What the engine holds registered on each port, counted by attribute type.
  std::map<std::string, std::map<std::string, unsigned>> registrationCounts() const;
  // Each port's reservations: [{"class", "streams", "bandwidth"}].
  std::map<std::string, nlohmann::ordered_json> reservationCounts() const;

  Options options_;
  Quarn::Ptr<Quarn::EventLoop> loop_;
  Timeline& timeline_;
  std::ostream& log_;
  // The loop's clock is the process's while the agent exists.
  Quarn::System::ClockScope processClock_;
  // The time of what happens in one dispatch of the loop: what one frame
  // or one timer does shares a time, and its lines can be read as one.
  mutable std::optional<TimelinePlace> stamp_;
  mutable StampEnd stampEnd_;
  PortSpeeds speeds_;
  // The ports' sockets, counted per port.
  Quarn::Ptr<CountingPamFactory> sockets_;
  MrpAgent::Bridge bridge_;
  std::vector<Declaration> declared_;
  PortWatcher ports_;
};

}  // namespace MrpCli
