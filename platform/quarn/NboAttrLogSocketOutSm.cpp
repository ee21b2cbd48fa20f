#include "quarn/NboAttrLogSocketOutSm.h"

namespace Quarn::NboAttrLog {

void SocketOutSm::fdIs(int fd) {
  if (fd == fd_) return;
  fd_ = fd;
  notifiees_.forEach([](Notifiee& n) { n.onFd(); });
}

}  // namespace Quarn::NboAttrLog
