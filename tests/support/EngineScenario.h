#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "MrpSm/MrpLib.h"
#include "MrpSm/MrpSm.h"
#include "quarn/ClockScope.h"
#include "quarn/Log.h"
#include "support/EngineFixture.h"
#include "support/PamEngineFixture.h"
#include "velo/MemPam.h"
#include "velo/PamFactoryScope.h"

namespace MrpTest {

// One value of a transmitted frame as the project's own parser read it.
struct SentValue {
  std::uint8_t attributeType = 0;
  std::uint64_t attributeKey = 0;
  std::uint8_t attributeEvent = 0;
  // The value's octets (for a Listener with its declaration).
  Bytes value;

  friend bool operator==(const SentValue&, const SentValue&) = default;
};
std::ostream& operator<<(std::ostream& os, const SentValue& value);

// One frame an engine put on a port's wire.
struct SentFrame {
  Quarn::Seconds time = 0;
  Bytes bytes;  // the whole Ethernet frame
  // What the project's parser read: the attribute types that carried a
  // LeaveAll, and the values in frame order (MSRP Domain values first).
  std::set<std::uint8_t> leaveAll;
  std::vector<SentValue> values;
};

// One engine of a scenario with records of its own (configuration, status,
// spanning tree, bridging) and a recording service object.
class ScenarioEngine {
 public:
  ScenarioEngine(std::string name, Mrp::MrpApplication application, bool standbyMode);
  ScenarioEngine(const ScenarioEngine&) = delete;
  ScenarioEngine& operator=(const ScenarioEngine&) = delete;

  const std::string& name() const { return name_; }
  Mrp::MrpApplication application() const { return application_; }
  Mrp::MrpSm& sm() const { return *sm_; }
  RecordingMrpLib& lib() const { return *lib_; }
  Mrp::MrpConfig& config() const { return *sm_->mrpConfig(); }
  Mrp::MrpStatus& status() const { return *sm_->mrpStatus(); }
  Stp::Status& stpStatus() const { return *sm_->stpStatus(); }
  Bridging::Config& brConfig() const { return *sm_->brConfig(); }
  Bridging::Topology::Config& brTopoConfig() const { return *sm_->brTopoConfig(); }
  Interface::AllEthPhyIntfStatusDir& ethPhyIntfStatusDir() const { return *sm_->ethPhyIntfStatusDir(); }
  Mrp::MrpCounters& counters() const { return *sm_->mrpCounters(); }

  // The stored entry of an attribute, pending additions included; null when absent.
  Quarn::Ptr<Mrp::MrpAttrDatabase> attribute(const std::string& port, std::uint8_t type, std::uint64_t key) const;

 private:
  std::string name_;
  Mrp::MrpApplication application_;
  Quarn::Ptr<RecordingMrpLib> lib_;
  Quarn::Ptr<Mrp::MrpSm> sm_;
};

// Engines on a simulated clock with in-memory ports, so that a test reads
// like a conversation: inject a frame, advance time, expect indications and
// frames. A port either faces the test (portUp), which holds its far end, or
// faces a port of another engine (link). Port names are unique across the
// scenario's engines.
//
// Every frame an engine sends is read by the project's parser as it goes
// (the read is in SentFrame, and must find nothing malformed); at the end of
// the test all of them are also dissected by tshark, whose values must be
// the same.
class EngineScenario : public ::testing::Test {
 protected:
  EngineScenario();
  ~EngineScenario() override;
  void TearDown() override;

  ScenarioEngine& engineNew(const std::string& name, Mrp::MrpApplication application, bool standbyMode = false);

  // A port of `engine` that the test faces; enabled on the engine.
  void portUp(ScenarioEngine& engine, const std::string& port);
  // Ports of two engines facing each other; both enabled.
  void link(ScenarioEngine& a, const std::string& portA, ScenarioEngine& b, const std::string& portB);
  // Unplugs the wire of `port` (either end) and plugs it in again.
  void cut(const std::string& port);
  void reconnect(const std::string& port);

  // Sends `frame` into `port` from the far end the test faces, and delivers it.
  void inject(const std::string& port, const Bytes& frame);
  // An Ethernet frame for `engine`'s application around `mrpdu` (from its
  // ProtocolVersion octet on).
  static Bytes frameOf(const ScenarioEngine& engine, const Bytes& mrpdu);
  // Runs the clock forward by `seconds`; delivers what is due on the way.
  void advance(Quarn::Seconds seconds);
  Quarn::Seconds now() const { return clock->now(); }

