#include "common/InterfaceName.h"

#include <CLI/CLI.hpp>
#include <net/if.h>

namespace MrpCli {

std::optional<std::string> interfaceNameFault(const std::string& name) {
  if (!name.empty() && name.size() < IFNAMSIZ && name.find_first_of("/ \t:") == std::string::npos) return std::nullopt;
  return "'" + name + "' is not an interface name";
}

CLI::Validator interfaceName() {
  return CLI::Validator([](std::string& value) { return interfaceNameFault(value).value_or(""); }, "");
}

}  // namespace MrpCli
