#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Bridge.h"
#include "decode/Decoder.h"
#include "format/CaptureWriter.h"
#include "format/Scenario.h"
#include "quarn/Clock.h"
#include "quarn/ClockScope.h"
#include "quarn/Log.h"
#include "report/Timeline.h"
#include "sim/ApplicationPamFactory.h"
#include "velo/MemPam.h"

namespace MrpCli {

// Runs a scenario: its bridges, built from the real engines, on a simulated
// clock, their ports joined by in-memory wires, and what happens to them told
// to a timeline as it happens.
//
// Each port has one in-memory end per application (as each engine has its
// own socket on a Linux port), and a link joins the ends of each
// application. A linked port is plugged into its link while the link is up
// and into nothing while it is down, so it sends nothing. A port without a
// link is plugged into loose ends that take what the port sends and answer
// nothing. A frame injected into a port reaches the end of the application
// it is addressed to, or every end when it is addressed to none.
//
// While it exists the simulation is the process's clock and log sink (the
// engines' log lines are dropped), and it sets the engines' LeaveAll
// randomisation and rand()'s seed from the scenario; it puts them back when
// it goes.
class Simulation : public MrpAgent::Bridge::Observer {
 public:
  Simulation(const Scenario& scenario, Timeline& timeline);
  ~Simulation() override;
  Simulation(const Simulation&) = delete;
  Simulation& operator=(const Simulation&) = delete;

  // The frames the port puts on its wire go to `capture` too, timed
  // `origin` + simulated seconds.
  void captureIs(const Scenario::PortRef& port, std::shared_ptr<CaptureWriter> capture, Quarn::Seconds origin = 0);

  // Runs the scenario's events up to `until` seconds, then tells each
  // bridge's registrations at `until`, and the streams of each MSRP bridge
  // that has any.
  void run(Quarn::Seconds until);

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

 private:
  struct Port;

  class PortTap : public Velo::MemPam::Tap {
   public:
    PortTap(Simulation* owner, Port* port) : owner_(owner), port_(port) {}
    void onFrame(const Velo::MemPam&, const Velo::Pkt& frame) override { owner_->handleTransmit(*port_, frame); }

   private:
    Simulation* owner_;
    Port* port_;
  };

  struct Port {
    std::string bridge;
    std::string name;
    std::map<Mrp::MrpApplication, Quarn::Ptr<Velo::MemPam>> pams;
    std::vector<Quarn::Ptr<Velo::MemPam>> looseEnds;  // for a port without a link
    std::unique_ptr<PortTap> tap;
    std::shared_ptr<CaptureWriter> capture;
    Quarn::Seconds captureOrigin = 0;
  };

  // What the simulation changes of the process while it runs.
  class ProcessSettings {
   public:
    ProcessSettings(Quarn::Ptr<Quarn::Clock> clock, const Scenario::Config& config);
    ~ProcessSettings();
    ProcessSettings(const ProcessSettings&) = delete;
    ProcessSettings& operator=(const ProcessSettings&) = delete;

   private:
    Quarn::System::ClockScope clockScope_;
    Quarn::DiscardLogSink logSink_;
    std::optional<std::string> randomizationBefore_;
  };

  void doBuildBridge(const Scenario::Bridge& described, std::size_t index);
  void doApply(const Scenario::Event& event);
  void doApply(const Scenario::Declare& declare);
  void doApply(const Scenario::LinkState& linkState);
  void doApply(const Scenario::Role& role);
  void doApply(const Scenario::Inject& inject);
  void handleTransmit(Port& port, const Velo::Pkt& frame);
  void doPlug(const Scenario::Link& link, bool up);
  Port& port(const std::string& bridge, const std::string& port);
  MrpAgent::Bridge& bridge(const std::string& name);
  TimelinePlace placeOf(const std::string& bridge, const std::string& port) const;

  const Scenario& scenario_;
  Timeline& timeline_;
  Quarn::Ptr<Quarn::SimClock> clock_;
  ProcessSettings settings_;
  Decoder decoder_;
  unsigned transmitted_ = 0;
  std::map<std::string, std::unique_ptr<Port>> ports_;  // by "bridge:port"
  std::vector<std::unique_ptr<MrpAgent::Bridge>> bridges_;
};

}  // namespace MrpCli
