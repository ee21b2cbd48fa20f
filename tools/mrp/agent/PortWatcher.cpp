#include "agent/PortWatcher.h"

#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <system_error>

namespace MrpCli {

namespace {

[[noreturn]] void fail(const char* what) {
  throw std::system_error(errno, std::generic_category(), std::string("port watcher: ") + what);
}

}  // namespace

const char* portStateName(PortWatcher::State state) {
  switch (state) {
    case PortWatcher::State::absent:
      return "absent";
    case PortWatcher::State::down:
      return "down";
    case PortWatcher::State::up:
      return "up";
  }
  return "?";
}

PortWatcher::PortWatcher(Quarn::Ptr<Quarn::EventLoop> loop, std::vector<std::string> ports, Observer* observer)
    : loop_(std::move(loop)), ports_(std::move(ports)), observer_(observer), reactor_(this) {
  netlinkFd_ = socket(AF_NETLINK, SOCK_RAW | SOCK_NONBLOCK | SOCK_CLOEXEC, NETLINK_ROUTE);
  if (netlinkFd_ < 0) fail("netlink socket");
  sockaddr_nl address{};
  address.nl_family = AF_NETLINK;
  address.nl_groups = RTMGRP_LINK;
  if (bind(netlinkFd_, reinterpret_cast<const sockaddr*>(&address), sizeof address) < 0) {
    const int error = errno;
    close(netlinkFd_);
    errno = error;
    fail("netlink bind");
  }
  ioctlFd_ = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  if (ioctlFd_ < 0) {
    const int error = errno;
    close(netlinkFd_);
    errno = error;
    fail("socket");
  }
  loop_->fdNotifieeIs(netlinkFd_, &reactor_);
}

PortWatcher::~PortWatcher() {
  loop_->fdNotifieeDel(netlinkFd_);
  close(netlinkFd_);
  close(ioctlFd_);
}

PortWatcher::State PortWatcher::state(const std::string& port) const {
  auto it = seen_.find(port);
  return it == seen_.end() ? State::absent : it->second.state;
}

void PortWatcher::handleReadable() {
  // What changed is looked up below; the messages only say when to look.
  char buffer[8192];
  for (;;) {
    const ssize_t n = recv(netlinkFd_, buffer, sizeof buffer, MSG_DONTWAIT);
    if (n > 0) continue;
    // ENOBUFS: notifications were lost, which the look below makes good.
    if (n < 0 && (errno == EINTR || errno == ENOBUFS)) continue;
    break;
  }
  doRefresh();
}

PortWatcher::Seen PortWatcher::seenNow(const std::string& port) const {
  ifreq ifr{};
  if (port.size() >= sizeof ifr.ifr_name) return {};
  std::memcpy(ifr.ifr_name, port.data(), port.size());
  if (ioctl(ioctlFd_, SIOCGIFINDEX, &ifr) < 0) return {};
  const int ifindex = ifr.ifr_ifindex;
  if (ioctl(ioctlFd_, SIOCGIFFLAGS, &ifr) < 0) return {};
  const bool up = (ifr.ifr_flags & IFF_UP) && (ifr.ifr_flags & IFF_RUNNING);
  return {up ? State::up : State::down, ifindex, false};
}

void PortWatcher::doRefresh() {
  for (const std::string& port : ports_) {
    Seen& seen = seen_[port];
    const Seen now = seenNow(port);
    const bool replaced = seen.reported && now.state != State::absent && seen.state != State::absent &&
                          now.ifindex != seen.ifindex;
    if (replaced) doReport(port, seen, State::absent);
    seen.ifindex = now.ifindex;
    if (!seen.reported || seen.state != now.state) doReport(port, seen, now.state);
  }
}

void PortWatcher::doReport(const std::string& port, Seen& seen, State state) {
  seen.state = state;
  seen.reported = true;
  observer_->onPortState(port, state);
}

}  // namespace MrpCli
