#pragma once

#include <optional>
#include <string>
#include <vector>

#include "agent/AgentSettings.h"

namespace MrpCli {

// What `mrp agent`'s command line gives: an option left out is empty or
// nullopt (or false for --json, which has no "off").
struct AgentArguments {
  std::vector<std::string> ports;
  std::vector<std::string> applications;
  std::optional<std::string> configFile;
  std::optional<std::string> controlPath;
  bool json = false;
  std::optional<std::string> metricsAddress;

  // `file` (the configuration file's settings) with what the command line
  // gives instead.
  AgentSettings over(AgentSettings file) const;
};

}  // namespace MrpCli
