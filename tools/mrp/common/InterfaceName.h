#pragma once

#include <optional>
#include <string>

namespace CLI {
class Validator;
}

namespace MrpCli {

// Why `name` cannot name a Linux interface ("'a/b' is not an interface
// name"), or nullopt when it can.
std::optional<std::string> interfaceNameFault(const std::string& name);
// An option check that accepts interface names.
CLI::Validator interfaceName();

}  // namespace MrpCli
