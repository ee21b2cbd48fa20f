#include "support/NotifySocket.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <cstring>
#include <system_error>

namespace MrpTest {

NotifySocket::NotifySocket() {
  const std::string path = dir_.file("notify");
  fd_ = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  if (fd_ < 0) throw std::system_error(errno, std::generic_category(), "notify socket");
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
  if (bind(fd_, reinterpret_cast<const sockaddr*>(&address), sizeof address) < 0) {
    const int error = errno;
    close(fd_);
    throw std::system_error(error, std::generic_category(), "bind " + path);
  }
  env_.emplace("NOTIFY_SOCKET", path);
}

NotifySocket::~NotifySocket() { close(fd_); }

std::optional<std::string> NotifySocket::next(double seconds) const {
  pollfd p{fd_, POLLIN, 0};
  if (poll(&p, 1, static_cast<int>(std::ceil(seconds * 1000))) <= 0) return std::nullopt;
  char buffer[4096];
  const ssize_t n = recv(fd_, buffer, sizeof buffer, 0);
  if (n < 0) return std::nullopt;
  return std::string(buffer, static_cast<std::size_t>(n));
}

}  // namespace MrpTest
