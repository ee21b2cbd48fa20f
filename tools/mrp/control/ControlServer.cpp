#include "control/ControlServer.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "quarn/Clock.h"

namespace MrpCli {

namespace {

// How soon a client whose socket was full is written to again.
constexpr double kRetrySeconds = 0.02;

[[noreturn]] void fail(int error, const std::string& what) {
  throw std::system_error(error, std::generic_category(), what);
}

sockaddr_un addressOf(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.empty() || path.size() >= sizeof address.sun_path) {
    fail(ENAMETOOLONG, "control socket '" + path + "': not a usable socket path");
  }
  std::memcpy(address.sun_path, path.data(), path.size());
  return address;
}

// Whether a process answers on the socket file at `path`.
bool answered(const sockaddr_un& address) {
  const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (fd < 0) return false;
  const bool connected = connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  close(fd);
  return connected;
}

}  // namespace

// One connection: its request comes in, its answer goes out, then it ends.
class ControlServer::Client : public Quarn::EventLoop::FdNotifiee, public Quarn::Clock::Notifiee {
 public:
  Client(ControlServer& server, int fd)
      : Quarn::Clock::Notifiee(&server.loop_->clock()),
        server_(server),
        fd_(fd),
        deadline_(server.loop_->clock().now() + kClientSeconds) {
    server_.loop_->fdNotifieeIs(fd_, this);
    timeIs(deadline_);
  }
  ~Client() override {
    server_.loop_->fdNotifieeDel(fd_);
    close(fd_);
  }

  void onReadable() override {
    char buffer[4096];
    for (;;) {
      const ssize_t n = recv(fd_, buffer, sizeof buffer, MSG_DONTWAIT);
      if (n < 0 && errno == EINTR) continue;
      if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) return;
      if (n < 0) return server_.doClose(fd_);
      if (n == 0) return handleEnd();
      request_.append(buffer, static_cast<std::size_t>(n));
      const std::size_t newline = request_.find('\n');
      if (newline != std::string::npos) {
        request_.resize(newline);
        return doAnswer(server_.answerOf(request_));
      }
      if (request_.size() > kMaxRequestBytes) {
        return doAnswer(ControlAnswer::failure("a request is at most " + std::to_string(kMaxRequestBytes) +
                                               " bytes, ended by a newline"));
      }
    }
  }

  void onTime() override {
    if (answering_ && server_.loop_->clock().now() < deadline_) return doWrite();
    server_.log_("control: a client took more than " + std::to_string(static_cast<int>(kClientSeconds)) +
                 " s; dropped");
    server_.doClose(fd_);
  }

 private:
  void handleEnd() {
    if (request_.empty()) return server_.doClose(fd_);
    server_.log_("control: a client left in the middle of its request");
    doAnswer(ControlAnswer::failure("the request ended before its newline"));
  }

  void doAnswer(const ControlAnswer& answer) {
    server_.loop_->fdNotifieeDel(fd_);  // nothing more is read
    answering_ = true;
    answer_ = answer.line() + "\n";
    doWrite();
  }

  void doWrite() {
    while (written_ < answer_.size()) {
      const ssize_t n = send(fd_, answer_.data() + written_, answer_.size() - written_, MSG_DONTWAIT | MSG_NOSIGNAL);
      if (n < 0 && errno == EINTR) continue;
      if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
        timeIs(std::min(deadline_, server_.loop_->clock().now() + kRetrySeconds));
        return;
      }
      if (n < 0) break;  // the client has gone: nobody is left to tell
      written_ += static_cast<std::size_t>(n);
    }
    server_.doClose(fd_);
  }

  ControlServer& server_;
  int fd_;
  double deadline_;
  std::string request_;
  bool answering_ = false;
  std::string answer_;
  std::size_t written_ = 0;
};

ControlServer::ControlServer(Quarn::Ptr<Quarn::EventLoop> loop, std::string path, Handler handler, Log log)
    : loop_(std::move(loop)),
      path_(std::move(path)),
      handler_(std::move(handler)),
      log_(std::move(log)),
      listenReactor_(this) {
  const sockaddr_un address = addressOf(path_);
  const std::filesystem::path directory = std::filesystem::path(path_).parent_path();
  std::error_code ignored;
  if (!directory.empty()) std::filesystem::create_directories(directory, ignored);
  if (answered(address)) fail(EADDRINUSE, "control socket '" + path_ + "': another process answers there");
  unlink(path_.c_str());

  listenFd_ = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
  if (listenFd_ < 0) fail(errno, "control socket");
  // Whoever may control the agent is whoever may reach the file: its owner.
  const mode_t umaskBefore = umask(0077);
  const bool bound = bind(listenFd_, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  const int bindError = errno;
  umask(umaskBefore);
  if (!bound || listen(listenFd_, static_cast<int>(kMaxClients)) < 0) {
    const int error = bound ? errno : bindError;
    close(listenFd_);
    fail(error, "control socket '" + path_ + "'");
  }
  loop_->fdNotifieeIs(listenFd_, &listenReactor_);
}

ControlServer::~ControlServer() {
  clients_.clear();
  loop_->fdNotifieeDel(listenFd_);
  close(listenFd_);
  unlink(path_.c_str());
}

void ControlServer::handleAccept() {
  for (;;) {
    const int fd = accept4(listenFd_, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
    if (fd < 0) {
      if (errno == EINTR || errno == ECONNABORTED) continue;
      return;  // EAGAIN, or out of descriptors: the backlog waits
    }
    if (clients_.size() >= kMaxClients) {
      log_("control: more than " + std::to_string(kMaxClients) + " clients at once; one refused");
      close(fd);
      continue;
    }
    clients_.emplace(fd, std::make_unique<Client>(*this, fd));
  }
}

ControlAnswer ControlServer::answerOf(const std::string& request) const {
  try {
    return handler_(request);
  } catch (const std::exception& error) {
    log_(std::string("control: a request failed: ") + error.what());
    return ControlAnswer::failure(error.what());
  }
}

void ControlServer::doClose(int fd) { clients_.erase(fd); }

}  // namespace MrpCli
