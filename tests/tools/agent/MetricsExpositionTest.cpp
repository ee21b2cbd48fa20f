#include "agent/MetricsExposition.h"

#include <gtest/gtest.h>
#include <prometheus/text_serializer.h>

#include <sstream>
#include <string>

namespace {

using Json = nlohmann::ordered_json;

// What mergedCounters() gives: one port of each application, and the workers.
const Json kCounters = Json::parse(R"({
  "ports": [
    {"port": "eth1", "app": "mvrp", "framesReceived": 12, "framesSent": 10,
     "dropped": {"wrongDestination": 0, "wrongEtherType": 0, "badVersion": 0, "malformed": 2,
                 "unknownType": 0, "unknownApplication": 0},
     "joinIndications": 3, "leaveIndications": 1, "leaveAllsReceived": 4, "leaveAllsSent": 5,
     "talkerFailedDeclared": {}, "registrations": {"VLAN": 2}, "reservations": []},
    {"port": "eth1", "app": "msrp", "framesReceived": 8, "framesSent": 9,
     "dropped": {"wrongDestination": 0, "wrongEtherType": 0, "badVersion": 0, "malformed": 0,
                 "unknownType": 1, "unknownApplication": 0},
     "joinIndications": 2, "leaveIndications": 0, "leaveAllsReceived": 1, "leaveAllsSent": 1,
     "talkerFailedDeclared": {"1": 2}, "registrations": {"talker advertise": 1},
     "reservations": [{"class": "A", "streams": 1, "bandwidth": 9088000}]}
  ],
  "applications": [{"app": "mvrp", "workerRestarts": 0, "engine": {}},
                   {"app": "msrp", "workerRestarts": 3, "engine": {}}]
})");

std::string exposition() {
  std::ostringstream text;
  prometheus::TextSerializer().Serialize(text, MrpCli::metricFamiliesOf(kCounters));
  return text.str();
}

struct Sample {
  const char* line;
};

class MetricsExpositionTest : public ::testing::TestWithParam<Sample> {};

TEST_P(MetricsExpositionTest, TheExpositionHoldsTheSample) {
  EXPECT_NE(exposition().find(std::string(GetParam().line) + "\n"), std::string::npos)
      << GetParam().line << "\nin\n" << exposition();
}

INSTANTIATE_TEST_SUITE_P(
    Samples, MetricsExpositionTest,
    ::testing::Values(Sample{R"(mrp_frames_received_total{port="eth1",app="mvrp"} 12)"},
                      Sample{R"(mrp_frames_transmitted_total{port="eth1",app="msrp"} 9)"},
                      Sample{R"(mrp_frames_dropped_total{port="eth1",app="mvrp",reason="malformed"} 2)"},
                      Sample{R"(mrp_frames_dropped_total{port="eth1",app="msrp",reason="unknown_attribute_type"} 1)"},
                      Sample{R"(mrp_join_indications_total{port="eth1",app="mvrp"} 3)"},
                      Sample{R"(mrp_leave_indications_total{port="eth1",app="mvrp"} 1)"},
                      Sample{R"(mrp_leaveall_received_total{port="eth1",app="mvrp"} 4)"},
                      Sample{R"(mrp_leaveall_sent_total{port="eth1",app="mvrp"} 5)"},
                      Sample{R"(mrp_registrations{port="eth1",app="mvrp",type="vlan"} 2)"},
                      Sample{R"(mrp_registrations{port="eth1",app="msrp",type="talker_advertise"} 1)"},
                      Sample{R"(mrp_talker_failed_declared_total{port="eth1",app="msrp",code="1"} 2)"},
                      Sample{R"(mrp_streams_reserved{port="eth1",app="msrp",class="A"} 1)"},
                      Sample{R"(mrp_reserved_bandwidth_bytes_per_second{port="eth1",app="msrp",class="A"} 1136000)"},
                      Sample{R"(mrp_worker_restarts_total{app="msrp"} 3)"},
                      Sample{"# TYPE mrp_frames_received_total counter"},
                      Sample{"# TYPE mrp_registrations gauge"}));

TEST(MetricsExpositionFamiliesTest, EveryFamilyFollowsTheNamingRules) {
  for (const prometheus::MetricFamily& family : MrpCli::metricFamiliesOf(kCounters)) {
    EXPECT_EQ(family.name.rfind("mrp_", 0), 0u) << family.name;
    EXPECT_EQ(family.name.find_first_not_of("abcdefghijklmnopqrstuvwxyz_"), std::string::npos) << family.name;
    const bool counter = family.type == prometheus::MetricType::Counter;
    EXPECT_EQ(family.name.ends_with("_total"), counter) << family.name;
    EXPECT_FALSE(family.help.empty()) << family.name;
  }
}

TEST(MetricsExpositionFamiliesTest, NoCountersMakeNoSamples) {
  for (const prometheus::MetricFamily& family : MrpCli::metricFamiliesOf(Json::object())) {
    EXPECT_TRUE(family.metric.empty()) << family.name;
  }
}

}  // namespace
