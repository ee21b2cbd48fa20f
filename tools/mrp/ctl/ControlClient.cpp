#include "ctl/ControlClient.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>

namespace MrpCli {

namespace {

using Clock = std::chrono::steady_clock;

// A connected socket, closed when it goes.
class Connection {
 public:
  explicit Connection(const std::string& path) : path_(path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.empty() || path.size() >= sizeof address.sun_path) fail("not a usable socket path");
    std::memcpy(address.sun_path, path.data(), path.size());
    fd_ = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd_ < 0) fail(std::strerror(errno));
    if (connect(fd_, reinterpret_cast<const sockaddr*>(&address), sizeof address) < 0) failToConnect(errno);
  }
  ~Connection() {
    if (fd_ >= 0) close(fd_);
  }
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  void send(const std::string& bytes, Clock::time_point deadline) const {
    std::size_t sent = 0;
    while (sent < bytes.size()) {
      wait(POLLOUT, deadline);
      const ssize_t n = ::send(fd_, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL | MSG_DONTWAIT);
      if (n < 0 && (errno == EINTR || errno == EAGAIN || errno == EWOULDBLOCK)) continue;
      if (n < 0) fail(std::string("sending: ") + std::strerror(errno));
      sent += static_cast<std::size_t>(n);
    }
  }

  std::string receiveLine(Clock::time_point deadline) const {
    std::string line;
    char buffer[65536];
    for (;;) {
      wait(POLLIN, deadline);
      const ssize_t n = recv(fd_, buffer, sizeof buffer, MSG_DONTWAIT);
      if (n < 0 && (errno == EINTR || errno == EAGAIN || errno == EWOULDBLOCK)) continue;
      if (n < 0) fail(std::string("receiving: ") + std::strerror(errno));
      if (n == 0) fail("the agent closed the connection without an answer");
      line.append(buffer, static_cast<std::size_t>(n));
      const std::size_t newline = line.find('\n');
      if (newline != std::string::npos) return line.substr(0, newline);
    }
  }

 private:
  // A path that is there but no socket is not where the agent listens.
  [[noreturn]] void failToConnect(int error) const {
    struct stat status {};
    if (error == ECONNREFUSED && stat(path_.c_str(), &status) == 0 && !S_ISSOCK(status.st_mode)) {
      fail("not a socket (the agent listens where its --control says)");
    }
    fail(std::strerror(error));
  }

  [[noreturn]] void fail(const std::string& why) const {
    throw ControlClientError("cannot reach the agent at " + path_ + ": " + why);
  }

  void wait(short events, Clock::time_point deadline) const {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
    pollfd p{fd_, events, 0};
    if (left <= 0 || poll(&p, 1, static_cast<int>(left)) == 0) fail("no answer in time");
  }

  std::string path_;
  int fd_ = -1;
};

}  // namespace

std::string controlExchange(const std::string& path, const std::string& request, double waitSeconds) {
  const auto deadline = Clock::now() + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(waitSeconds));
  const Connection connection(path);
  connection.send(request + "\n", deadline);
  return connection.receiveLine(deadline);
}

}  // namespace MrpCli
