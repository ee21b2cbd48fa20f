#include "support/RawSocket.h"

#include <arpa/inet.h>
#include <linux/if_ether.h>
#include <linux/if_packet.h>
#include <net/if.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <system_error>

namespace MrpTest {

namespace {

[[noreturn]] void fail(const std::string& what) {
  throw std::system_error(errno, std::generic_category(), "RawSocket " + what);
}

}  // namespace

RawSocket::RawSocket(const std::string& ifname) {
  // Protocol 0 receives nothing until bound to the interface.
  fd_ = socket(AF_PACKET, SOCK_RAW | SOCK_CLOEXEC, 0);
  if (fd_ < 0) fail("socket");
  ifreq ifr{};
  std::strncpy(ifr.ifr_name, ifname.c_str(), sizeof ifr.ifr_name - 1);
  if (ioctl(fd_, SIOCGIFHWADDR, &ifr) < 0) {
    close(fd_);
    fail(ifname + " address");
  }
  std::array<std::uint8_t, Velo::EthAddr::kSize> mac;
  std::memcpy(mac.data(), ifr.ifr_hwaddr.sa_data, mac.size());
  ethAddr_ = Velo::EthAddr(mac);
  sockaddr_ll sll{};
  sll.sll_family = AF_PACKET;
  sll.sll_protocol = htons(ETH_P_ALL);
  sll.sll_ifindex = static_cast<int>(if_nametoindex(ifname.c_str()));
  if (sll.sll_ifindex == 0 || bind(fd_, reinterpret_cast<sockaddr*>(&sll), sizeof sll) < 0) {
    close(fd_);
    fail(ifname + " bind");
  }
}

RawSocket::~RawSocket() { close(fd_); }

bool RawSocket::send(const Bytes& frame) const {
  return ::send(fd_, frame.data(), frame.size(), 0) == static_cast<ssize_t>(frame.size());
}

std::optional<RawSocket::Bytes> RawSocket::recv(double waitSeconds) const {
  for (;;) {
    pollfd p{fd_, POLLIN, 0};
    if (poll(&p, 1, static_cast<int>(std::ceil(waitSeconds * 1000))) <= 0) return std::nullopt;
    Bytes frame(65536);
    sockaddr_ll from{};
    socklen_t fromLen = sizeof from;
    ssize_t n = recvfrom(fd_, frame.data(), frame.size(), 0, reinterpret_cast<sockaddr*>(&from), &fromLen);
    if (n < 0) return std::nullopt;
    if (from.sll_pkttype == PACKET_OUTGOING) continue;
    frame.resize(static_cast<std::size_t>(n));
    return frame;
  }
}

bool RawSocket::seen(const std::function<bool(const Bytes&)>& match, double waitSeconds) const {
  while (std::optional<Bytes> frame = recv(waitSeconds)) {
    if (match(*frame)) return true;
  }
  return false;
}

}  // namespace MrpTest
