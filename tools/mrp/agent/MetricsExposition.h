#pragma once

#include <vector>

#include <nlohmann/json.hpp>
#include <prometheus/metric_family.h>

namespace MrpCli {

// The agent's counters (the result of mergedCounters()) as Prometheus
// metric families: per port and application the frames received, sent and
// dropped by reason, the join and leave indications, the LeaveAlls both
// ways and the registrations by attribute type; per port and SR class the
// streams reserved and the bandwidth they reserve; the Talker Failed
// declarations by failure code; per application the worker restarts.
std::vector<prometheus::MetricFamily> metricFamiliesOf(const nlohmann::ordered_json& counters);

}  // namespace MrpCli
