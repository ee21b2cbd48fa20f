#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "control/ControlAnswer.h"
#include "quarn/EventLoop.h"
#include "quarn/Ptr.h"

namespace MrpCli {

// The agent's control socket: a Unix stream socket on which a client sends
// one request, a line of JSON ended by a newline, and gets one answer line
// back (ControlAnswer); then the agent closes the connection.
//
// The agent never waits for a client. Sockets are non-blocking; a request
// is at most kMaxRequestBytes; an answer the socket cannot take at once is
// sent on as the client reads it; a client that has neither sent its
// request nor read its answer within kClientSeconds is dropped, and at most
// kMaxClients are served at a time. A request cut short (the client closes
// before the newline) or too long gets an error answer of its own.
class ControlServer {
 public:
  static constexpr std::size_t kMaxRequestBytes = 64 * 1024;
  static constexpr std::size_t kMaxClients = 16;
  static constexpr double kClientSeconds = 5;

  using Handler = std::function<ControlAnswer(const std::string& request)>;
  // What the server has to say about its clients, for the agent's log.
  using Log = std::function<void(const std::string& line)>;

  // Listens on `path`, making its directory if missing. A socket file that
  // nobody answers on any more is replaced; one on which another process
  // answers is an error. Throws std::system_error.
  ControlServer(Quarn::Ptr<Quarn::EventLoop> loop, std::string path, Handler handler, Log log);
  // Closes every connection and removes the socket file.
  ~ControlServer();
  ControlServer(const ControlServer&) = delete;
  ControlServer& operator=(const ControlServer&) = delete;

  const std::string& path() const { return path_; }
  std::size_t clientCount() const { return clients_.size(); }

 private:
  class Client;

  class ListenReactor : public Quarn::EventLoop::FdNotifiee {
   public:
    explicit ListenReactor(ControlServer* owner) : owner_(owner) {}
    void onReadable() override { owner_->handleAccept(); }

   private:
    ControlServer* owner_;
  };

  void handleAccept();
  // The handler's answer; a request it throws on is answered with the error.
  ControlAnswer answerOf(const std::string& request) const;
  // Ends a client's connection; the client object goes with it.
  void doClose(int fd);

  Quarn::Ptr<Quarn::EventLoop> loop_;
  std::string path_;
  Handler handler_;
  Log log_;
  int listenFd_ = -1;
  ListenReactor listenReactor_;
  std::map<int, std::unique_ptr<Client>> clients_;
};

}  // namespace MrpCli
