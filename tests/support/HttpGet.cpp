#include "support/HttpGet.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace MrpTest {

std::optional<std::string> httpGet(std::uint16_t port, const std::string& path) {
  const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (fd < 0) return std::nullopt;
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  std::string answer;
  if (connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) {
    const std::string request = "GET " + path + " HTTP/1.0\r\nHost: 127.0.0.1\r\n\r\n";
    if (write(fd, request.data(), request.size()) == static_cast<ssize_t>(request.size())) {
      char buffer[4096];
      for (ssize_t n; (n = read(fd, buffer, sizeof buffer)) > 0;) answer.append(buffer, static_cast<std::size_t>(n));
    }
  }
  close(fd);
  const std::size_t body = answer.find("\r\n\r\n");
  if (answer.rfind("HTTP/1.", 0) != 0 || answer.find(" 200 ") != 8 || body == std::string::npos) return std::nullopt;
  return answer.substr(body + 4);
}

}  // namespace MrpTest
