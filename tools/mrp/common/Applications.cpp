#include "common/Applications.h"

#include <CLI/CLI.hpp>

#include <string>

namespace MrpCli {

const char* applicationName(Mrp::MrpApplication application) {
  return application == Mrp::MrpApplication::msrp ? "msrp" : "mvrp";
}

std::optional<Mrp::MrpApplication> applicationNamed(std::string_view name) {
  for (const auto application : {Mrp::MrpApplication::msrp, Mrp::MrpApplication::mvrp}) {
    if (name == applicationName(application)) return application;
  }
  return std::nullopt;
}

CLI::Validator knownApplication() {
  return CLI::Validator(
      [](std::string& value) -> std::string {
        if (applicationNamed(value)) return "";
        return "unknown application '" + value + "' (msrp or mvrp)";
      },
      "");
}

}  // namespace MrpCli
