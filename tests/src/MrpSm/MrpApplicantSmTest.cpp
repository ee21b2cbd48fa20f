#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "quarn/Trace.h"
#include "support/CurrentAttribute.h"
#include "support/EngineScenario.h"

namespace MrpTest {
namespace {

using Event = Mrp::MrpApplicantEvent;
using State = Mrp::MrpApplicantState;
using Registrar = Mrp::MrpRegistrarState;
// Attribute events, as numbers so that failures print them as such.
using Events = std::vector<unsigned>;

const Mrp::MrpAttribute kVlan10{Velo::IntfId("p1"), 1, 10};

// What one transition put into the port's two transmit packets (attribute
// events in order), and the state it stored.
struct Transition {
  Events firstPacket;
  Events secondPacket;
  State state;
};

// An MVRP engine with one port; VLAN 10 is the attribute under test.
class MrpApplicantSmTest : public EngineScenario {
 protected:
  MrpApplicantSmTest() {
    portUp(engine, "p1");
    engine.lib().mvrpVlanVectorTx() = Mrp::MvrpVlanAttribute(10);
  }

  // Stores VLAN 10 in `stored` with its registrar in `registrar`, hands the
  // applicant `event`, and reads what went into each packet.
  Transition transition(State stored, Registrar registrar, Event event) {
    currentAttributeIs(engine.sm(), kVlan10, stored, registrar);
    applicantEventHandle(engine.sm(), event);
    const State state = currentEntry(engine.sm())->applicantState();
    Events first = eventsSent(false);
    Events second = eventsSent(true);
    return {std::move(first), std::move(second), state};
  }

  // Sends the port's first (or second) transmit packet and returns the
  // events of VLAN 10 that it carried, as our parser reads them.
  Events eventsSent(bool secondPktContext) {
    engine.sm().mrpTransmitTxPacket(kVlan10.intfId, secondPktContext);
    Events events;
    for (const SentFrame& frame : takeFrames("p1")) {
      for (const SentValue& value : frame.values) {
        EXPECT_EQ(value.attributeType, kVlan10.attributeType);
        EXPECT_EQ(value.attributeKey, kVlan10.attributeKey);
        events.push_back(value.attributeEvent);
      }
    }
    return events;
  }

