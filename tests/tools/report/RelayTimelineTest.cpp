#include "report/RelayTimeline.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "BridgeId.h"
#include "control/AttributeMessage.h"
#include "report/ValueText.h"

namespace MrpTest {
namespace {

using MrpAgent::AttributeValue;
using MrpCli::TimelinePlace;

// Writes what it hears as one line per event.
class LineTimeline : public MrpCli::Timeline {
 public:
  void requested(const TimelinePlace& p, const AttributeValue& v, bool withdraw) override {
    add(p, (withdraw ? "withdraw " : "declare ") + MrpCli::valueText(v));
  }
  void indicated(const TimelinePlace& p, const AttributeValue& v, bool join) override {
    add(p, (join ? "join " : "leave ") + MrpCli::valueText(v));
  }
  void forgot(const TimelinePlace& p, const AttributeValue& v, MrpAgent::Bridge::ForgetCause cause) override {
    add(p, "forgot " + MrpCli::valueText(v) + " (" + MrpCli::forgetCauseName(cause) + ")");
  }
  void portChanged(const TimelinePlace& p, const std::string& state) override { add(p, "port " + state); }
  void reservationChanged(const TimelinePlace& p, const MrpAgent::ReservationChange& c) override {
    add(p, std::string(c.reserved ? "reserved " : "released ") + MrpCli::streamIdText(c.streamId) + " " +
               c.srClass.name + " " + std::to_string(c.bandwidth) + " " + std::to_string(c.total) + "/" +
               std::to_string(c.limit));
  }
  void talkerFailed(const TimelinePlace& p, const Mrp::MsrpTalkerFailedAttribute& declared) override {
    const Mrp::FailureInformation& failure = declared.failureInformation();
    add(p, MrpCli::valueText(AttributeValue(declared)) + " by " + MrpAgent::bridgeIdText(failure.bridgeId()) +
               " latency " + std::to_string(declared.talkerAdvertiseAttribute().accumulatedLatency()));
  }
  void listenerDeclared(const TimelinePlace& p, const Mrp::MsrpListenerAttribute& listener) override {
    add(p, std::string("declared ").append(MrpCli::valueText(AttributeValue(listener))));
  }
  void transmitted(const TimelinePlace&, Mrp::MrpApplication, const std::vector<std::uint8_t>&,
                   const std::vector<std::uint8_t>&) override {}
  void injected(const TimelinePlace&, const std::vector<std::uint8_t>&) override {}
  void linkChanged(Quarn::Seconds, const std::string&, const std::string&, bool) override {}
  void roleChanged(const TimelinePlace&, Stp::MstiPortStatus::Role, Stp::MstiPortStatus::Role) override {}
  void registrations(const TimelinePlace&, const std::vector<MrpAgent::Registration>&) override {}
  void streams(const TimelinePlace&, const MrpAgent::StreamTable&) override {}

  std::vector<std::string> lines;

