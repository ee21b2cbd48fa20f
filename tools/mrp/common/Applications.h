#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "MrpModel/MrpApplication.h"

namespace CLI {
class Validator;
}

namespace MrpCli {

// The names the mrp program gives the applications: "msrp" and "mvrp".
const char* applicationName(Mrp::MrpApplication application);
// The application of a name; nullopt for any other word.
std::optional<Mrp::MrpApplication> applicationNamed(std::string_view name);
// Why `name` names no application ("unknown application 'gvrp' (msrp or
// mvrp)"), or nullopt when it names one.
std::optional<std::string> applicationFault(std::string_view name);
// An option check that accepts the names; its message names what was given.
CLI::Validator knownApplication();

}  // namespace MrpCli