  ScenarioEngine& engine = engineNew("A", Mrp::MrpApplication::mvrp);
};

// ---- The transition table, written as its cells are: "sN×2 → QA",
// ---- "sR(false), stay VO", "→ AO", "—" (ignored).

// One message of a cell: which send operation, into which packet.
struct Send {
  char operation;  // 'N' New, 'J' Join, 'R' registered state, 'L' Leave
  bool secondPktContext;
};

struct Cell {
  std::vector<Send> sends;
  State next;
};

std::string_view trimmed(std::string_view text) {
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  return text;
}

State stateNamed(std::string_view name) {
  for (unsigned code = 0; code <= 11; ++code) {
    std::ostringstream text;
    text << static_cast<State>(code);
    if (text.str() == name) return static_cast<State>(code);
  }
  throw std::invalid_argument("no applicant state " + std::string(name));
}

std::vector<Send> sendsNamed(std::string_view name) {
  if (name == "sN×2") return {{'N', false}, {'N', true}};
  if (name == "sJ×2") return {{'J', false}, {'J', true}};
  if (name == "sN(false)") return {{'N', false}};
  if (name == "sJ(false)") return {{'J', false}};
  if (name == "sJ(true)") return {{'J', true}};
  if (name == "sR(false)") return {{'R', false}};
  if (name == "sL") return {{'L', false}};
  throw std::invalid_argument("no send operation " + std::string(name));
}

// A cell's text in the row of state `row`.
Cell cellOf(std::string_view text, State row) {
  if (text == "—") return {{}, row};
  Cell cell{{}, row};
  std::string_view sends;
  if (const auto arrow = text.find("→"); arrow != std::string_view::npos) {
    cell.next = stateNamed(trimmed(text.substr(arrow + std::string_view("→").size())));
    sends = trimmed(text.substr(0, arrow));
  } else if (const auto stay = text.find(", stay "); stay != std::string_view::npos) {
    if (stateNamed(text.substr(stay + std::string_view(", stay ").size())) != row) {
      throw std::invalid_argument("a cell stays in another row's state: " + std::string(text));
    }
    sends = text.substr(0, stay);
  } else {
    throw std::invalid_argument("a cell without its next state: " + std::string(text));
  }
  while (!sends.empty()) {
    const auto comma = sends.find(", ");
    for (const Send& send : sendsNamed(sends.substr(0, comma))) cell.sends.push_back(send);
    sends = comma == std::string_view::npos ? std::string_view() : sends.substr(comma + 2);
  }
  return cell;
}

// The attribute event a send operation puts on the wire: Join and the
// registered state follow the registrar (IN, or anything else).
unsigned attributeEventOf(char operation, Registrar registrar) {
  using Wire = Mrp::MrpThreePackedEvent;
  const bool in = registrar == Registrar::in;
  switch (operation) {
    case 'N': return static_cast<unsigned>(Wire::newEvent);
    case 'J': return static_cast<unsigned>(in ? Wire::joinIn : Wire::joinMt);
    case 'R': return static_cast<unsigned>(in ? Wire::in : Wire::mt);
    default: return static_cast<unsigned>(Wire::lv);
  }
}

const std::array<Event, 11> kColumns = {Event::newReq, Event::joinReq, Event::lvReq,   Event::redeclare,
                                        Event::rJoinIn, Event::rIn,    Event::rJoinMt, Event::rMt,
                                        Event::rLv,     Event::rxLvAll_, Event::txLvAll};

struct Row {
  State state;
  std::array<const char*, 11> cells;
};

// clang-format off
const Row kApplicantTable[] = {
  // State     New! (0)     Join! (1)          Lv! (2)    Re-declare! (3)       rJoinIn! (6)       rIn! (7)  rJoinMt! (8)       rMt! (9)           rLv! (10)             rLA! (11)             txLA! (12)
  {State::vo, {"sN×2 → QA", "sJ×2 → QA",       "—",       "sR(false), stay VO", "→ AO",            "—",      "—",               "—",               "sR(false), stay VO", "sR(false), stay VO", "sR(false), stay VO"}},
  {State::vp, {"sN×2 → QA", "—",               "→ VO",    "—",                  "sJ(false) → QA",  "—",      "—",               "—",               "—",                  "—",                  "sR(false), sJ(true) → QA"}},
  {State::vn, {"—",         "—",               "sL → VO", "—",                  "—",               "—",      "—",               "—",               "—",                  "—",                  "sN×2 → QA"}},
  {State::an, {"—",         "—",               "sL → VO", "sN×2 → QA",          "—",               "—",      "—",               "—",               "sN×2 → QA",          "sN×2 → QA",          "sN(false) → QA"}},
  {State::aa, {"sN×2 → QA", "—",               "sL → VO", "sJ×2 → QA",          "→ QA",            "→ QA",   "—",               "—",               "sJ×2 → QA",          "sJ×2 → QA",          "—"}},
  {State::qa, {"sN×2 → QA", "sJ×2 → QA",       "sL → VO", "sJ×2 → QA",          "—",               "—",      "sJ(false) → QA",  "sJ(false) → QA",  "sJ×2 → QA",          "sJ×2 → QA",          "sJ(false), stay QA"}},
  {State::la, {"sN×2 → QA", "sJ(false) → QA",  "—",       "—",                  "—",               "—",      "—",               "—",               "—",                  "—",                  "sR(false) → VO"}},
  {State::ao, {"sN×2 → QA", "sJ(false) → QA",  "—",       "sR(false) → VO",     "→ QO",            "—",      "—",               "—",               "sR(false) → VO",     "sR(false) → VO",     "sR(false) → VO"}},
  {State::qo, {"sN×2 → QA", "→ QP",            "—",       "sR(false) → VO",     "—",               "—",      "→ AO",            "→ AO",            "sR(false) → VO",     "sR(false) → VO",     "sR(false) → VO"}},
  {State::ap, {"sN×2 → QA", "—",               "→ AO",    "sJ×2 → QA",          "→ QP",            "—",      "—",               "—",               "sJ×2 → QA",          "sJ×2 → QA",          "sJ(false) → QA"}},
  {State::qp, {"sN×2 → QA", "—",               "→ QO",    "sJ×2 → QA",          "—",               "—",      "sJ(false) → QA",  "sJ(false) → QA",  "sJ×2 → QA",          "sJ×2 → QA",          "sJ(false) → QA"}},
  {State::lo, {"sN×2 → QA", "sJ×2 → QA",       "—",       "—",                  "—",               "—",      "→ VO",            "→ VO",            "—",                  "—",                  "—"}},
};
// clang-format on

// Left out of the table: ignored in every state.
const std::array<Event, 3> kIgnoredEverywhere = {Event::flush, Event::rNew, Event::noEvent};

TEST_F(MrpApplicantSmTest, EveryStoredStateAndEventFollowsTheTransitionTable) {
  ASSERT_EQ(std::size(kApplicantTable), 12u);
  for (const Row& row : kApplicantTable) {
    for (std::size_t column = 0; column < kColumns.size(); ++column) {
      const Cell cell = cellOf(row.cells[column], row.state);
      for (const Registrar registrar : {Registrar::in, Registrar::mt}) {
        SCOPED_TRACE(::testing::Message() << row.state << " on " << kColumns[column] << " with registrar "
                                          << registrar << ": " << row.cells[column]);
        Transition expected{{}, {}, cell.next};
        for (const Send& send : cell.sends) {
          (send.secondPktContext ? expected.secondPacket : expected.firstPacket)
              .push_back(attributeEventOf(send.operation, registrar));
        }
        const Transition actual = transition(row.state, registrar, kColumns[column]);
        EXPECT_EQ(actual.firstPacket, expected.firstPacket);
        EXPECT_EQ(actual.secondPacket, expected.secondPacket);
        EXPECT_EQ(actual.state, expected.state);
      }
    }
    for (const Event event : kIgnoredEverywhere) {
      SCOPED_TRACE(::testing::Message() << row.state << " on " << event);
      const Transition actual = transition(row.state, Registrar::in, event);
      EXPECT_EQ(actual.firstPacket, Events{});
      EXPECT_EQ(actual.secondPacket, Events{});
      EXPECT_EQ(actual.state, row.state);
    }
  }
}

// ---- Edge cases.

TEST_F(MrpApplicantSmTest, NewInVeryAnxiousObserverSendsNewIntoEachPacketAndGoesQuietActive) {
  const Transition t = transition(State::vo, Registrar::mt, Event::newReq);
  EXPECT_EQ(t.firstPacket, Events{kNew});
  EXPECT_EQ(t.secondPacket, Events{kNew});
  EXPECT_EQ(t.state, State::qa);
}

TEST_F(MrpApplicantSmTest, JoinInVeryAnxiousObserverSendsJoinInTwiceOnlyWhileTheRegistrarIsIn) {
  const Transition in = transition(State::vo, Registrar::in, Event::joinReq);
  EXPECT_EQ(in.firstPacket, Events{kJoinIn});
  EXPECT_EQ(in.secondPacket, Events{kJoinIn});
  EXPECT_EQ(in.state, State::qa);
  for (const Registrar registrar : {Registrar::mt, Registrar::lv}) {
    SCOPED_TRACE(::testing::Message() << "registrar " << registrar);
    const Transition notIn = transition(State::vo, registrar, Event::joinReq);
    EXPECT_EQ(notIn.firstPacket, Events{kJoinMt});
    EXPECT_EQ(notIn.secondPacket, Events{kJoinMt});
    EXPECT_EQ(notIn.state, State::qa);
  }
}

TEST_F(MrpApplicantSmTest, ReceivedLeaveAllInQuietActiveSendsJoinTwiceAndStaysQuietActive) {
  const Transition t = transition(State::qa, Registrar::in, Event::rxLvAll_);
  EXPECT_EQ(t.firstPacket, Events{kJoinIn});
  EXPECT_EQ(t.secondPacket, Events{kJoinIn});
  EXPECT_EQ(t.state, State::qa);
}

TEST_F(MrpApplicantSmTest, ReceivedLeaveAllInQuietObserverSendsTheRegisteredStateOnceAndGoesVeryAnxiousObserver) {
  const Transition in = transition(State::qo, Registrar::in, Event::rxLvAll_);
  EXPECT_EQ(in.firstPacket, Events{kIn});
  EXPECT_EQ(in.secondPacket, Events{});
  EXPECT_EQ(in.state, State::vo);
  const Transition mt = transition(State::qo, Registrar::mt, Event::rxLvAll_);
  EXPECT_EQ(mt.firstPacket, Events{kMt});
  EXPECT_EQ(mt.secondPacket, Events{});
  EXPECT_EQ(mt.state, State::vo);
}

TEST_F(MrpApplicantSmTest, ReceivedAttributeEventsMapToTheApplicantEventsFiveAbove) {
  const std::vector<std::pair<std::uint8_t, Event>> mapping = {
      {0, Event::rNew},    {1, Event::rJoinIn}, {2, Event::rIn},     {3, Event::rJoinMt},
      {4, Event::rMt},     {5, Event::rLv},     {6, Event::noEvent}, {255, Event::noEvent},
  };
  for (const auto& [attributeEvent, event] : mapping) {
    EXPECT_EQ(Mrp::MrpApplicantSm::mrpMapRxApplicantEvent(attributeEvent), event)
        << "attribute event " << unsigned{attributeEvent};
  }
}

TEST_F(MrpApplicantSmTest, ReceivedAttributeEventSixMapsToNoEventAndChangesNothing) {
  const Event mapped = Mrp::MrpApplicantSm::mrpMapRxApplicantEvent(6);
  EXPECT_EQ(static_cast<unsigned>(mapped), 13u);
  for (unsigned code = 0; code <= 11; ++code) {
    const State state = static_cast<State>(code);
    SCOPED_TRACE(::testing::Message() << state);
    const Transition t = transition(state, Registrar::in, mapped);
    EXPECT_EQ(t.firstPacket, Events{});
    EXPECT_EQ(t.secondPacket, Events{});
    EXPECT_EQ(t.state, state);
  }
}

TEST_F(MrpApplicantSmTest, JoinInVeryAnxiousPassiveIsIgnored) {
  const Transition t = transition(State::vp, Registrar::in, Event::joinReq);
  EXPECT_EQ(t.firstPacket, Events{});
  EXPECT_EQ(t.secondPacket, Events{});
  EXPECT_EQ(t.state, State::vp);
}

TEST_F(MrpApplicantSmTest, SettingTheStateOfAnAttributeWithoutEntryCreatesNone) {
  const Mrp::MrpAttribute absent{kVlan10.intfId, 1, 20};
  Mrp::MrpParseContext& context = *engine.sm().parseContext();
  context.intfIdIs(absent.intfId);
  context.attributeTypeIs(absent.attributeType);
  context.attributeKeyIs(absent.attributeKey);
  engine.sm().applicantSm()->mrpSetApplicantState(State::qa);
  EXPECT_FALSE(currentEntry(engine.sm()));
  EXPECT_TRUE(engine.sm().addPendingAttrs().empty());
  EXPECT_FALSE(engine.sm().mrpAttrIter({absent.intfId, absent.attributeType}));
}

TEST_F(MrpApplicantSmTest, JoinAndRegisteredStateOfAnAttributeWithoutEntrySendNothing) {
  Mrp::MrpParseContext& context = *engine.sm().parseContext();
  context.intfIdIs(kVlan10.intfId);
  context.attributeTypeIs(kVlan10.attributeType);
  context.attributeKeyIs(kVlan10.attributeKey);
  Mrp::MrpApplicantSm& applicant = *engine.sm().applicantSm();
  applicant.mrpApplicantSendJoin(false);
  applicant.mrpApplicantSendRegisteredState(false);
  EXPECT_EQ(eventsSent(false), Events{});
  EXPECT_FALSE(currentEntry(engine.sm())) << "the lookup created the attribute";
  applicant.mrpApplicantSendNew(true);
  applicant.mrpApplicantSendLeave();
  EXPECT_EQ(eventsSent(false), Events{kLv});
  EXPECT_EQ(eventsSent(true), Events{kNew});
}

TEST_F(MrpApplicantSmTest, AnEventForAnAttributeWithoutEntryCreatesTheEntryFirst) {
  Mrp::MrpParseContext& context = *engine.sm().parseContext();
  context.intfIdIs(kVlan10.intfId);
  context.attributeTypeIs(kVlan10.attributeType);
  context.attributeKeyIs(kVlan10.attributeKey);
  applicantEventHandle(engine.sm(), Event::rJoinIn);
  const Quarn::Ptr<Mrp::MrpAttrDatabase> entry = currentEntry(engine.sm());
  ASSERT_TRUE(entry);
  EXPECT_EQ(entry->applicantState(), State::ao) << "VO on rJoinIn! goes AO";
  EXPECT_EQ(entry->registrarState(), Registrar::mt);
}

TEST_F(MrpApplicantSmTest, AStoredStateOutOfRangeIsTracedAndLeftAsItIs) {
  Quarn::CaptureTraceSink traces;
  ASSERT_TRUE(Quarn::traceLevelsIs("MrpSm/8"));
  const Transition t = transition(static_cast<State>(12), Registrar::in, Event::newReq);
  Quarn::traceLevelsClear();
  EXPECT_TRUE(traces.contains("Invalid applicant State = 12"));
  EXPECT_EQ(t.firstPacket, Events{});
  EXPECT_EQ(t.secondPacket, Events{});
  EXPECT_EQ(static_cast<unsigned>(t.state), 12u);
}

TEST_F(MrpApplicantSmTest, ATransitionTracesTheAttributeAndTheStatesAtLevelSeven) {
  Quarn::CaptureTraceSink traces;
  ASSERT_TRUE(Quarn::traceLevelsIs("MrpSm/7"));
  transition(State::vo, Registrar::mt, Event::newReq);
  Quarn::traceLevelsClear();
  std::vector<std::string> lines;
  for (const auto& line : traces.lines()) lines.push_back(line.text);
  EXPECT_EQ(lines, (std::vector<std::string>{"void Mrp::MrpApplicantSm::handleApplicantEvent()",
                                             " Key = 0xa Type= 1 intf = p1",
                                             " Enter: state = VO event = New!",
                                             " Exit: handleApplicantEvent, state = QA"}));
}

TEST_F(MrpApplicantSmTest, HandlingAnEventLeavesItInTheMachine) {
  transition(State::vo, Registrar::in, Event::rJoinIn);
  EXPECT_EQ(engine.sm().applicantSm()->applicantEvent(), Event::rJoinIn);
}

}  // namespace
}  // namespace MrpTest
