#pragma once

#include <map>
#include <string>
#include <vector>

#include "quarn/EventLoop.h"
#include "quarn/Ptr.h"

namespace MrpCli {

// Watches Linux network interfaces by name and says when each comes and
// goes: it listens to the kernel's link notifications (rtnetlink) and on
// each one looks at every watched interface again, so a lost notification
// costs nothing but a late look. An interface is up when it is
// administratively up and has a carrier. One deleted and made again under
// the same name between two looks is reported gone and then up again.
class PortWatcher {
 public:
  enum class State { absent, down, up };

  class Observer {
   public:
    virtual ~Observer() = default;
    virtual void onPortState(const std::string& port, State state) = 0;
  };

  // Opens the notification socket on `loop`; throws std::system_error.
  PortWatcher(Quarn::Ptr<Quarn::EventLoop> loop, std::vector<std::string> ports, Observer* observer);
  ~PortWatcher();
  PortWatcher(const PortWatcher&) = delete;
  PortWatcher& operator=(const PortWatcher&) = delete;

  // Looks at every interface and reports each one's state, the first time
  // for every port, then only changes.
  void doRefresh();
  // The state last reported; absent before the first look.
  State state(const std::string& port) const;

 private:
  class FdReactor : public Quarn::EventLoop::FdNotifiee {
   public:
    explicit FdReactor(PortWatcher* owner) : owner_(owner) {}
    void onReadable() override { owner_->handleReadable(); }

   private:
    PortWatcher* owner_;
  };

  struct Seen {
    State state = State::absent;
    int ifindex = 0;
    bool reported = false;
  };

  void handleReadable();
  Seen seenNow(const std::string& port) const;
  void doReport(const std::string& port, Seen& seen, State state);

  Quarn::Ptr<Quarn::EventLoop> loop_;
  std::vector<std::string> ports_;
  Observer* observer_;
  int netlinkFd_ = -1;
  // Asked about interfaces' flags; any socket will do.
  int ioctlFd_ = -1;
  std::map<std::string, Seen> seen_;
  FdReactor reactor_;
};

// "absent", "down", "up".
const char* portStateName(PortWatcher::State state);

}  // namespace MrpCli
