#include "velo/PacketSocketPam.h"

#include <arpa/inet.h>
#include <linux/filter.h>
#include <linux/if_ether.h>
#include <linux/if_packet.h>
#include <net/if.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <system_error>

#include "quarn/Trace.h"
#include "velo/EthHdr.h"

namespace Velo {

namespace {

Quarn::TraceTag& veloTrace = Quarn::traceTag("Velo");

constexpr std::size_t kVlanTagSize = 4;
constexpr std::size_t kMacAddrsSize = 2 * EthAddr::kSize;

[[noreturn]] void fail(int error, const IntfId& intfId, const std::string& what) {
  throw std::system_error(error, std::generic_category(), "PacketSocketPam " + intfId.name() + ": " + what);
}

void setOption(int fd, int level, int name, const void* value, socklen_t size, const IntfId& intfId,
               const char* what) {
  if (setsockopt(fd, level, name, value, size) < 0) fail(errno, intfId, what);
}

// Puts a tag the kernel took out of the frame back behind the MAC addresses.
void vlanTagRestore(Pkt& pkt, std::uint16_t tpid, std::uint16_t tci) {
  std::uint8_t* p = pkt.prepend(kVlanTagSize);
  std::memmove(p, p + kVlanTagSize, kMacAddrsSize);
  p[kMacAddrsSize] = static_cast<std::uint8_t>(tpid >> 8);
  p[kMacAddrsSize + 1] = static_cast<std::uint8_t>(tpid);
  p[kMacAddrsSize + 2] = static_cast<std::uint8_t>(tci >> 8);
  p[kMacAddrsSize + 3] = static_cast<std::uint8_t>(tci);
}

const tpacket_auxdata* auxdataOf(msghdr& msg) {
  for (cmsghdr* c = CMSG_FIRSTHDR(&msg); c; c = CMSG_NXTHDR(&msg, c)) {
    if (c->cmsg_level == SOL_PACKET && c->cmsg_type == PACKET_AUXDATA &&
        c->cmsg_len >= CMSG_LEN(sizeof(tpacket_auxdata))) {
      return reinterpret_cast<const tpacket_auxdata*>(CMSG_DATA(c));
    }
  }
  return nullptr;
}

}  // namespace

PacketSocketPam::PacketSocketPam(const IntfId& intfId, const PamConfig& config, Quarn::Ptr<Quarn::EventLoop> loop)
    : Pam(intfId, EthAddr()), loop_(std::move(loop)), rxBuffer_(pamRxLimit(config)), reactor_(this) {
  try {
    // Protocol 0 receives nothing until bind, by which time the filter is on.
    fd_ = socket(AF_PACKET, SOCK_RAW | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (fd_ < 0) fail(errno, intfId, "socket");

    ifreq ifr{};
    if (intfId.name().size() >= sizeof ifr.ifr_name) fail(ENAMETOOLONG, intfId, "interface name");
    std::memcpy(ifr.ifr_name, intfId.name().data(), intfId.name().size());
    if (ioctl(fd_, SIOCGIFINDEX, &ifr) < 0) fail(errno, intfId, "interface index");
    ifindex_ = ifr.ifr_ifindex;
    if (ioctl(fd_, SIOCGIFHWADDR, &ifr) < 0) fail(errno, intfId, "interface address");
    std::array<std::uint8_t, EthAddr::kSize> mac;
    std::memcpy(mac.data(), ifr.ifr_hwaddr.sa_data, mac.size());
    ethAddrIs(EthAddr(mac));

    if (!config.filterProgram.empty()) {
      sock_fprog program{};
      program.len = static_cast<unsigned short>(config.filterProgram.size());
      // The instruction layout equals sock_filter's (checked in PamFilter.cpp).
      program.filter = reinterpret_cast<sock_filter*>(const_cast<PamFilterInstruction*>(config.filterProgram.data()));
      setOption(fd_, SOL_SOCKET, SO_ATTACH_FILTER, &program, sizeof program, intfId, "attach filter");
    }
    int on = 1;
    setOption(fd_, SOL_PACKET, PACKET_AUXDATA, &on, sizeof on, intfId, "auxiliary data");

    sockaddr_ll sll{};
    sll.sll_family = AF_PACKET;
    sll.sll_protocol = htons(config.ethProtocol);
    sll.sll_ifindex = ifindex_;
    if (bind(fd_, reinterpret_cast<const sockaddr*>(&sll), sizeof sll) < 0) fail(errno, intfId, "bind");

    if (!config.listenAddr.isZero()) {
      packet_mreq mreq{};
      mreq.mr_ifindex = ifindex_;
      mreq.mr_type = PACKET_MR_MULTICAST;
      mreq.mr_alen = EthAddr::kSize;
      std::memcpy(mreq.mr_address, config.listenAddr.data(), EthAddr::kSize);
      setOption(fd_, SOL_PACKET, PACKET_ADD_MEMBERSHIP, &mreq, sizeof mreq, intfId, "join group address");
    }
    loop_->fdNotifieeIs(fd_, &reactor_);
  } catch (...) {
    if (fd_ >= 0) ::close(fd_);
    throw;
  }
}

PacketSocketPam::~PacketSocketPam() {
  if (fd_ < 0) return;
  loop_->fdNotifieeDel(fd_);
  ::close(fd_);
}

Quarn::Ptr<Pkt> PacketSocketPam::pktRead() {
  if (pending_) return std::exchange(pending_, nullptr);
  return frameRecv();
}

bool PacketSocketPam::mediumHasData() const {
  if (pending_) return true;
  pollfd p{fd_, POLLIN, 0};
  return poll(&p, 1, 0) > 0 && (p.revents & POLLIN);
}

bool PacketSocketPam::pktWrite(const Pkt& frame) {
  ssize_t n = send(fd_, frame.data(), frame.bytes(), MSG_DONTWAIT);
  if (n == static_cast<ssize_t>(frame.bytes())) return true;
  QTRACE(veloTrace, 4, "PacketSocketPam " << intfId() << ": send failed: " << std::strerror(errno));
  return false;
}

void PacketSocketPam::handleReadable() {
  // A notifiee may drop the last reference to this Pam.
  Quarn::Ptr<PacketSocketPam> self(this);
  pending_ = frameRecv();
  if (!pending_) return;
  readableCountInc();
  if (pending_) {
    pending_ = nullptr;
    rxDroppedInc();
  }
}

Quarn::Ptr<Pkt> PacketSocketPam::frameRecv() {
  while (fd_ >= 0) {
    sockaddr_ll from{};
    iovec iov{rxBuffer_.data(), rxBuffer_.size()};
    alignas(cmsghdr) unsigned char control[CMSG_SPACE(sizeof(tpacket_auxdata))];
    msghdr msg{};
    msg.msg_name = &from;
    msg.msg_namelen = sizeof from;
    msg.msg_iov = &iov;
    msg.msg_iovlen = 1;
    msg.msg_control = control;
    msg.msg_controllen = sizeof control;
    ssize_t n = recvmsg(fd_, &msg, 0);
    if (n < 0) {
      if (errno == EINTR) continue;
      if (errno != EAGAIN && errno != EWOULDBLOCK) handleRxError(errno);
      return nullptr;
    }
    if (from.sll_pkttype == PACKET_OUTGOING) continue;
    if ((msg.msg_flags & MSG_TRUNC) || static_cast<std::size_t>(n) < EthHdr::kSize) {
      rxDroppedInc();
      continue;
    }
    Quarn::Ptr<Pkt> pkt = Pkt::pktNew(rxBuffer_.data(), static_cast<std::size_t>(n));
    const tpacket_auxdata* aux = auxdataOf(msg);
    if (aux && (aux->tp_status & TP_STATUS_VLAN_VALID)) {
      std::uint16_t tpid = (aux->tp_status & TP_STATUS_VLAN_TPID_VALID) ? aux->tp_vlan_tpid : ETH_P_8021Q;
      vlanTagRestore(*pkt, tpid, aux->tp_vlan_tci);
    }
    return pkt;
  }
  return nullptr;
}

void PacketSocketPam::handleRxError(int error) {
  QTRACE(veloTrace, 4, "PacketSocketPam " << intfId() << ": receive error: " << std::strerror(error));
  if (!interfaceExists()) doClose();
}

bool PacketSocketPam::interfaceExists() const {
  ifreq ifr{};
  ifr.ifr_ifindex = ifindex_;
  // Asked through the socket, so in the socket's own network namespace.
  return ioctl(fd_, SIOCGIFNAME, &ifr) == 0;
}

void PacketSocketPam::doClose() {
  QTRACE(veloTrace, 4, "PacketSocketPam " << intfId() << ": interface gone, closing");
  loop_->fdNotifieeDel(fd_);
  ::close(fd_);
  fd_ = -1;
  pending_ = nullptr;
  closedIs();
}

Quarn::Ptr<Pam> PacketSocketPamFactory::pamNew(const IntfId& intfId, const PamConfig& config) {
  return new PacketSocketPam(intfId, config, loop_);
}

}  // namespace Velo
