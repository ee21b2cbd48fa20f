#include "control/ControlMerge.h"

#include <algorithm>

#include "Bridge.h"
#include "agent/Agent.h"
#include "common/Applications.h"
#include "control/AttributeMessage.h"
#include "control/PortCounterNames.h"
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

namespace {

const Json* memberOf(const Json* entry, const std::string& key) {
  return entry && entry->is_object() && entry->contains(key) ? &(*entry)[key] : nullptr;
}

// A list member of `entry`; empty when it has none.
const Json& listIn(const Json* entry, const std::string& key) {
  static const Json kNone;
  const Json* list = memberOf(entry, key);
  return listOr(list ? *list : kNone);
}

// A worker's counters of a port; null when it did not tell them.
const Json* portCountersOf(const Json& answer, const std::string& port) {
  for (const Json& entry : listIn(&answer, "ports")) {
    if (entry.value("port", "") == port) return &entry;
  }
  return nullptr;
}

std::string countText(const Json* value) { return value && value->is_number() ? value->dump() : "-"; }

// The rows of one port's counters, one column per application.
class PortRows {
 public:
  PortRows(std::string port, std::vector<const Json*> columns, std::vector<std::vector<std::string>>& rows)
      : port_(std::move(port)), columns_(std::move(columns)), rows_(rows) {}

  void addFixed() {
    for (const PortCounterName& name : kPortCounterNames) {
      addRow(name.text, [&](const Json* entry) {
        const Json* value = memberOf(entry, name.key);
        return countText(name.subkey ? memberOf(value, name.subkey) : value);
      });
    }
  }

  // A row per key that any application has under `key` ("registrations": {"VLAN": 3}).
  void addKeyed(const std::string& key, const std::string& prefix, const std::string& suffix) {
    for (const std::string& member : keysUnder(key)) {
      addRow(prefix + member + suffix, [&](const Json* entry) { return countText(memberOf(memberOf(entry, key), member)); });
    }
  }

  void addReservations() {
    std::vector<std::string> classes;
    for (const Json* entry : columns_) {
      for (const Json& row : listIn(entry, "reservations")) {
        const std::string srClass = row.value("class", "");
        if (std::find(classes.begin(), classes.end(), srClass) == classes.end()) classes.push_back(srClass);
      }
    }
    for (const std::string& srClass : classes) {
      addRow("streams reserved, class " + srClass, [&](const Json* entry) { return countText(reservationOf(entry, srClass, "streams")); });
      addRow("reserved, class " + srClass, [&](const Json* entry) {
        const Json* bandwidth = reservationOf(entry, srClass, "bandwidth");
        return bandwidth && bandwidth->is_number_integer() && *bandwidth >= 0 ? bitRateText(bandwidth->get<std::uint64_t>()) : "-";
      });
    }
  }

 private:
  template <class Cell>
  void addRow(const std::string& text, Cell cell) {
    std::vector<std::string> row{rows_.size() == firstRow_ ? port_ : "", text};
    for (const Json* entry : columns_) row.push_back(cell(entry));
    rows_.push_back(std::move(row));
  }

  std::vector<std::string> keysUnder(const std::string& key) const {
    std::vector<std::string> keys;
    for (const Json* entry : columns_) {
      const Json* members = memberOf(entry, key);
      if (!members || !members->is_object()) continue;
      for (const auto& [member, value] : members->items()) {
        if (std::find(keys.begin(), keys.end(), member) == keys.end()) keys.push_back(member);
      }
    }
    return keys;
  }

  static const Json* reservationOf(const Json* entry, const std::string& srClass, const std::string& field) {
    for (const Json& row : listIn(entry, "reservations")) {
      if (row.value("class", "") == srClass) return memberOf(&row, field);
    }
    return nullptr;
  }

  std::string port_;
  std::vector<const Json*> columns_;
  std::vector<std::vector<std::string>>& rows_;
  std::size_t firstRow_ = rows_.size();
};

}  // namespace

Json mergedCountersJson(const WorkerAnswers& answers, const std::vector<std::string>& ports,
                        const WorkerRestarts& restarts) {
  Json merged = {{"ports", Json::array()}, {"applications", Json::array()}};
  const auto answerOf = [&answers](Mrp::MrpApplication application) -> const Json* {
    for (const auto& [app, answer] : answers) {
      if (app == application) return &answer;
    }
    return nullptr;
  };
  for (const std::string& port : ports) {
    for (const auto& [application, restarted] : restarts) {
      const Json* answer = answerOf(application);
      const Json* entry = answer ? portCountersOf(*answer, port) : nullptr;
      if (!entry) continue;
      Json counted = {{"port", port}, {"app", applicationName(application)}};
      for (const auto& [key, value] : entry->items()) {
        if (key != "port") counted[key] = value;
      }
      merged["ports"].push_back(std::move(counted));
    }
  }
  for (const auto& [application, restarted] : restarts) {
    const Json* answer = answerOf(application);
    merged["applications"].push_back({{"app", applicationName(application)},
                                      {"workerRestarts", restarted},
                                      {"engine", answer && answer->is_object() ? answer->value("engine", Json::object())
                                                                               : Json::object()}});
  }
  return merged;
}

namespace {

// The table of what mergedCountersJson() gives: per port a row per counter,
// a column per application.
std::string countersTable(const Json& merged, const std::vector<std::string>& ports) {
  std::vector<std::string> heading{"port", "counter"};
  std::vector<std::string> restartRow{"", "worker restarts"};
  for (const Json& application : merged["applications"]) {
    heading.push_back(application["app"].get<std::string>());
    restartRow.push_back(application["workerRestarts"].dump());
  }
  std::vector<std::vector<std::string>> rows{heading};
  for (const std::string& port : ports) {
    std::vector<const Json*> columns;
    for (const Json& application : merged["applications"]) {
      const auto entry = std::find_if(merged["ports"].begin(), merged["ports"].end(), [&](const Json& counted) {
        return counted["port"] == port && counted["app"] == application["app"];
      });
      columns.push_back(entry != merged["ports"].end() ? &*entry : nullptr);
    }
    PortRows portRows(port, std::move(columns), rows);
    portRows.addFixed();
    portRows.addKeyed("registrations", "registered: ", "");
    portRows.addKeyed("talkerFailedDeclared", "Talker Failed declared, code ", "");
    portRows.addReservations();
  }
  rows.push_back(std::move(restartRow));
  return textTable(rows);
}

}  // namespace

ControlAnswer mergedCounters(const WorkerAnswers& answers, const std::vector<std::string>& ports,
                             const WorkerRestarts& restarts) {
  ControlAnswer answer;
  answer.result = mergedCountersJson(answers, ports, restarts);
  answer.text = countersTable(answer.result, ports);
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
