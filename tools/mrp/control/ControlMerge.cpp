#include "control/ControlMerge.h"

#include <algorithm>

#include "Bridge.h"
#include "agent/Agent.h"
#include "common/Applications.h"
#include "control/AttributeMessage.h"
#include "report/BitRateText.h"
#include "report/RegistrationText.h"
#include "report/StreamTableText.h"
#include "report/TextTable.h"

namespace MrpCli {

namespace {

using Json = nlohmann::ordered_json;

std::size_t indexIn(const std::vector<std::string>& names, const std::string& name) {
  return static_cast<std::size_t>(std::find(names.begin(), names.end(), name) - names.begin());
}

const Json& listOr(const Json& json) {
  static const Json kEmpty = Json::array();
  return json.is_array() ? json : kEmpty;
}

}  // namespace

ControlAnswer mergedShow(const WorkerAnswers& answers, const std::vector<std::string>& ports) {
  std::vector<MrpAgent::Registration> held;
  for (const auto& [application, entries] : answers) {
    for (const Json& entry : listOr(entries)) {
      const auto value = attributeFromMessage(entry.value("attribute", Json()));
      if (!value) continue;
      held.push_back({entry.value("port", ""), application, *value,
                      static_cast<Mrp::MrpRegistrarState>(entry.value("registrar", 0U)),
                      static_cast<Mrp::MrpApplicantState>(entry.value("applicant", 0U))});
    }
  }
  // Each worker lists its ports in order; a stable sort keeps the
  // applications in their order within a port.
  std::stable_sort(held.begin(), held.end(), [&ports](const auto& a, const auto& b) {
    return indexIn(ports, a.port) < indexIn(ports, b.port);
  });
  ControlAnswer answer;
  answer.result = {{"registrations", registrationsJson(held)}};
  answer.text = registrationTable(held);
  return answer;
}

ControlAnswer mergedCounters(const WorkerAnswers& answers) {
  ControlAnswer answer;
  std::vector<std::vector<std::string>> rows{{"app", "counter", "value"}};
  for (const auto& [application, counters] : answers) {
    if (!counters.is_object() || counters.empty()) continue;
    for (const auto& [name, value] : counters.items()) rows.push_back({applicationName(application), name, value.dump()});
    answer.result[applicationName(application)] = counters;
  }
  answer.text = textTable(rows);
  return answer;
}

ControlAnswer mergedPorts(const WorkerAnswers& answers, const std::vector<std::string>& ports) {
  std::vector<std::string> heading{"port", "state", "speed"};
  for (const auto& [application, entries] : answers) heading.push_back(applicationName(application));
  std::vector<std::vector<std::string>> rows{heading};
  Json merged = Json::array();
  for (const std::string& port : ports) {
    std::string state = "unknown";
    Json speed;
    std::string speedFrom = "unknown";
    Json sockets = Json::object();
    std::vector<std::string> socketColumns;
    for (const auto& [application, entries] : answers) {
      std::string socket = "unknown";
      for (const Json& entry : listOr(entries)) {
        if (entry.value("port", "") != port) continue;
        state = entry.value("state", state);
        socket = entry.value("socket", socket);
        speed = entry.value("speed", speed);
        speedFrom = entry.value("speedFrom", speedFrom);
      }
      sockets[applicationName(application)] = socket;
      socketColumns.push_back(socket);
    }
    merged.push_back({{"port", port},
                      {"state", state},
                      {"speed", speed},
                      {"speedFrom", speedFrom},
                      {"sockets", std::move(sockets)}});
    const std::string speedText =
        speed.is_number_integer() && speed >= 0 ? bitRateText(speed.get<std::uint64_t>()) + " (" + speedFrom + ")" : "unknown";
    std::vector<std::string> row{port, state, speedText};
    row.insert(row.end(), socketColumns.begin(), socketColumns.end());
    rows.push_back(std::move(row));
  }
  ControlAnswer answer;
  answer.result = {{"ports", std::move(merged)}};
  answer.text = textTable(rows);
  return answer;
}

ControlAnswer mergedStreams(const WorkerAnswers& answers) {
  for (const auto& [application, table] : answers) {
    if (application != Mrp::MrpApplication::msrp) continue;
    ControlAnswer answer;
    answer.result = table.is_object() ? table : Json::object();
    answer.text = streamTableText(Agent::kBridgeName, answer.result);
    return answer;
  }
  return ControlAnswer::failure("the agent runs no msrp: streams are MSRP's");
}

}  // namespace MrpCli
