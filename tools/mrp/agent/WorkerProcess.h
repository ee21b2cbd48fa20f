#pragma once

#include <nlohmann/json.hpp>

#include <sys/types.h>

#include <iosfwd>
#include <memory>
#include <optional>
#include <string>

#include "agent/RestartBackoff.h"
#include "agent/WorkerChannel.h"
#include "quarn/Clock.h"
#include "quarn/EventLoop.h"

namespace MrpCli {

// The supervisor's side of one worker process of `mrp agent` (AgentWorker):
// it starts `mrp agent-worker` with a channel to it, hands on what the
// worker says, and when the worker dies reports how on the log and starts
// it again after a back-off (RestartBackoff: at least a second, longer while
// it keeps dying young), so that a crash loop does not spin.
//
// A worker never outlives the supervisor: it gets SIGTERM when the
// supervisor goes, however it goes, and its channel closes.
class WorkerProcess {
 public:
  using Json = nlohmann::ordered_json;


  class Observer {
   public:
    virtual ~Observer() = default;
    // A message of the worker's that answers no question.
    virtual void onWorkerMessage(WorkerProcess& worker, const Json& message) = 0;
    // The worker was started (again); its start message is sent.
    virtual void onWorkerStarted(WorkerProcess& worker) = 0;
    // The worker has its bridge and its ports open.
    virtual void onWorkerReady(WorkerProcess& worker) = 0;
  };

  // `name` names the worker on the log ("msrp"); `start` is its start
  // message. Starts the worker; throws std::system_error when it cannot.
  WorkerProcess(Quarn::Ptr<Quarn::EventLoop> loop, std::string name, Json start, Observer* observer,
                std::ostream& log);
  // Kills a worker that still runs, and reaps it.
  ~WorkerProcess();
  WorkerProcess(const WorkerProcess&) = delete;
  WorkerProcess& operator=(const WorkerProcess&) = delete;

  const std::string& name() const { return name_; }
  bool running() const { return pid_ > 0; }
  // How often the worker was started again after it died.
  unsigned restarts() const { return restarts_; }
  // Running, with its bridge and its ports open.
  bool ready() const { return running() && ready_; }

  // Sends a message; false while the worker is not running.
  bool send(const Json& message);
  // Asks a question ({"ask": ...} or {"trace": ...}) and waits up to
  // `seconds` for its answer; what the worker says meanwhile is handed on.
  // nullopt when the worker does not answer.
  std::optional<Json> ask(Json question, double seconds);

  // Reaps the worker if it has ended (on SIGCHLD): reports it and, unless
  // stopping, starts it again later.
  void handleChildExit();
  // Asks the worker to stop; it is not started again from then on.
  void doStop();
  // Kills a worker that has not stopped.
  void doKill();

 private:
  class RestartTimer : public Quarn::Clock::Notifiee {
   public:
    RestartTimer(Quarn::Clock* clock, WorkerProcess* owner) : Notifiee(clock), owner_(owner) {}
    void onTime() override { owner_->doStart(); }

   private:
    WorkerProcess* owner_;
  };

  void doStart();
  void handleMessage(const Json& message);
  void doReport(int status);

  Quarn::Ptr<Quarn::EventLoop> loop_;
  std::string name_;
  Json start_;
  Observer* observer_;
  std::ostream& log_;
  pid_t pid_ = -1;
  bool ready_ = false;
  Quarn::Seconds startedAt_ = 0;
  unsigned restarts_ = 0;
  RestartBackoff backoff_;
  bool stopping_ = false;
  std::unique_ptr<WorkerChannel> channel_;
  unsigned nextQuestion_ = 1;
  std::optional<Json> answer_;
  unsigned awaited_ = 0;
  RestartTimer restart_;
};

// How a process ended, for a person: "exited with status 1", "was killed by
// signal 9 (Killed)".
std::string exitText(int waitStatus);

}  // namespace MrpCli
