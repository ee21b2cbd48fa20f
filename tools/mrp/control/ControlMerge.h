#pragma once

#include <nlohmann/json.hpp>

#include <string>
#include <utility>
#include <vector>

#include "MrpModel/MrpApplication.h"
#include "control/ControlAnswer.h"

namespace MrpCli {

// What each of the agent's workers answered to one question, in the order
// of the applications.
using WorkerAnswers = std::vector<std::pair<Mrp::MrpApplication, nlohmann::ordered_json>>;
// How often each application's worker was started again.
using WorkerRestarts = std::vector<std::pair<Mrp::MrpApplication, unsigned>>;

// The answers of the workers to a question of `mrp ctl`, merged into one
// answer as a person reads it: by port (in the order of `ports`), then by
// application. Each takes what Agent's registrationsMessage(),
// countersMessage() and portsMessage() give.
ControlAnswer mergedShow(const WorkerAnswers& answers, const std::vector<std::string>& ports);
// The counters, as the metrics read them: {"ports": [{"port", "app", <the
// worker's counters of the port>}], "applications": [{"app",
// "workerRestarts", "engine"}]}.
nlohmann::ordered_json mergedCountersJson(const WorkerAnswers& answers, const std::vector<std::string>& ports,
                                          const WorkerRestarts& restarts);
// The counters: result {"ports": [{"port", "app", <the worker's counters of
// the port>}], "applications": [{"app", "workerRestarts", "engine"}]}, and
// as text a table of every port's counters, a column per application.
ControlAnswer mergedCounters(const WorkerAnswers& answers, const std::vector<std::string>& ports,
                             const WorkerRestarts& restarts);
ControlAnswer mergedPorts(const WorkerAnswers& answers, const std::vector<std::string>& ports);
// The MSRP worker's stream table (Agent's streamsMessage()); a failure when
// the agent runs no MSRP.
ControlAnswer mergedStreams(const WorkerAnswers& answers);

}  // namespace MrpCli
