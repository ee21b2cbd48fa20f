#pragma once

#include <nlohmann/json.hpp>

#include <functional>
#include <string>

#include "quarn/EventLoop.h"
#include "quarn/Ptr.h"

namespace MrpCli {

// One end of the connection between the agent's supervisor and one of its
// workers: a stream socket carrying one JSON message per line, both ways.
// Arriving messages are handed to `onMessage` from the loop; when the other
// end goes, `onClosed` runs once (and may destroy the channel).
class WorkerChannel {
 public:
  using Json = nlohmann::ordered_json;
  using OnMessage = std::function<void(const Json& message)>;
  using OnClosed = std::function<void()>;

  // Takes `fd`, a connected stream socket, and watches it on `loop`.
  WorkerChannel(Quarn::Ptr<Quarn::EventLoop> loop, int fd, OnMessage onMessage, OnClosed onClosed);
  ~WorkerChannel();
  WorkerChannel(const WorkerChannel&) = delete;
  WorkerChannel& operator=(const WorkerChannel&) = delete;

  bool open() const { return fd_ >= 0; }
  // Sends a message, waiting while the other end's buffer is full; false
  // when the other end is gone.
  bool send(const Json& message);
  // Sends lines of text, each a message ended by a newline, in one go.
  bool sendLines(const std::string& lines);
  // A message as one line of text, with its newline.
  static std::string lineOf(const Json& message);
  // Takes in what arrives, outside the loop, until `done` holds, the other
  // end goes or `seconds` pass; whether `done` held.
  bool waitUntil(const std::function<bool()>& done, double seconds);
  // Takes in what has arrived already, without waiting.
  void drain() { waitUntil([] { return false; }, 0); }

 private:
  class FdReactor : public Quarn::EventLoop::FdNotifiee {
   public:
    explicit FdReactor(WorkerChannel* owner) : owner_(owner) {}
    void onReadable() override { owner_->handleReadable(); }

   private:
    WorkerChannel* owner_;
  };

  // Reads what is there and hands on every whole line; returns false once
  // the channel closed (the object may be gone then).
  bool handleReadable();
  void doClose();

  Quarn::Ptr<Quarn::EventLoop> loop_;
  int fd_;
  OnMessage onMessage_;
  OnClosed onClosed_;
  std::string pending_;
  FdReactor reactor_;
};

}  // namespace MrpCli
