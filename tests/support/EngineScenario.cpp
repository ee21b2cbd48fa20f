#include "support/EngineScenario.h"

#include <algorithm>
#include <cstdlib>
#include <tuple>
#include <iomanip>
#include <sstream>

#include "support/EngineBuilder.h"
#include "support/MrpSmPamPeer.h"
#include "support/Tshark.h"
#include "velo/EthHdr.h"
#include "velo/PamFactory.h"

namespace MrpTest {

std::ostream& operator<<(std::ostream& os, const SentValue& value) {
  os << "{type " << unsigned{value.attributeType} << ", key " << value.attributeKey << ", event "
     << unsigned{value.attributeEvent} << ", value ";
  for (std::uint8_t octet : value.value) os << std::hex << std::setw(2) << std::setfill('0') << unsigned{octet};
  return os << std::dec << "}";
}

// ---- ScenarioEngine

ScenarioEngine::ScenarioEngine(std::string name, Mrp::MrpApplication application, bool standbyMode)
    : name_(std::move(name)),
      application_(application),
      lib_(new RecordingMrpLib),
      sm_(EngineBuilder(application).mrpLib(lib_).standbyMode(standbyMode).build()) {}

Quarn::Ptr<Mrp::MrpAttrDatabase> ScenarioEngine::attribute(const std::string& port, std::uint8_t type,
                                                          std::uint64_t key) const {
  return sm_->mrpGetAttrFromDatabase(Velo::IntfId(port), type, key, true);
}

// ---- EngineScenario

// Records what one port's engine puts on its wire.
class EngineScenario::PortTap : public Velo::MemPam::Tap {
 public:
  PortTap(EngineScenario* scenario, Port* port) : scenario_(scenario), port_(port) {}
  void onFrame(const Velo::MemPam&, const Velo::Pkt& frame) override { scenario_->record(*port_, frame); }

