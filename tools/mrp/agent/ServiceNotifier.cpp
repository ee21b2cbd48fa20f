#include "agent/ServiceNotifier.h"

#include <systemd/sd-daemon.h>

#include "common/Applications.h"
#include "format/JsonNode.h"

namespace MrpCli {

namespace {

// What the service manager does not hear about, it times out on and says
// so in its own log: a failed notification needs no report of its own.
void notify(const std::string& state) { sd_notify(0, state.c_str()); }

}  // namespace

std::string ServiceNotifier::statusText(const std::vector<Mrp::MrpApplication>& applications,
                                        const std::vector<std::string>& ports) {
  std::vector<std::string> names;
  for (Mrp::MrpApplication application : applications) names.push_back(applicationName(application));
  return "running " + commaListed(names) + " on " + commaListed(ports);
}

void ServiceNotifier::doReady(const std::string& status) {
  if (ready_) return;
  ready_ = true;
  notify("READY=1\nSTATUS=" + status);
}

void ServiceNotifier::doStopping() const { notify("STOPPING=1"); }

}  // namespace MrpCli
