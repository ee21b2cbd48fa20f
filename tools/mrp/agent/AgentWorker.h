#pragma once

#include <nlohmann/json.hpp>

#include <iosfwd>
#include <memory>
#include <optional>
#include <vector>

#include "agent/Agent.h"
#include "agent/WorkerChannel.h"
#include "quarn/EventLoop.h"

namespace MrpCli {

// One worker process of `mrp agent`: the bridge of one application on the
// real ports, with packet sockets, an event loop and a clock of its own.
// The kernel filter of an engine's sockets is made once per process, by the
// first engine, so each application needs a process of its own.
//
// It hears its supervisor on a channel (WorkerChannel), one message a line:
//   {"start": {"app": "msrp", "ports": [...], "config": "<file text>", "origin": 1234.5}}
//   {"declare": [<attribute>, ...], "port": "eth1"}   {"withdraw": [<attribute>, ...]}
//   {"ask": "show" | "counters" | "ports", "id": 7}   {"trace": "MrpSm/0-9", "id": 8}
//   {"stop": true}
// (attributes as attributeMessage() writes them; "port" absent for every
// port), and answers {"id": 7, "answer": ...}. It says {"ready": true} once
// its bridge is there with its ports open, and sends its timeline as
// RelayTimeline messages.
//
// It stops, withdrawing what it declares and sending the Lv messages, on
// "stop", on SIGTERM (also sent when the supervisor dies) and when the
// channel closes; SIGINT, which a terminal sends the whole process group,
// is the supervisor's to act on.
class AgentWorker {
 public:
  // Takes the channel's socket; `application` must be the one the start
  // message names.
  AgentWorker(int channelFd, std::string application, std::ostream& log);
  ~AgentWorker();
  AgentWorker(const AgentWorker&) = delete;
  AgentWorker& operator=(const AgentWorker&) = delete;

  // Runs until told to stop; the exit status: 0, or 1 when it could not start.
  int run();

 private:
  using Json = nlohmann::ordered_json;

  // Sends the timeline lines of a dispatch once it is over, in one write,
  // so that the supervisor reads what happened at one time together.
  class BatchEnd : public Quarn::Clock::Notifiee {
   public:
    BatchEnd(Quarn::Clock* clock, AgentWorker* owner) : Notifiee(clock), owner_(owner) {}
    void onTime() override { owner_->doSendBatch(); }

   private:
    AgentWorker* owner_;
  };

  void doRelay(const Json& message);
  void doSendBatch();

  void handleMessage(const Json& message);
  void doCarryOut(const Json& message);
  Json answerOf(const std::string& question) const;
  // The agent's options from the start message; throws JsonInputError.
  Agent::Options optionsOf(const Json& start) const;

  std::string application_;
  std::ostream& log_;
  Quarn::Ptr<Quarn::EventLoop> loop_;
  WorkerChannel channel_;
  std::optional<Json> start_;
  std::vector<Json> early_;  // what came before the agent was there
  std::string batch_;        // timeline lines not sent yet
  BatchEnd batchEnd_;
  std::unique_ptr<Timeline> timeline_;
  std::unique_ptr<Agent> agent_;
};

}  // namespace MrpCli
