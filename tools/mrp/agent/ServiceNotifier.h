#pragma once

#include <string>
#include <vector>

#include "MrpModel/MrpApplication.h"

namespace MrpCli {

// Tells the service manager how `mrp agent` is doing, on the socket that
// NOTIFY_SOCKET names: that it is ready, with a status line for `systemctl
// status`, and that it is stopping. Does nothing when NOTIFY_SOCKET is not
// set, as when the agent is not run as a service.
class ServiceNotifier {
 public:
  // "running mvrp, msrp on eth1, eth2"
  static std::string statusText(const std::vector<Mrp::MrpApplication>& applications,
                                const std::vector<std::string>& ports);

  // READY=1 with the status; only the first time: a worker that is started
  // again later does not make the agent ready again.
  void doReady(const std::string& status);
  // STOPPING=1.
  void doStopping() const;

 private:
  bool ready_ = false;
};

}  // namespace MrpCli
