#pragma once

#include <utility>

#include "quarn/NboAttrLogOutput.h"
#include "quarn/Notifiee.h"

namespace Quarn::NboAttrLog {

// An attribute-log output that writes to a socket. It records the descriptor
// only; whoever opened the socket closes it.
class SocketOutSm : public Output {
 public:
  class Notifiee : public BaseNotifiee<SocketOutSm> {
   public:
    virtual void onFd() {}
  };

  SocketOutSm(Name name, int fd) : Output(std::move(name)), fd_(fd) {}

  int fd() const { return fd_; }
  void fdIs(int fd);

  void notifieeAdd(Notifiee* n) { notifiees_.add(n); }
  void notifieeDel(Notifiee* n) { notifiees_.remove(n); }

 private:
  int fd_;
  NotifieeList<Notifiee> notifiees_;
};

}  // namespace Quarn::NboAttrLog
