#pragma once

#include <optional>
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
// An option check that accepts the names; its message names what was given.
CLI::Validator knownApplication();

}  // namespace MrpCli
