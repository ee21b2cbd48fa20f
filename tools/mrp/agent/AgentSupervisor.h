#pragma once

#include <nlohmann/json.hpp>

#include <iosfwd>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "AttributeValue.h"
#include "agent/Declaration.h"
#include "agent/MetricsServer.h"
#include "agent/ServiceNotifier.h"
#include "agent/SignalWatcher.h"
#include "agent/WorkerProcess.h"
#include "control/ControlAnswer.h"
#include "control/ControlMerge.h"
#include "control/ControlRequest.h"
#include "control/ControlServer.h"
#include "quarn/EventLoop.h"
#include "report/Timeline.h"

namespace MrpCli {

// `mrp agent`: a small supervisor and one worker process per application
// (AgentWorker), each with its own packet sockets, loop and clock. The
// supervisor owns what the user sees: the control socket that `mrp ctl`
// talks to, the signals and the log. It hands each request to the worker
// of its application, or asks every worker and merges their answers (by
// port, then application); it writes what the workers tell it to its
// timeline; it starts a worker that dies again and declares again what it
// had been asked to declare there.
//
// It tells the service manager (ServiceNotifier) that the agent is ready
// once the control socket listens and every worker has its ports open, and
// that it is stopping on SIGINT or SIGTERM.
//
// SIGINT and SIGTERM end run(): every worker withdraws what it declares and
// sends the Lv messages; one that has not ended within kStopSeconds is
// killed.
class AgentSupervisor : public WorkerProcess::Observer {
 public:
  static constexpr double kStopSeconds = 5;
  // How long a question to a worker may take.
  static constexpr double kAskSeconds = 2;

  struct Options {
    std::vector<std::string> ports;
    std::vector<Mrp::MrpApplication> applications;
    // The configuration file's text, checked already.
    std::string configText = "{}";
    std::string controlPath;
    std::optional<std::string> metricsAddress;  // ADDR:PORT of the Prometheus exposition, or none
  };

  // Throws std::system_error when the control socket, the signals or a
  // worker cannot be set up, std::runtime_error when the metrics cannot be
  // served where asked.
  AgentSupervisor(Options options, Timeline& timeline, std::ostream& log);
  ~AgentSupervisor() override;
  AgentSupervisor(const AgentSupervisor&) = delete;
  AgentSupervisor& operator=(const AgentSupervisor&) = delete;

  // Runs until SIGINT or SIGTERM, then stops the workers.
  void run();
  // Carries out one control request (a line of JSON).
  ControlAnswer answer(const std::string& request);

  // WorkerProcess::Observer
  void onWorkerMessage(WorkerProcess& worker, const nlohmann::ordered_json& message) override;
  void onWorkerStarted(WorkerProcess& worker) override;
  void onWorkerReady(WorkerProcess& worker) override;

 private:
  // Writes out the timeline's held-back lines once a dispatch is over.
  class FlushTimer : public Quarn::Clock::Notifiee {
   public:
    FlushTimer(Quarn::Clock* clock, Timeline* timeline) : Notifiee(clock), timeline_(timeline) {}
    void onTime() override { timeline_->flush(); }

   private:
    Timeline* timeline_;
  };

  WorkerProcess* workerOf(Mrp::MrpApplication application) const;
  // Hands the values of one request (one application's) to their worker.
  void doSend(const char* verb, const std::vector<MrpAgent::AttributeValue>& values,
              const std::optional<std::string>& port) const;
  void doStopWorkers();
  void handleSignal(int signo);
  // Each running worker's answer to a question, in the order of the applications.
  WorkerAnswers answersTo(const nlohmann::ordered_json& question);

  ControlAnswer doDeclare(const ControlRequest& request);
  ControlAnswer doWithdraw(const ControlRequest& request);
  ControlAnswer doShow();
  ControlAnswer doCounters();
  WorkerRestarts workerRestarts() const;
  ControlAnswer doPorts();
  ControlAnswer doStreams();
  ControlAnswer doTrace(const ControlRequest& request);

  Options options_;
  Timeline& timeline_;
  std::ostream& log_;
  Quarn::Ptr<Quarn::EventLoop> loop_;
  std::vector<Declaration> declared_;
  // The state of each port last told to the timeline.
  std::map<std::string, std::string> portStates_;
  FlushTimer flush_;
  ControlServer control_;
  SignalWatcher signals_;
  ServiceNotifier service_;
  std::vector<std::pair<Mrp::MrpApplication, std::unique_ptr<WorkerProcess>>> workers_;
  // Last: it stops answering scrapes before the rest goes.
  std::unique_ptr<MetricsServer> metrics_;
};

}  // namespace MrpCli
