#include "MrpSm/MrpAttrLogSm.h"

#include <sys/ioctl.h>
#include <sys/socket.h>

#include <cerrno>

#include "MrpSm/MrpSmTrace.h"
#include "lumen/TraceRing.h"

namespace Mrp {

MrpAttrLogSm::MrpAttrLogSm(Quarn::Ptr<Quarn::NboAttrLog::SocketOutSm> socketOutput)
    : socketOutput_(std::move(socketOutput)) {
  outputReactor_.notifierIs(socketOutput_.ptr());
  handleInitialized();
}

void MrpAttrLogSm::handleInitialized() {
  MRP_TRACE(8, "void Mrp::MrpAttrLogSm::handleInitialized()");
  doFollowOutputFd();
  initializedIs();
}

void MrpAttrLogSm::doFollowOutputFd() {
  if (socketOutput_ && socketOutput_->fd() != 0) attrLogSockFdIs(socketOutput_->fd());
}

void MrpAttrLogSm::attrLogSockFdIs(std::int32_t fd) {
  if (fd == attrLogSockFd_) return;
  attrLogSockFd_ = fd;
  handleAttrLogSockFd();
}

void MrpAttrLogSm::handleAttrLogSockFd() {
  if (attrLogSockFd_ == -1) return;
  int size = 0;
  socklen_t length = sizeof(size);
  if (getsockopt(attrLogSockFd_, SOL_SOCKET, SO_SNDBUF, &size, &length) == 0) {
    attrLogKernTxBufferThreshold_ = size / 2;
    attrLogKernTxBufferSize_ = size;
  } else {
    attrLogKernTxBufferThreshold_ = -1;
    attrLogKernTxBufferSize_ = -1;
  }
  MRP_TRACE(3, "handleAttrLogSockFd" << "(), Socket Fd:" << attrLogSockFd_ << ", Kernel Tx Buffer Size:"
                                     << attrLogKernTxBufferSize_ << ", Kernel Tx Buffer Threshold:"
                                     << attrLogKernTxBufferThreshold_);
}

std::int32_t MrpAttrLogSm::getAttrLogKernTxBufferUsage() const {
  if (attrLogSockFd_ == -1) return -1;
  int queued = 0;
  if (ioctl(attrLogSockFd_, TIOCOUTQ, &queued) != 0) {
    Lumen::fastTrace().record("MrpAttrLogSm::getAttrLogKernTxBufferUsage errno", errno);
    return -1;
  }
  return queued;
}

bool MrpAttrLogSm::isAttrLogOutClogged() {
  if (!socketOutput_) return false;
  attrLogKernTxBufferUsage_ = getAttrLogKernTxBufferUsage();
  // A failed query reads as -1 and so never clogs; a threshold of -1 (the
  // size query failed) clogs on any usage that could be read.
  if (attrLogKernTxBufferThreshold_ < attrLogKernTxBufferUsage_) {
    Lumen::fastTrace().record("MrpAttrLogSm::isAttrLogOutClogged usage threshold", attrLogKernTxBufferUsage_,
                              attrLogKernTxBufferThreshold_);
    MRP_TRACE(3, "Tx Buffer usage: " << attrLogKernTxBufferUsage_
                                     << " is above threshold: " << attrLogKernTxBufferThreshold_);
    return true;
  }
  return false;
}

}  // namespace Mrp
