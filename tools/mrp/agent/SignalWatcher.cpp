#include "agent/SignalWatcher.h"

#include <sys/signalfd.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace MrpCli {

SignalWatcher::SignalWatcher(Quarn::Ptr<Quarn::EventLoop> loop, std::initializer_list<int> signals,
                             std::function<void(int)> onSignal)
    : loop_(std::move(loop)), onSignal_(std::move(onSignal)), reactor_(this) {
  sigset_t mask;
  sigemptyset(&mask);
  for (int signal : signals) sigaddset(&mask, signal);
  if (sigprocmask(SIG_BLOCK, &mask, &previousMask_) < 0) {
    throw std::system_error(errno, std::generic_category(), "sigprocmask");
  }
  fd_ = signalfd(-1, &mask, SFD_NONBLOCK | SFD_CLOEXEC);
  if (fd_ < 0) {
    const int error = errno;
    sigprocmask(SIG_SETMASK, &previousMask_, nullptr);
    throw std::system_error(error, std::generic_category(), "signalfd");
  }
  loop_->fdNotifieeIs(fd_, &reactor_);
}

SignalWatcher::~SignalWatcher() {
  loop_->fdNotifieeDel(fd_);
  // Signals still pending would act on the process once unblocked.
  signalfd_siginfo info;
  while (read(fd_, &info, sizeof info) > 0) {
  }
  close(fd_);
  sigprocmask(SIG_SETMASK, &previousMask_, nullptr);
}

void SignalWatcher::handleReadable() {
  signalfd_siginfo info;
  while (read(fd_, &info, sizeof info) == static_cast<ssize_t>(sizeof info)) onSignal_(static_cast<int>(info.ssi_signo));
}

}  // namespace MrpCli
