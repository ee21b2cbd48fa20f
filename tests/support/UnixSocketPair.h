#pragma once

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <stdexcept>

namespace MrpTest {

// A connected pair of Unix stream sockets standing in for an attribute log
// socket and its reader. Both ends are non-blocking, so the writer's kernel
// send queue can be filled (the reader not reading) and drained (the reader
// reading) without waiting.
class UnixSocketPair {
 public:
  // `sendBuffer` asks the kernel for that SO_SNDBUF on the writer (it
  // rounds and doubles it); 0 keeps the default.
  explicit UnixSocketPair(int sendBuffer = 0) {
    if (socketpair(AF_UNIX, SOCK_STREAM, 0, fds_.data()) != 0) throw std::runtime_error("socketpair failed");
    if (sendBuffer > 0) setsockopt(writer(), SOL_SOCKET, SO_SNDBUF, &sendBuffer, sizeof(sendBuffer));
    for (int fd : fds_) fcntl(fd, F_SETFL, fcntl(fd, F_GETFL) | O_NONBLOCK);
  }
  UnixSocketPair(const UnixSocketPair&) = delete;
  UnixSocketPair& operator=(const UnixSocketPair&) = delete;
  ~UnixSocketPair() {
    for (int fd : fds_) close(fd);
  }

  int writer() const { return fds_[0]; }
  int reader() const { return fds_[1]; }

  // Writes `bytes` octets into the writer; false if the queue took fewer.
  bool write(std::size_t bytes) {
    std::array<char, 1024> chunk{};
    while (bytes > 0) {
      const std::size_t n = bytes < chunk.size() ? bytes : chunk.size();
      if (::write(writer(), chunk.data(), n) != static_cast<ssize_t>(n)) return false;
      bytes -= n;
    }
    return true;
  }
  // Writes until the kernel refuses more: the send queue is full.
  void fill() {
    std::array<char, 1024> chunk{};
    while (::write(writer(), chunk.data(), chunk.size()) > 0) {
    }
  }
  // Reads everything queued: the send queue empties.
  void drain() {
    std::array<char, 4096> chunk{};
    while (::read(reader(), chunk.data(), chunk.size()) > 0) {
    }
  }

 private:
  std::array<int, 2> fds_{};
};

}  // namespace MrpTest
