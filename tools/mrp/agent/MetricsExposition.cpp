#include "agent/MetricsExposition.h"

#include <algorithm>
#include <cctype>
#include <string>

#include "control/PortCounterNames.h"

namespace MrpCli {

namespace {

using Json = nlohmann::ordered_json;
using prometheus::ClientMetric;
using prometheus::MetricFamily;
using prometheus::MetricType;
using Labels = std::vector<ClientMetric::Label>;

constexpr const char* kRegistrations = "mrp_registrations";
constexpr const char* kTalkerFailed = "mrp_talker_failed_declared_total";
constexpr const char* kStreamsReserved = "mrp_streams_reserved";
constexpr const char* kReservedBandwidth = "mrp_reserved_bandwidth_bytes_per_second";
constexpr const char* kWorkerRestarts = "mrp_worker_restarts_total";

struct FamilyHelp {
  const char* name;
  MetricType type;
  const char* help;
};

constexpr FamilyHelp kFamilies[] = {
    {"mrp_frames_received_total", MetricType::Counter, "MRPDUs received on the port that passed the frame checks."},
    {"mrp_frames_transmitted_total", MetricType::Counter, "MRPDUs sent on the port."},
    {"mrp_frames_dropped_total", MetricType::Counter,
     "Received MRPDUs, or messages in them, dropped by the engine, by reason."},
    {"mrp_join_indications_total", MetricType::Counter, "Join indications of the registrar on the port."},
    {"mrp_leave_indications_total", MetricType::Counter, "Leave indications of the registrar on the port."},
    {"mrp_leaveall_received_total", MetricType::Counter, "LeaveAll events received, one per attribute type."},
    {"mrp_leaveall_sent_total", MetricType::Counter, "LeaveAll events sent, one per attribute type."},
    {kRegistrations, MetricType::Gauge, "Attributes registered on the port now, by attribute type."},
    {kTalkerFailed, MetricType::Counter, "Talker Failed declarations the bridge made on the port, by failure code."},
    {kStreamsReserved, MetricType::Gauge, "Streams reserved on the port now, by SR class."},
    {kReservedBandwidth, MetricType::Gauge, "Bandwidth reserved on the port now, by SR class."},
    {kWorkerRestarts, MetricType::Counter, "Times the application's worker process was started again after it died."},
};

// "talker advertise" -> "talker_advertise"
std::string labelValueOf(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) {
    return c == ' ' ? '_' : static_cast<char>(std::tolower(c));
  });
  return text;
}

class Families {
 public:
  Families() {
    for (const FamilyHelp& family : kFamilies) families_.push_back({family.name, family.help, family.type, {}});
  }

  void add(const std::string& family, Labels labels, double value) {
    auto it = std::find_if(families_.begin(), families_.end(), [&](const MetricFamily& f) { return f.name == family; });
    ClientMetric metric;
    metric.label = std::move(labels);
    if (it->type == MetricType::Counter) {
      metric.counter.value = value;
    } else {
      metric.gauge.value = value;
    }
    it->metric.push_back(std::move(metric));
  }

  std::vector<MetricFamily> take() { return std::move(families_); }

 private:
  std::vector<MetricFamily> families_;
};

// A member of `json`, or null when it has none; a reference, for a loop to walk.
const Json& memberOf(const Json& json, const char* key) {
  static const Json kNone;
  const auto it = json.find(key);
  return it != json.end() ? *it : kNone;
}

double numberOf(const Json& json) { return json.is_number() ? json.get<double>() : 0; }

double numberIn(const Json& json, const char* key) { return numberOf(memberOf(json, key)); }

void addPort(Families& families, const Json& entry) {
  const Labels port{{"port", entry.value("port", "")}, {"app", entry.value("app", "")}};
  for (const PortCounterName& name : kPortCounterNames) {
    Labels labels = port;
    double value = 0;
    if (name.subkey) {
      labels.push_back({"reason", name.reason});
      value = numberOf(memberOf(memberOf(entry, name.key), name.subkey));
    } else {
      value = numberIn(entry, name.key);
    }
    families.add(name.metric, std::move(labels), value);
  }
  for (const auto& [type, count] : memberOf(entry, "registrations").items()) {
    Labels labels = port;
    labels.push_back({"type", labelValueOf(type)});
    families.add(kRegistrations, std::move(labels), numberOf(count));
  }
  for (const auto& [code, count] : memberOf(entry, "talkerFailedDeclared").items()) {
    Labels labels = port;
    labels.push_back({"code", code});
    families.add(kTalkerFailed, std::move(labels), numberOf(count));
  }
  for (const Json& reservation : memberOf(entry, "reservations")) {
    Labels labels = port;
    labels.push_back({"class", reservation.value("class", "")});
    families.add(kStreamsReserved, labels, numberIn(reservation, "streams"));
    families.add(kReservedBandwidth, std::move(labels), numberIn(reservation, "bandwidth") / 8);
  }
}

}  // namespace

std::vector<MetricFamily> metricFamiliesOf(const Json& counters) {
  Families families;
  for (const Json& entry : memberOf(counters, "ports")) addPort(families, entry);
  for (const Json& application : memberOf(counters, "applications")) {
    families.add(kWorkerRestarts, {{"app", application.value("app", "")}}, numberIn(application, "workerRestarts"));
  }
  return families.take();
}

}  // namespace MrpCli