  // The agent's requests on `engine`: the value goes into the transmit field
  // of its type, the port is queued, and mrpSendAttribute runs with `event`
  // (New 0, JoinIn 1, JoinMt 3, Lv 5, LeaveAll 6, internal leave 7).
  template <class Value>
  void request(ScenarioEngine& engine, const std::string& port, const Value& value, std::uint8_t event);
  template <class Value>
  void declare(ScenarioEngine& engine, const std::string& port, const Value& value, std::uint8_t event = kJoinIn) {
    request(engine, port, value, event);
  }
  template <class Value>
  void withdraw(ScenarioEngine& engine, const std::string& port, const Value& value) {
    request(engine, port, value, kLv);
  }

  // What happened since the last take, oldest first.
  std::vector<SentFrame> takeFrames(const std::string& port);
  std::vector<Mrp::MrpParameters> takeJoins(ScenarioEngine& engine);
  std::vector<Mrp::MrpParameters> takeLeaves(ScenarioEngine& engine);

  // Every frame sent so far on every port, in sending order.
  const std::vector<SentFrame>& allFrames() const { return allFrames_; }
  // Frames that are not checked against tshark at the end of the test
  // (deliberately malformed ones, which the parser check also skips).
  void uncheckedFramesAllowed() { checkFrames_ = false; }

  static constexpr std::uint8_t kNew = 0, kJoinIn = 1, kIn = 2, kJoinMt = 3, kMt = 4, kLv = 5, kLeaveAll = 6;

  Quarn::Ptr<Quarn::SimClock> clock;
  Quarn::Ptr<Velo::MemPamFactory> pamFactory;
  // The engines' structured log lines ("MRP_JOIN", "MRP_LV", "MRP_ERROR").
  Quarn::CaptureLogSink logs;

 private:
  Quarn::System::ClockScope clockScope_{clock};
  Velo::PamFactoryScope pamFactoryScope_{pamFactory};

  class PortTap;
  struct Port {
    ScenarioEngine* engine = nullptr;
    Quarn::Ptr<Velo::MemPam> enginePam;
    Quarn::Ptr<Velo::MemPam> farPam;  // the test's end, or the other engine's
    std::unique_ptr<PortTap> tap;
    std::vector<SentFrame> frames;
  };

  Port& portNew(ScenarioEngine& engine, const std::string& name);
  Port& port(const std::string& name);
  void record(Port& port, const Velo::Pkt& frame);
  // The project's parser over one frame of `application`.
  SentFrame decoded(Mrp::MrpApplication application, const Bytes& frame);
  void expectTsharkAgrees();

  std::map<std::string, std::unique_ptr<ScenarioEngine>> engines_;
  std::map<std::string, Port> ports_;
  std::map<Mrp::MrpApplication, Quarn::Ptr<Mrp::MrpSm>> decoders_;
  std::vector<SentFrame> allFrames_;
  bool checkFrames_ = true;
};

// Where an agent puts a value of each record type, and its attribute type.
template <class Value>
struct TxSlot;
template <>
struct TxSlot<Mrp::MvrpVlanAttribute> {
  static constexpr std::uint8_t kType = 1;
  static Mrp::MvrpVlanAttribute& field(Mrp::MrpLib& lib) { return lib.mvrpVlanVectorTx(); }
};
template <>
struct TxSlot<Mrp::MsrpTalkerAdvertiseAttribute> {
  static constexpr std::uint8_t kType = 1;
  static Mrp::MsrpTalkerAdvertiseAttribute& field(Mrp::MrpLib& lib) { return lib.msrpTalkerAdvertiseTx(); }
};
template <>
struct TxSlot<Mrp::MsrpTalkerFailedAttribute> {
  static constexpr std::uint8_t kType = 2;
  static Mrp::MsrpTalkerFailedAttribute& field(Mrp::MrpLib& lib) { return lib.msrpTalkerFailedTx(); }
};
template <>
struct TxSlot<Mrp::MsrpListenerAttribute> {
  static constexpr std::uint8_t kType = 3;
  static Mrp::MsrpListenerAttribute& field(Mrp::MrpLib& lib) { return lib.msrpListenerVectorTx(); }
};
template <>
struct TxSlot<Mrp::MsrpDomainAttribute> {
  static constexpr std::uint8_t kType = 4;
  static Mrp::MsrpDomainAttribute& field(Mrp::MrpLib& lib) { return lib.msrpDomainVectorTx(); }
};

template <class Value>
void EngineScenario::request(ScenarioEngine& engine, const std::string& port, const Value& value,
                             std::uint8_t event) {
  Mrp::MrpLib& lib = engine.lib();
  TxSlot<Value>::field(lib) = value;
  lib.mrpOutIntfQueueEnq(Velo::IntfId(port));
  lib.mrpSendAttribute({Velo::IntfId(port), TxSlot<Value>::kType, event});
}

}  // namespace MrpTest
