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

std::optional<std::string> applicationFault(std::string_view name) {
  if (applicationNamed(name)) return std::nullopt;
  return "unknown application '" + std::string(name) + "' (msrp or mvrp)";
}

CLI::Validator knownApplication() {
  return CLI::Validator([](std::string& value) { return applicationFault(value).value_or(""); }, "");
}

}  // namespace MrpCli