 private:
  void add(const TimelinePlace& p, const std::string& what) {
    lines.push_back(std::to_string(p.t) + " " + std::to_string(p.wallTime.value_or(-1)) + " " + p.bridge + " " +
                    p.port + " " + what);
  }
};

const std::vector<AttributeValue> kValues = {
    AttributeValue(Mrp::MvrpVlanAttribute(4094)),
    AttributeValue(Mrp::MsrpTalkerAdvertiseAttribute(
        0x001b210000010001ULL, Mrp::DataFrameParameters(Velo::EthAddr(0x91, 0xe0, 0xf0, 0, 0xfe, 1), 2),
        Mrp::Tspec(100, 1), Mrp::PriorityAndRank(3, 1), 1000)),
    AttributeValue(Mrp::MsrpListenerAttribute(0xffffffffffffffffULL, Mrp::MsrpListenerEvent::askingFailed)),
    AttributeValue(Mrp::MsrpDomainAttribute(6, 3, 2)),
};

const Mrp::MsrpTalkerFailedAttribute kFailed(std::get<Mrp::MsrpTalkerAdvertiseAttribute>(kValues[1].record()),
                                             Mrp::FailureInformation(0x8000020000000002, 1));

// What a worker tells of its streams: each kind with the fields that would
// show a field lost on the way.
const std::vector<std::function<void(MrpCli::Timeline&, const TimelinePlace&)>> kStreamEvents = {
    [](MrpCli::Timeline& t, const TimelinePlace& p) {
      t.reservationChanged(p, {0xffffffffffffffffULL, true, MrpAgent::kSrClassA, 9'088'000, 18'176'000, 750'000'000});
    },
    [](MrpCli::Timeline& t, const TimelinePlace& p) {
      t.reservationChanged(p, {1, false, MrpAgent::kSrClassB, 3'392'000, 0, 7'500'000'000});
    },
    [](MrpCli::Timeline& t, const TimelinePlace& p) { t.talkerFailed(p, kFailed); },
    [](MrpCli::Timeline& t, const TimelinePlace& p) {
      t.listenerDeclared(p, Mrp::MsrpListenerAttribute(1, Mrp::MsrpListenerEvent::readyFailed));
    },
};

TEST(AttributeMessageTest, EveryValueArrivesAsItLeft) {
  for (const AttributeValue& value : kValues) {
    const auto message = MrpCli::attributeMessage(value);
    const auto back = MrpCli::attributeFromMessage(nlohmann::ordered_json::parse(message.dump()));
    ASSERT_TRUE(back) << message.dump();
    EXPECT_EQ(*back, value) << message.dump();
  }
}

TEST(AttributeMessageTest, AMessageThatCarriesNoValueGivesNone) {
  for (const char* text : {R"({})", R"({"app": "xrp", "type": 1, "record": "000a"})",
                           R"({"app": "mvrp", "type": 2, "record": "000a"})",
                           R"({"app": "mvrp", "type": 1, "record": "0g"})", R"({"app": "mvrp", "type": 300, "record": ""})",
                           R"([1, 2])"}) {
    EXPECT_FALSE(MrpCli::attributeFromMessage(nlohmann::ordered_json::parse(text))) << text;
  }
}

TEST(RelayTimelineTest, EachEventReachesTheSupervisorsTimelineAsItHappened) {
  LineTimeline direct;
  LineTimeline relayed;
  MrpCli::RelayTimeline relay([&relayed](const nlohmann::ordered_json& message) {
    // As the channel carries it: one line of text.
    EXPECT_TRUE(MrpCli::relayTimelineMessage(nlohmann::ordered_json::parse(message.dump()), "agent", relayed));
  });
  const TimelinePlace place{1.25, "agent", "eth1", 1795120768.125};
  for (MrpCli::Timeline* timeline : {static_cast<MrpCli::Timeline*>(&direct), static_cast<MrpCli::Timeline*>(&relay)}) {
    for (const AttributeValue& value : kValues) {
      timeline->requested(place, value, false);
      timeline->requested(place, value, true);
      timeline->indicated(place, value, true);
      timeline->indicated(place, value, false);
      timeline->forgot(place, value, MrpAgent::Bridge::ForgetCause::portClosed);
      timeline->forgot(place, value, MrpAgent::Bridge::ForgetCause::blocked);
    }
    timeline->portChanged(place, "down");
    for (const auto& event : kStreamEvents) event(*timeline, place);
  }
  EXPECT_EQ(relayed.lines, direct.lines);
  EXPECT_EQ(relayed.lines.size(), kValues.size() * 6 + 1 + kStreamEvents.size());
}

TEST(RelayTimelineTest, AMessageThatIsNoEventIsRefused) {
  LineTimeline timeline;
  for (const char* text : {R"({"ready": true})", R"({"timeline": "indicated", "t": 1, "port": "eth1"})",
                           R"({"timeline": "portChanged", "t": 1, "port": "eth1"})",
                           R"({"timeline": "exploded", "t": 1, "port": "eth1", "attribute": {}})",
                           R"({"timeline": "indicated", "t": "soon", "port": "eth1"})",
                           R"({"timeline": "reservationChanged", "t": 1, "port": "eth1"})",
                           R"({"timeline": "reservationChanged", "t": 1, "port": "eth1", "reservation": {"streamId": 1,
                               "reserved": true, "class": "C", "bandwidth": 1, "total": 1, "limit": 1}})",
                           R"({"timeline": "reservationChanged", "t": 1, "port": "eth1", "reservation": {"streamId": -1,
                               "reserved": true, "class": "A", "bandwidth": 1, "total": 1, "limit": 1}})",
                           R"({"timeline": "talkerFailed", "t": 1, "port": "eth1",
                               "attribute": {"app": "mvrp", "type": 1, "record": "000a"}})",
                           R"({"timeline": "listenerDeclared", "t": 1, "port": "eth1",
                               "attribute": {"app": "msrp", "type": 4, "record": "06030002"}})"}) {
    EXPECT_FALSE(MrpCli::relayTimelineMessage(nlohmann::ordered_json::parse(text), "agent", timeline)) << text;
  }
  EXPECT_TRUE(timeline.lines.empty());
}

}  // namespace
}  // namespace MrpTest
