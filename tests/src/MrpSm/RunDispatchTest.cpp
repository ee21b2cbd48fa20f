// A frame collected vector by vector must be dispatched exactly as the same
// frame collected value by value: the same registrations and states, the
// same indications, the same frames sent, the same parse context. Random
// frames, some with keys repeated across vectors (which the parser collects
// value by value anyway), go to two engines; one of them only ever collects
// value by value.

#include <gtest/gtest.h>

#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "quarn/Trace.h"
#include "support/EngineScenario.h"
#include "support/FrameBuilder.h"
#include "support/MrpSmParsePeer.h"
#include "support/ScopedEnv.h"

namespace MrpTest {
namespace {

using Mrp::MrpApplication;

class RunDispatchTest : public EngineScenario {
 protected:
  explicit RunDispatchTest(MrpApplication application = MrpApplication::mvrp)
      : fixedPeriods("DISABLE_LEAVE_ALL_RANDOMIZATION", "1"),
        runs(engineNew("runs", application)),
        values(engineNew("values", application)) {
    portUp(runs, "r1");
    portUp(values, "v1");
    Mrp::MrpSmParsePeer::parsedRunsEnabledIs(values.sm(), false);
  }

  void receive(const Bytes& mrpdu) {
    inject("r1", frameOf(runs, mrpdu));
    inject("v1", frameOf(values, mrpdu));
  }

  // Everything the engine holds on its port, and what it told and sent.
  std::string stateOf(ScenarioEngine& engine, const std::string& port) {
    std::ostringstream out;
    Mrp::MrpSm& sm = engine.sm();
    for (std::uint8_t type = 1; type <= sm.maxAttrTypes(); ++type) {
      const auto iter = sm.attributeStore().mrpAttrIter({Velo::IntfId(port), type});
      if (!iter) continue;
      for (std::uint64_t key : iter->attributeKeys()) {
        const auto entry = sm.mrpGetAttrFromDatabase(Velo::IntfId(port), type, key, true);
        out << unsigned{type} << "/" << key << " ";
        if (entry) {
          out << entry->registrarState() << "/" << entry->applicantState() << "\n";
        } else {
          out << "deleting\n";
        }
      }
    }
    for (const auto& j : takeJoins(engine)) out << "join " << unsigned{j.attributeType} << "/" << j.attributeKey << "\n";
    for (const auto& l : takeLeaves(engine)) out << "leave " << unsigned{l.attributeType} << "/" << l.attributeKey << "\n";
    for (const SentFrame& f : takeFrames(port)) {
      for (const SentValue& v : f.values) out << "sent " << v << "\n";
    }
    out << "events " << sm.parseContext()->eventsCounter() << "\n";
    return out.str();
  }

