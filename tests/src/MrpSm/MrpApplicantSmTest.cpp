#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "MrpSm/MrpApplicantTransitions.h"
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

// ---- The transition table: the engine carries out every cell of the
// ---- code's table, for a registrar IN and one that is not.

// The attribute event a message puts on the wire: Join and the registered
// state follow the registrar (IN, or anything else).
unsigned attributeEventOf(Mrp::MrpApplicantTransition::Send send, Registrar registrar) {
  using Send = Mrp::MrpApplicantTransition::Send;
  using Wire = Mrp::MrpThreePackedEvent;
  const bool in = registrar == Registrar::in;
  switch (send) {
    case Send::newFirst:
    case Send::newSecond: return static_cast<unsigned>(Wire::newEvent);
    case Send::joinFirst:
    case Send::joinSecond: return static_cast<unsigned>(in ? Wire::joinIn : Wire::joinMt);
    case Send::registeredStateFirst: return static_cast<unsigned>(in ? Wire::in : Wire::mt);
    case Send::leave: break;
  }
  return static_cast<unsigned>(Wire::lv);
}

bool intoSecondPacket(Mrp::MrpApplicantTransition::Send send) {
  using Send = Mrp::MrpApplicantTransition::Send;
  return send == Send::newSecond || send == Send::joinSecond;
}

// Left out of the table: ignored in every state.
const std::array<Event, 3> kIgnoredEverywhere = {Event::flush, Event::rNew, Event::noEvent};

TEST_F(MrpApplicantSmTest, EveryStoredStateAndEventFollowsTheTransitionTable) {
  namespace Table = Mrp::MrpApplicantTable;
  ASSERT_EQ(std::size(Table::kRows), 12u);
  for (const Table::Row& row : Table::kRows) {
    for (std::size_t column = 0; column < Table::kColumns.size(); ++column) {
      const Mrp::MrpApplicantTransition& cell = row.cells[column];
      for (const Registrar registrar : {Registrar::in, Registrar::mt}) {
        SCOPED_TRACE(::testing::Message() << row.state << " on " << Table::kColumns[column] << " with registrar "
                                          << registrar << ": " << cell);
        Transition expected{{}, {}, cell.next};
        for (const Mrp::MrpApplicantTransition::Send send : cell.messages()) {
          (intoSecondPacket(send) ? expected.secondPacket : expected.firstPacket)
              .push_back(attributeEventOf(send, registrar));
        }
        const Transition actual = transition(row.state, registrar, Table::kColumns[column]);
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
  EXPECT_TRUE(engine.sm().attributeStore().addPendingAttrs().empty());
  EXPECT_FALSE(engine.sm().attributeStore().mrpAttrIter({absent.intfId, absent.attributeType}));
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