 private:
  EngineScenario* scenario_;
  Port* port_;
};

EngineScenario::EngineScenario() : clock(new Quarn::SimClock), pamFactory(new Velo::MemPamFactory) {
  Mrp::MrpSmPamPeer::pamFilterProgramClear();
  for (const auto application : {Mrp::MrpApplication::msrp, Mrp::MrpApplication::mvrp}) {
    decoders_[application] = EngineBuilder(application).build();
  }
}

EngineScenario::~EngineScenario() {
  // The engines go before the wires and the clock they run on.
  engines_.clear();
  decoders_.clear();
  for (auto& [name, port] : ports_) port.enginePam->tapIs(nullptr);
  ports_.clear();
  Velo::pamMaxRxPktDataIs(Velo::kDefaultMaxRxPktData);
}

void EngineScenario::TearDown() {
  if (checkFrames_ && !allFrames_.empty()) expectTsharkAgrees();
}

ScenarioEngine& EngineScenario::engineNew(const std::string& name, Mrp::MrpApplication application,
                                          bool standbyMode) {
  auto engine = std::make_unique<ScenarioEngine>(name, application, standbyMode);
  ScenarioEngine& created = *engine;
  engines_[name] = std::move(engine);
  return created;
}

EngineScenario::Port& EngineScenario::portNew(ScenarioEngine& engine, const std::string& name) {
  EXPECT_FALSE(ports_.count(name)) << "port " << name << " exists already";
  Port& port = ports_[name];
  port.engine = &engine;
  port.tap = std::make_unique<PortTap>(this, &port);
  return port;
}

EngineScenario::Port& EngineScenario::port(const std::string& name) {
  auto it = ports_.find(name);
  if (it == ports_.end()) throw std::invalid_argument("no port " + name);
  return it->second;
}

void EngineScenario::portUp(ScenarioEngine& engine, const std::string& name) {
  Port& port = portNew(engine, name);
  Quarn::Ptr<Velo::MemWire> wire =
      new Velo::MemWire(Velo::IntfId(name), kEngineMac, Velo::IntfId(name + "-far"), kTestMac, clock);
  port.enginePam = wire->a();
  port.farPam = wire->b();
  port.enginePam->tapIs(port.tap.get());
  pamFactory->pamIs(port.enginePam);
  engine.lib().mrpInterfaceEnable(Velo::IntfId(name));
  EXPECT_TRUE(engine.sm().pamCollection()->intfPam(Velo::IntfId(name))) << name << " has no socket";
}

void EngineScenario::link(ScenarioEngine& a, const std::string& portA, ScenarioEngine& b,
                          const std::string& portB) {
  Port& endA = portNew(a, portA);
  Port& endB = portNew(b, portB);
  // Each end has its own address, so frames show who sent them.
  Quarn::Ptr<Velo::MemWire> wire =
      new Velo::MemWire(Velo::IntfId(portA), Velo::EthAddr(0x02, 0, 0, 0, 0x0a, static_cast<std::uint8_t>(ports_.size())),
                        Velo::IntfId(portB), Velo::EthAddr(0x02, 0, 0, 0, 0x0b, static_cast<std::uint8_t>(ports_.size())),
                        clock);
  endA.enginePam = wire->a();
  endA.farPam = wire->b();
  endB.enginePam = wire->b();
  endB.farPam = wire->a();
  endA.enginePam->tapIs(endA.tap.get());
  endB.enginePam->tapIs(endB.tap.get());
  pamFactory->pamIs(endA.enginePam);
  pamFactory->pamIs(endB.enginePam);
  a.lib().mrpInterfaceEnable(Velo::IntfId(portA));
  b.lib().mrpInterfaceEnable(Velo::IntfId(portB));
}

void EngineScenario::cut(const std::string& name) { port(name).enginePam->peerIs(nullptr); }

void EngineScenario::reconnect(const std::string& name) {
  Port& p = port(name);
  p.enginePam->peerIs(p.farPam.ptr());
}

void EngineScenario::inject(const std::string& name, const Bytes& frame) {
  EXPECT_TRUE(port(name).farPam->txPkt(*pktOf(frame))) << "the wire of " << name << " is cut";
  advance(0);
}

Bytes EngineScenario::frameOf(const ScenarioEngine& engine, const Bytes& mrpdu) {
  Bytes frame(Velo::EthHdr::kSize);
  Velo::EthHdr(engine.lib().applicationMacAddr(), kTestMac, engine.lib().applicationEtype()).toBytes(frame.data());
  frame.insert(frame.end(), mrpdu.begin(), mrpdu.end());
  return frame;
}

void EngineScenario::advance(Quarn::Seconds seconds) {
  clock->advance(seconds);
  // What the port's far end receives is what the tap recorded: drop the copies.
  for (auto& [name, port] : ports_) {
    if (port.farPam && !ports_.count(port.farPam->intfId().name())) {
      while (port.farPam->rxPkt()) {
      }
    }
  }
}

void EngineScenario::record(Port& port, const Velo::Pkt& frame) {
  SentFrame sent = decoded(port.engine->application(), bytesOf(frame));
  sent.time = clock->now();
  port.frames.push_back(sent);
  allFrames_.push_back(std::move(sent));
}

SentFrame EngineScenario::decoded(Mrp::MrpApplication application, const Bytes& frame) {
  SentFrame sent;
  sent.bytes = frame;
  Mrp::MrpSm& parser = *decoders_.at(application);
  Mrp::MrpCounters& counters = *parser.mrpCounters();
  const std::uint64_t malformed = counters.numOfMalformedPkts();
  const std::uint64_t unknownType = counters.numOfUnknownAttributeType();
  parser.parseMrpdu(Velo::Pkt::pktNew(frame.data() + Velo::EthHdr::kSize, frame.size() - Velo::EthHdr::kSize));
  if (checkFrames_) {
    EXPECT_EQ(counters.numOfMalformedPkts(), malformed) << "our parser finds a sent frame malformed";
    EXPECT_EQ(counters.numOfUnknownAttributeType(), unknownType) << "our parser finds an unknown type in a sent frame";
  }
  for (const auto& [type, leaveAll] : parser.receivedFrame().mrpRxLeaveAll()) {
    if (leaveAll) sent.leaveAll.insert(type);
  }
  const auto take = [&](const Mrp::MrpReceivedFrame::KeyQueue& keys) {
    for (const auto& [index, key] : keys) {
      const Quarn::Ptr<Mrp::MrpParsedAttribute> parsed = parser.receivedFrame().mrpParsedAttribute(key);
      Bytes value;
      for (std::size_t i = 0; i < parsed->attributeValues().size(); ++i) {
        value.push_back(parsed->attributeValue(Mrp::ValueIndex(i)));
      }
      sent.values.push_back({key.attributeType, key.attributeKey, parsed->attributeEvent(), value});
    }
  };
  take(parser.receivedFrame().msrpParsedDomainKey());
  take(parser.receivedFrame().mrpParsedAttributeKey());
  parser.receivedFrame().parseResultsDelAll();
  return sent;
}

std::vector<SentFrame> EngineScenario::takeFrames(const std::string& name) {
  return std::exchange(port(name).frames, {});
}

std::vector<Mrp::MrpParameters> EngineScenario::takeJoins(ScenarioEngine& engine) {
  return std::exchange(engine.lib().joins, {});
}

std::vector<Mrp::MrpParameters> EngineScenario::takeLeaves(ScenarioEngine& engine) {
  return std::exchange(engine.lib().leaves, {});
}

// ---- The dissector's reading of every frame sent.

namespace {

// (type, key, event) of every value tshark shows, and the types that carry
// a LeaveAll; keys follow from each vector's FirstValue as the values do.
struct DissectedValues {
  std::set<std::uint8_t> leaveAll;
  // A later occurrence of an attribute in the frame overrides an earlier one.
  std::map<std::pair<std::uint8_t, std::uint64_t>, std::uint8_t> values;
  bool complaint = false;
};

DissectedValues valuesOf(const DissectedFrame& frame) {
  DissectedValues out;
  std::uint8_t type = 0;
  std::uint64_t firstKey = 0;
  std::uint64_t index = 0;
  for (const DissectedField& f : frame) {
    const auto dot = f.name.find('.');
    const std::string proto = f.name.substr(0, dot);
    const std::string name = dot == std::string::npos ? "" : f.name.substr(dot + 1);
    if (f.name.rfind("_ws.malformed", 0) == 0 || f.name.rfind("_ws.expert", 0) == 0) out.complaint = true;
    if (proto != "mrp-msrp" && proto != "mrp-mvrp") continue;
    const auto number = [&] { return std::stoull(f.show, nullptr, 0); };
    if (name == "attribute_type") {
      type = static_cast<std::uint8_t>(number());
    } else if (name == "leave_all_event") {
      if (number() != 0) out.leaveAll.insert(type);
    } else if (name == "number_of_values") {
      index = 0;
    } else if (name == "vid" || name == "stream_id" || name == "sr_class_id") {
      firstKey = number();
    } else if (name == "three_packed_event") {
      std::uint64_t key = firstKey + index++;
      // A Domain's class id wraps as one octet.
      if (proto == "mrp-msrp" && type == 4) key &= 0xff;
      out.values[{type, key}] = static_cast<std::uint8_t>(number());
    }
  }
  return out;
}

}  // namespace

void EngineScenario::expectTsharkAgrees() {
  // Without tshark only the project's parser has read the frames; CI has it.
  if (!tsharkAvailable()) {
    const char* ci = std::getenv("CI");
    EXPECT_FALSE(ci && *ci) << "tshark is not installed, and CI is set: sent frames must be dissected";
    return;
  }
  std::vector<Bytes> frames;
  for (const SentFrame& sent : allFrames_) frames.push_back(sent.bytes);
  const std::vector<DissectedFrame> dissected = tsharkDissect(frames);
  for (std::size_t i = 0; i < allFrames_.size(); ++i) {
    SCOPED_TRACE("sent frame " + std::to_string(i) + " at " + std::to_string(allFrames_[i].time) + " s");
    const DissectedValues theirs = valuesOf(dissected[i]);
    EXPECT_FALSE(theirs.complaint) << "tshark reports a malformed or suspicious frame";
    DissectedValues ours;
    ours.leaveAll = allFrames_[i].leaveAll;
    for (const SentValue& v : allFrames_[i].values) ours.values[{v.attributeType, v.attributeKey}] = v.attributeEvent;
    EXPECT_EQ(theirs.leaveAll, ours.leaveAll);
    EXPECT_EQ(theirs.values, ours.values);
  }
}

}  // namespace MrpTest
