#pragma once

#include <functional>
#include <initializer_list>

#include <signal.h>

#include "quarn/EventLoop.h"
#include "quarn/Ptr.h"

namespace MrpCli {

// Turns signals into events of the loop: while it exists the signals are
// blocked and read from a signalfd, so nothing runs inside a signal
// handler; each one read is passed to `onSignal` on the loop's thread.
class SignalWatcher {
 public:
  // Throws std::system_error.
  SignalWatcher(Quarn::Ptr<Quarn::EventLoop> loop, std::initializer_list<int> signals,
                std::function<void(int)> onSignal);
  ~SignalWatcher();
  SignalWatcher(const SignalWatcher&) = delete;
  SignalWatcher& operator=(const SignalWatcher&) = delete;

 private:
  class FdReactor : public Quarn::EventLoop::FdNotifiee {
   public:
    explicit FdReactor(SignalWatcher* owner) : owner_(owner) {}
    void onReadable() override { owner_->handleReadable(); }

   private:
    SignalWatcher* owner_;
  };

  void handleReadable();

  Quarn::Ptr<Quarn::EventLoop> loop_;
  std::function<void(int)> onSignal_;
  sigset_t previousMask_;
  int fd_ = -1;
  FdReactor reactor_;
};

}  // namespace MrpCli
