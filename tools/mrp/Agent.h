#pragma once

#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Bridge.h"
#include "ControlAnswer.h"
#include "ControlRequest.h"
#include "ControlServer.h"
#include "PortWatcher.h"
#include "SignalWatcher.h"
#include "Timeline.h"
#include "quarn/EventLoop.h"

namespace MrpCli {

// The reference agent on real Linux ports: the bridge of `mrp sim` on the
// real clock and the epoll loop, its ports Linux interfaces opened with
// packet sockets (one per port and application), controlled through a Unix
// socket while it runs.
//
// A port is open on the bridge while its interface exists and is up; one
// that goes down or is deleted is closed (its registrations go with it) and
// opened again when it is back. What the agent was asked to declare on a
// port is declared again when the port comes back.
//
// SIGINT and SIGTERM end run(): the bridge withdraws every declaration it
// makes, and the Lv messages are sent before run() returns.
class Agent : public MrpAgent::Bridge::Observer, public PortWatcher::Observer {
 public:
  // The name the bridge has in the timeline.
  static constexpr const char* kBridgeName = "agent";

  struct Options {
    std::vector<std::string> ports;
    std::vector<Mrp::MrpApplication> applications;
    MrpAgent::BridgeConfig config;
    std::string controlPath;
  };

  // Registrations, requests and port changes go to `timeline`; what goes
  // wrong to `log`, one line each. Installs the loop's clock as the
  // process's. Throws std::system_error when the control socket or the
  // watches cannot be set up.
  Agent(Options options, Timeline& timeline, std::ostream& log);
  ~Agent() override;
  Agent(const Agent&) = delete;
  Agent& operator=(const Agent&) = delete;

  // Runs until SIGINT or SIGTERM, then withdraws and flushes.
  void run();
  // Carries out one control request (a line of JSON).
  ControlAnswer answer(const std::string& request);

  // MrpAgent::Bridge::Observer
  void onJoin(const MrpAgent::Bridge& bridge, const std::string& port, const MrpAgent::AttributeValue& value) override;
  void onLeave(const MrpAgent::Bridge& bridge, const std::string& port, const MrpAgent::AttributeValue& value) override;
  // PortWatcher::Observer
  void onPortState(const std::string& port, PortWatcher::State state) override;

 private:
  // A declaration the agent was asked for: on one port, or on every port.
  struct Declaration {
    MrpAgent::AttributeValue value;
    std::optional<std::string> port;
  };

  // The loop's clock is the process's while the agent exists.
  class ProcessClock {
   public:
    explicit ProcessClock(const Quarn::Ptr<Quarn::EventLoop>& loop);
    ~ProcessClock();
    ProcessClock(const ProcessClock&) = delete;
    ProcessClock& operator=(const ProcessClock&) = delete;
  };

  void doOpen(const std::string& port);
  void doStop();
  // Sends what the engines hold back, then lets the loop run a moment for
  // what their transmit timers still have.
  void doFlush();
  TimelinePlace placeOf(const std::string& port) const;

  ControlAnswer doDeclare(const ControlRequest& request);
  ControlAnswer doWithdraw(const ControlRequest& request);
  ControlAnswer doShow() const;
  ControlAnswer doCounters() const;
  ControlAnswer doPorts() const;
  ControlAnswer doTrace(const ControlRequest& request);

  Options options_;
  Timeline& timeline_;
  std::ostream& log_;
  Quarn::Ptr<Quarn::EventLoop> loop_;
  ProcessClock processClock_;
  Quarn::Seconds start_;
  MrpAgent::Bridge bridge_;
  std::vector<Declaration> declared_;
  ControlServer control_;
  SignalWatcher signals_;
  PortWatcher ports_;
};

}  // namespace MrpCli
