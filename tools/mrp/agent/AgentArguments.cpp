#include "agent/AgentArguments.h"

namespace MrpCli {

AgentSettings AgentArguments::over(AgentSettings file) const {
  if (!ports.empty()) file.ports = ports;
  if (!applications.empty()) file.applications = applications;
  if (controlPath) file.controlPath = *controlPath;
  file.json = file.json || json;
  if (metricsAddress) file.metricsAddress = metricsAddress;
  return file;
}

}  // namespace MrpCli