  // Both engines send their LeaveAlls at the same moments.
  ScopedEnv fixedPeriods;
  ScenarioEngine& runs;
  ScenarioEngine& values;
};

// Frames of a few vectors of random first values and events over a small
// key range, so that registrations build up, leave and keys collide.
TEST_F(RunDispatchTest, MvrpFramesDispatchAsCollectedValueByValue) {
  std::mt19937 random(11);
  Quarn::Ptr<Mrp::MrpLib> encoder = Mrp::mrpLibFactory();
  for (int frame = 0; frame < 300; ++frame) {
    FrameBuilder b(*encoder, MrpApplication::mvrp);
    b.message(1);
    const int vectors = 1 + static_cast<int>(random() % 3);
    for (int v = 0; v < vectors; ++v) {
      b.vlan(Mrp::MvrpVlanAttribute(static_cast<std::uint16_t>(1 + random() % 40)), static_cast<std::uint8_t>(random() % 6));
      const int more = static_cast<int>(random() % 8);
      for (int i = 0; i < more; ++i) b.append(static_cast<std::uint8_t>(random() % 6));
    }
    const Bytes mrpdu = b.mrpdu();
    receive(mrpdu);
    advance(random() % 4 == 0 ? 0.7 : 0.05);
    ASSERT_EQ(stateOf(runs, "r1"), stateOf(values, "v1")) << "frame " << frame;
  }
}

// The lines that deriving each value of a vector traces at level 8.
std::vector<std::string> derivationLines(const Quarn::CaptureTraceSink& traces) {
  std::vector<std::string> lines;
  for (const auto& line : traces.lines()) {
    for (const char* start : {" Vlan vector = ", " TalkerAdvertiseAttribute = ", " TalkerFailedAttribute = ",
                              " Domain vector = ", "original dmac = "}) {
      if (line.text.starts_with(start)) lines.push_back(line.text);
    }
  }
  return lines;
}

// Traces `receive` writes at level 8 on one engine's port.
template <class Receive>
std::vector<std::string> derivationLinesOf(Receive receive) {
  Quarn::CaptureTraceSink traces;
  EXPECT_TRUE(Quarn::traceLevelsIs("MrpSm/8"));
  receive();
  Quarn::traceLevelsClear();
  return derivationLines(traces);
}

TEST_F(RunDispatchTest, WhileLevelEightIsTracedEachValueIsTracedAsCollectedValueByValue) {
  Quarn::Ptr<Mrp::MrpLib> encoder = Mrp::mrpLibFactory();
  FrameBuilder b(*encoder, MrpApplication::mvrp);
  b.message(1).vlan(Mrp::MvrpVlanAttribute(10), kJoinIn).append(kJoinIn).append(kJoinMt);
  const Bytes mrpdu = b.mrpdu();
  const std::vector<std::string> collectedByRuns = derivationLinesOf([&] { inject("r1", frameOf(runs, mrpdu)); });
  const std::vector<std::string> valueByValue = derivationLinesOf([&] { inject("v1", frameOf(values, mrpdu)); });
  EXPECT_EQ(valueByValue.size(), 2u) << "VLANs 11 and 12, derived from 10";
  EXPECT_EQ(collectedByRuns, valueByValue);
}

class MsrpRunDispatchTest : public RunDispatchTest {
 protected:
  MsrpRunDispatchTest() : RunDispatchTest(MrpApplication::msrp) {}
};

Mrp::MsrpTalkerAdvertiseAttribute talker(std::uint64_t streamId) {
  return {streamId, Mrp::DataFrameParameters(Velo::EthAddr(0x91, 0xe0, 0xf0, 0, 0xfe, 0), 2), Mrp::Tspec(100, 1),
          Mrp::PriorityAndRank(3, 1), 500};
}

TEST_F(MsrpRunDispatchTest, MsrpFramesOfEveryTypeDispatchAsCollectedValueByValue) {
  std::mt19937 random(5);
  Quarn::Ptr<Mrp::MrpLib> encoder = Mrp::mrpLibFactory();
  const auto event = [&] { return static_cast<std::uint8_t>(random() % 6); };
  const auto declaration = [&] { return static_cast<Mrp::MsrpListenerEvent>(random() % 4); };
  for (int frame = 0; frame < 200; ++frame) {
    FrameBuilder b(*encoder, MrpApplication::msrp);
    b.message(1).talker(talker(random() % 12), event()).append(event());
    if (random() % 2) b.talker(talker(random() % 12), event());
    b.message(3).listener(Mrp::MsrpListenerAttribute(random() % 12, declaration()), event());
    b.appendListener(event(), declaration()).appendListener(event(), declaration());
    b.message(4).domain(Mrp::MsrpDomainAttribute(static_cast<std::uint8_t>(5 + random() % 3), 3, 2), event());
    if (random() % 2) b.domain(Mrp::MsrpDomainAttribute(static_cast<std::uint8_t>(5 + random() % 3), 4, 2), event());
    const Bytes mrpdu = b.mrpdu();
    receive(mrpdu);
    advance(random() % 4 == 0 ? 0.7 : 0.05);
    ASSERT_EQ(stateOf(runs, "r1"), stateOf(values, "v1")) << "frame " << frame;
  }
}

TEST_F(MsrpRunDispatchTest, WhileLevelEightIsTracedEachTalkerAndDomainIsTracedAsCollectedValueByValue) {
  Quarn::Ptr<Mrp::MrpLib> encoder = Mrp::mrpLibFactory();
  FrameBuilder b(*encoder, MrpApplication::msrp);
  b.message(1).talker(talker(3), kJoinIn).append(kJoinIn);
  b.message(4).domain(Mrp::MsrpDomainAttribute(6, 3, 2), kJoinIn).append(kJoinIn);
  const Bytes mrpdu = b.mrpdu();
  const std::vector<std::string> collectedByRuns = derivationLinesOf([&] { inject("r1", frameOf(runs, mrpdu)); });
  const std::vector<std::string> valueByValue = derivationLinesOf([&] { inject("v1", frameOf(values, mrpdu)); });
  EXPECT_EQ(valueByValue.size(), 4u) << "the first talker, the second's address and itself, the second domain";
  EXPECT_EQ(collectedByRuns, valueByValue);
}

}  // namespace
}  // namespace MrpTest
