#include "support/AgentProcess.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

namespace MrpTest {

namespace {

std::string joined(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) text += (text.empty() ? "" : ",") + name;
  return text;
}

}  // namespace

AgentProcess::AgentProcess(const std::vector<std::string>& ports, const std::string& apps, const std::string& config,
                           const std::string& netns, const std::vector<std::string>& options)
    : controlPath_(dir_.file("agent.sock")) {
  const std::string configFile = dir_.file("config.json");
  std::ofstream(configFile) << config;
  std::vector<std::string> argv;
  if (!netns.empty()) argv = {"ip", "netns", "exec", netns};
  for (const std::string& arg : {std::string(MRP_PROGRAM), std::string("agent"), std::string("--ports"), joined(ports),
                                 std::string("--config"), configFile, std::string("--control"), controlPath_}) {
    argv.push_back(arg);
  }
  if (!apps.empty()) argv.insert(argv.end(), {"--apps", apps});
  argv.insert(argv.end(), options.begin(), options.end());
  process_ = std::make_unique<ChildProcess>(argv);
}

bool AgentProcess::ready() const {
  return secondsUntil(5, [this] { return ctl({"ports"}).status == 0; }).has_value();
}

MrpRun AgentProcess::ctl(const std::vector<std::string>& args) const {
  std::vector<std::string> all{"ctl", "--control", controlPath_};
  all.insert(all.end(), args.begin(), args.end());
  return mrp(all);
}

std::vector<std::string> AgentProcess::registrations() const {
  const MrpRun run = ctl({"show", "--json"});
  std::vector<std::string> lines;
  if (run.status != 0) return lines;
  const auto json = nlohmann::json::parse(run.out, nullptr, false);
  if (!json.is_object() || !json.contains("registrations")) return lines;
  for (const auto& r : json["registrations"]) {
    lines.push_back(r["port"].get<std::string>() + " " + r["app"].get<std::string>() + " " +
                    std::to_string(r["type"].get<unsigned>()) + " " + r["key"].get<std::string>() + " " +
                    r["registrar"].get<std::string>());
  }
  return lines;
}

bool AgentProcess::registers(const std::string& line) const {
  const std::vector<std::string> lines = registrations();
  return std::find(lines.begin(), lines.end(), line) != lines.end();
}


std::string AgentProcess::portState(const std::string& port) const {
  const MrpRun run = ctl({"ports", "--json"});
  const auto json = nlohmann::json::parse(run.out, nullptr, false);
  if (run.status != 0 || !json.is_object() || !json.contains("ports")) return "";
  for (const auto& entry : json["ports"]) {
    if (entry["port"] == port) return entry["state"].get<std::string>();
  }
  return "";
}

bool AgentProcess::portsUp(const std::vector<std::string>& ports) const {
  return secondsUntil(5, [&] {
           return std::all_of(ports.begin(), ports.end(), [&](const std::string& port) { return portState(port) == "up"; });
         })
      .has_value();
}

std::optional<pid_t> AgentProcess::workerPid(const std::string& app) const {
  // The agent runs in a namespace through `ip netns exec`, which execs it:
  // the pid stays the child's.
  const std::string wanted = std::string("mrp") + '\0' + "agent-worker" + '\0' + app + '\0';
  for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
    const std::string name = entry.path().filename();
    if (name.find_first_not_of("0123456789") != std::string::npos) continue;
    std::ifstream stat(entry.path() / "stat");
    std::string statText((std::istreambuf_iterator<char>(stat)), std::istreambuf_iterator<char>());
    const std::size_t close = statText.rfind(')');
    if (close == std::string::npos) continue;
    std::istringstream fields(statText.substr(close + 1));
    std::string state;
    pid_t parent = 0;
    fields >> state >> parent;
    if (parent != process_->pid()) continue;
    std::ifstream cmdline(entry.path() / "cmdline");
    const std::string command((std::istreambuf_iterator<char>(cmdline)), std::istreambuf_iterator<char>());
    if (command == wanted) return static_cast<pid_t>(std::stoi(name));
  }
  return std::nullopt;
}

}  // namespace MrpTest
