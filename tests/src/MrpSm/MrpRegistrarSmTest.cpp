#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "MrpModel/MrpValueBytes.h"
#include "MrpSm/MrpRegistrarTransitions.h"
#include "quarn/Trace.h"
#include "support/CurrentAttribute.h"
#include "support/EngineScenario.h"
#include "support/FrameBuilder.h"

namespace MrpTest {
namespace {

using Event = Mrp::MrpRegistrarEvent;
using State = Mrp::MrpRegistrarState;
using Applicant = Mrp::MrpApplicantState;
using Wire = Mrp::MrpThreePackedEvent;

const Velo::IntfId kPort("p1");
const Mrp::MrpAttribute kVlan10{kPort, 1, 10};
// The key of the port and type's shared leave machine.
const Mrp::MrpAttribute kVlanLeaves{kPort, 1, 0};

constexpr Quarn::Seconds kPortLeaveTime = 0.9;

template <class T>
std::string textOf(const T& value) {
  std::ostringstream text;
  text << value;
  return text.str();
}

// The received attribute event that the registrar sees as `event`; the
// parameters of a join indication carry it.
std::uint8_t receivedAttributeEvent(Event event) {
  switch (event) {
    case Event::rNew: return static_cast<std::uint8_t>(Wire::newEvent);
    case Event::rJoinIn: return static_cast<std::uint8_t>(Wire::joinIn);
    case Event::rJoinMt: return static_cast<std::uint8_t>(Wire::joinMt);
    case Event::rLv: return static_cast<std::uint8_t>(Wire::lv);
    default: return static_cast<std::uint8_t>(Wire::in);
  }
}

void expectNear(std::optional<Quarn::Seconds> actual, std::optional<Quarn::Seconds> expected) {
  ASSERT_EQ(actual.has_value(), expected.has_value());
  if (expected) {
    EXPECT_NEAR(*actual, *expected, 1e-9);
  }
}

// ---- The transition table.

enum class Indication { none, join, leave };
enum class Log { none, joinReceived, lvReceived, lvNotified };
// Which leave machine the event put the key into, restarting its timer.
enum class LeaveTiming { none, general, explicitLeave };

// Which leave machines hold the key after the event: the port and type's
// shared one (leaveSm) and the attribute's own one (explicitLeaveSm).
struct Pending {
  bool general = false;
  bool explicitLeave = false;
  friend bool operator==(const Pending&, const Pending&) = default;
};
std::ostream& operator<<(std::ostream& os, const Pending& pending) {
  return os << "{general " << pending.general << ", explicit " << pending.explicitLeave << "}";
}
constexpr Pending kNone{false, false};
constexpr Pending kGeneral{true, false};

// The log line of one kind, for the attribute VLAN 10 on p1.
std::vector<std::string> logLinesOf(Log log, State state, Event event) {
  const std::string fields =
      "p1, attrType: 1, key: 0xa, state: " + textOf(state) + ", event: " + textOf(event);
  switch (log) {
    case Log::joinReceived: return {"MRP_JOIN: MRP Join received on " + fields};
    case Log::lvReceived: return {"MRP_LV: MRP Lv received on " + fields};
    case Log::lvNotified: return {"MRP_LV: MRP Lv notified on " + fields};
    case Log::none: break;
  }
  return {};
}

// Every registrar event; the table names those a state reacts to, the
// rest must leave everything alone.
const std::vector<Event> kAllEvents = {Event::rNew,      Event::rJoinIn, Event::rJoinMt,    Event::rLv,
                                       Event::regLvAll_,  Event::txLvAll, Event::redeclare,  Event::flush,
                                       Event::leaveTimer, Event::noEvent};

// What the engine must do for `event` in `state`, read off the code's table
// row; the received value always equals the stored one, so a checked join is
// not indicated.
struct Expected {
  std::vector<Log> logs;
  Indication indication = Indication::none;
  unsigned joinsCounted = 0;
  unsigned leavesCounted = 0;
  LeaveTiming leaveTiming = LeaveTiming::none;
  Pending pending;
  State next = State::mt;
};

Expected expectedOf(State state, Event event) {
  using Action = Mrp::MrpRegistrarTransition::Action;
  const Mrp::MrpRegistrarTransition& transition = Mrp::mrpRegistrarTransition(state, event);
  Expected expected;
  // A received Lv is logged in every state, before the transition.
  if (event == Event::rLv) expected.logs.push_back(Log::lvReceived);
  // An attribute in LV waits in the port and type's leave machine.
  expected.pending = state == State::lv ? kGeneral : kNone;
  for (const Action action : transition.actions()) {
    switch (action) {
      case Action::logJoinReceived: expected.logs.push_back(Log::joinReceived); break;
      case Action::logLeaveNotified: expected.logs.push_back(Log::lvNotified); break;
      case Action::joinIndication: expected.indication = Indication::join; break;
      case Action::leaveIndication: expected.indication = Indication::leave; break;
      case Action::countJoin: ++expected.joinsCounted; break;
      case Action::countLeave: ++expected.leavesCounted; break;
      case Action::addToLeavePending:
        expected.leaveTiming = event == Event::rLv ? LeaveTiming::explicitLeave : LeaveTiming::general;
        (event == Event::rLv ? expected.pending.explicitLeave : expected.pending.general) = true;
        break;
      case Action::deleteFromLeavePending: expected.pending = kNone; break;
      default: break;
    }
  }
  expected.next = transition.next;
  return expected;
}

std::vector<std::string> logLinesOf(const std::vector<Log>& logs, State state, Event event) {
  std::vector<std::string> lines;
  for (const Log log : logs) {
    for (std::string& line : logLinesOf(log, state, event)) lines.push_back(std::move(line));
  }
  return lines;
}

// What one registrar transition did.
struct Outcome {
  std::vector<std::string> logLines;
  std::vector<Mrp::MrpParameters> joins;
  std::vector<Mrp::MrpParameters> leaves;
  std::uint64_t joinsCounted = 0;
  std::uint64_t leavesCounted = 0;
  Pending pending;
  // When the leave machines that exist fire, from the event on.
  std::optional<Quarn::Seconds> generalTimer;
  std::optional<Quarn::Seconds> ownTimer;
  State next = State::mt;
};

class MrpRegistrarSmTest : public EngineScenario {
 protected:
  // A fresh MVRP engine whose port p1 has its own leave time.
  ScenarioEngine& mvrpEngineNew() {
    ScenarioEngine& engine = engineNew(std::string("R").append(std::to_string(engines_++)), Mrp::MrpApplication::mvrp);
    engine.config().intfLeaveTimeIs(kPort, kPortLeaveTime);
    engine.lib().mvrpVlanVectorTx() = Mrp::MvrpVlanAttribute(10);
    engine.lib().mvrpVlanVectorRx() = Mrp::MvrpVlanAttribute(10);
    return engine;
  }

  // Log lines since `from`, as "KEY: text".
  std::vector<std::string> logLinesFrom(std::size_t from) const {
    std::vector<std::string> lines;
    for (std::size_t i = from; i < logs.lines().size(); ++i) {
      lines.push_back(logs.lines()[i].key + ": " + logs.lines()[i].text);
    }
    return lines;
  }

  static Pending pendingOf(const Mrp::MrpSm& sm, const Mrp::MrpAttribute& attribute) {
    const Mrp::MrpRegistrarSm& registrar = *sm.registrarSm();
    const Quarn::Ptr<Mrp::MrpLeaveSm> general =
        registrar.leaveSm({attribute.intfId, attribute.attributeType, 0});
    const Mrp::MrpExplicitLeaveSm* own = registrar.explicitLeaveSm(attribute);
    return {general && general->leavePending(attribute.attributeKey),
            own && own->leavePending(attribute.attributeKey)};
  }

  // `event` for VLAN 10 stored in `state` (the applicant QA, so that the
  // entry is kept) on a fresh engine. In LV the key waits in the port's
  // shared leave machine, armed kArmedBefore ahead of the event.
  Outcome transition(State state, Event event) {
    ScenarioEngine& engine = mvrpEngineNew();
    Mrp::MrpSm& sm = engine.sm();
    currentAttributeIs(sm, kVlan10, Applicant::qa, state);
    if (state == State::lv) sm.registrarSm()->leaveSmIs(kVlanLeaves)->leavePendingIs(kVlan10.attributeKey, true);
    advance(kArmedBefore);
    sm.parseContext()->attributeEventIs(receivedAttributeEvent(event));
    const std::size_t logsBefore = logs.lines().size();
    registrarEventHandle(sm, event);

    Outcome outcome;
    outcome.logLines = logLinesFrom(logsBefore);
    outcome.joins = takeJoins(engine);
    outcome.leaves = takeLeaves(engine);
    outcome.joinsCounted = engine.counters().numOfJoinIndications();
    outcome.leavesCounted = engine.counters().numOfLeaveIndications();
    outcome.pending = pendingOf(sm, kVlan10);
    const Mrp::MrpRegistrarSm& registrar = *sm.registrarSm();
    if (const auto general = registrar.leaveSm(kVlanLeaves)) outcome.generalTimer = general->leaveTimerTime() - now();
    if (const auto own = registrar.explicitLeaveSm(kVlan10)) outcome.ownTimer = own->leaveTimerTime() - now();
    outcome.next = currentEntry(sm)->registrarState();
    return outcome;
  }

  static constexpr Quarn::Seconds kArmedBefore = 0.2;
  unsigned engines_ = 0;
};

TEST_F(MrpRegistrarSmTest, EveryStateAndEventFollowsTheTransitionTable) {
  for (const State state : {State::in, State::lv, State::mt}) {
    for (const Event event : kAllEvents) {
      const Expected row = expectedOf(state, event);
      SCOPED_TRACE(::testing::Message() << state << " on " << event << ": "
                                        << Mrp::mrpRegistrarTransition(state, event));
      const Outcome outcome = transition(state, event);

      EXPECT_EQ(outcome.logLines, logLinesOf(row.logs, state, event));
      const Mrp::MrpParameters join{kPort, 1, receivedAttributeEvent(event), 10};
      const Mrp::MrpParameters leave{kPort, 1, static_cast<std::uint8_t>(Wire::lv), 10};
      EXPECT_EQ(outcome.joins,
                row.indication == Indication::join ? std::vector<Mrp::MrpParameters>{join}
                                                   : std::vector<Mrp::MrpParameters>{});
      EXPECT_EQ(outcome.leaves,
                row.indication == Indication::leave ? std::vector<Mrp::MrpParameters>{leave}
                                                    : std::vector<Mrp::MrpParameters>{});
      EXPECT_EQ(outcome.joinsCounted, row.joinsCounted);
      EXPECT_EQ(outcome.leavesCounted, row.leavesCounted);
      EXPECT_EQ(outcome.pending, row.pending);
      // The machine the event put the key into runs for the port's leave
      // time from now; the shared one of an LV key runs on untouched.
      const Quarn::Seconds untouched = Mrp::MrpConfig::kDefaultLeaveTime - kArmedBefore;
      expectNear(outcome.generalTimer, row.leaveTiming == LeaveTiming::general ? kPortLeaveTime
                                       : state == State::lv                   ? std::optional(untouched)
                                                                              : std::nullopt);
      expectNear(outcome.ownTimer,
                 row.leaveTiming == LeaveTiming::explicitLeave ? std::optional(kPortLeaveTime) : std::nullopt);
      EXPECT_EQ(outcome.next, row.next);
    }
  }
}

// ---- The value check of a received Join in IN and LV (MSRP).

Mrp::MsrpTalkerAdvertiseAttribute talker(std::uint32_t accumulatedLatency) {
  return Mrp::MsrpTalkerAdvertiseAttribute(0x0011223344550001ULL,
                                           Mrp::DataFrameParameters(Velo::EthAddr(0x91, 0xe0, 0xf0, 0, 0xfe, 1), 2),
                                           Mrp::Tspec(1500, 1), Mrp::PriorityAndRank(3, 0), accumulatedLatency);
}

enum class Value { talker, domain };
enum class Received { sameValue, changedValue };
enum class StoredAfter { kept, received };

struct ValueCheckRow {
  Value value;
  Received received;
  State state;
  bool indicated;
  unsigned joinsCounted;
  StoredAfter storedAfter;
};

// clang-format off
const ValueCheckRow kValueCheckTable[] = {
  // Attribute      Received value            State      Indicated  Counted  Stored value after
  {Value::talker, Received::sameValue,    State::in, false,     1,       StoredAfter::kept},
  {Value::talker, Received::changedValue, State::in, true,      1,       StoredAfter::received},
  {Value::domain, Received::sameValue,    State::in, true,      1,       StoredAfter::kept},
  {Value::domain, Received::changedValue, State::in, true,      1,       StoredAfter::kept},
  {Value::talker, Received::sameValue,    State::lv, false,     0,       StoredAfter::kept},
  {Value::talker, Received::changedValue, State::lv, true,      0,       StoredAfter::received},
  {Value::domain, Received::sameValue,    State::lv, true,      0,       StoredAfter::kept},
  {Value::domain, Received::changedValue, State::lv, true,      0,       StoredAfter::kept},
};
// clang-format on

TEST_F(MrpRegistrarSmTest, ReceivedJoinsInInAndLvAreIndicatedByTheValueCheck) {
  for (const ValueCheckRow& row : kValueCheckTable) {
    for (const Event event : {Event::rJoinIn, Event::rJoinMt}) {
      SCOPED_TRACE(::testing::Message() << (row.value == Value::talker ? "Talker Advertise" : "Domain") << ", "
                                        << (row.received == Received::sameValue ? "same" : "changed") << " value, "
                                        << row.state << " on " << event);
      ScenarioEngine& engine = engineNew(std::string("V").append(std::to_string(engines_++)), Mrp::MrpApplication::msrp);
      Mrp::MrpLib& lib = engine.lib();
      const bool same = row.received == Received::sameValue;
      Mrp::MrpAttribute attribute{kPort, 1, talker(0).streamId()};
      std::vector<std::uint8_t> stored;
      std::vector<std::uint8_t> received;
      if (row.value == Value::talker) {
        lib.msrpTalkerAdvertiseTx() = talker(7);
        lib.msrpTalkerAdvertiseRx() = talker(same ? 7 : 8);
        const auto storedBytes = Mrp::valueBytes(lib.msrpTalkerAdvertiseTx());
        const auto receivedBytes = Mrp::valueBytes(lib.msrpTalkerAdvertiseRx());
        stored.assign(storedBytes.begin(), storedBytes.end());
        received.assign(receivedBytes.begin(), receivedBytes.end());
      } else {
        attribute = {kPort, 4, 6};
        lib.msrpDomainVectorTx() = Mrp::MsrpDomainAttribute(6, 3, 2);
        lib.msrpDomainVectorRx() = Mrp::MsrpDomainAttribute(6, same ? 3 : 2, same ? 2 : 3);
        const auto storedBytes = Mrp::valueBytes(lib.msrpDomainVectorTx());
        const auto receivedBytes = Mrp::valueBytes(lib.msrpDomainVectorRx());
        stored.assign(storedBytes.begin(), storedBytes.end());
        received.assign(receivedBytes.begin(), receivedBytes.end());
      }
      const Quarn::Ptr<Mrp::MrpAttrDatabase> entry =
          currentAttributeIs(engine.sm(), attribute, Applicant::qa, row.state);
      engine.sm().parseContext()->attributeEventIs(receivedAttributeEvent(event));
      registrarEventHandle(engine.sm(), event);

      EXPECT_EQ(takeJoins(engine).size(), row.indicated ? 1u : 0u);
      EXPECT_EQ(engine.counters().numOfJoinIndications(), row.joinsCounted);
      EXPECT_EQ(entry->registrarState(), State::in);
      const std::vector<std::uint8_t> after(entry->attributeValues().begin(),
                                            entry->attributeValues().begin() + stored.size());
      EXPECT_EQ(after, row.storedAfter == StoredAfter::kept ? stored : received);
    }
  }
}

// ---- Edge cases.

class RegistrarEdgeTest : public MrpRegistrarSmTest {
 protected:
  RegistrarEdgeTest() : engine(mvrpEngineNew()), sm(engine.sm()) {}

  // VLAN 10 stored with the two states, made current.
  Quarn::Ptr<Mrp::MrpAttrDatabase> vlan10Is(Applicant applicant, State state) {
    return currentAttributeIs(sm, kVlan10, applicant, state);
  }
  // `event` for the current attribute, received as `attributeEvent`.
  void received(Event event) {
    sm.parseContext()->attributeEventIs(receivedAttributeEvent(event));
    registrarEventHandle(sm, event);
  }

  ScenarioEngine& engine;
  Mrp::MrpSm& sm;
};

TEST_F(RegistrarEdgeTest, ReceivedJoinInInMtMakesOneJoinIndicationCountsItAndRegisters) {
  const auto entry = vlan10Is(Applicant::vo, State::mt);
  received(Event::rJoinIn);
  EXPECT_EQ(takeJoins(engine), (std::vector<Mrp::MrpParameters>{{kPort, 1, 1, 10}}));
  EXPECT_EQ(engine.counters().numOfJoinIndications(), 1u);
  EXPECT_EQ(entry->registrarState(), State::in);
}

TEST_F(RegistrarEdgeTest, RepeatedIdenticalTalkerAdvertiseInInIsNotIndicatedButCountedEachTime) {
  ScenarioEngine& msrp = engineNew("msrp", Mrp::MrpApplication::msrp);
  msrp.lib().msrpTalkerAdvertiseTx() = talker(7);
  msrp.lib().msrpTalkerAdvertiseRx() = talker(7);
  currentAttributeIs(msrp.sm(), {kPort, 1, talker(7).streamId()}, Applicant::qa, State::in);
  msrp.sm().parseContext()->attributeEventIs(receivedAttributeEvent(Event::rJoinIn));
  for (unsigned repeat = 1; repeat <= 3; ++repeat) {
    registrarEventHandle(msrp.sm(), Event::rJoinIn);
    EXPECT_EQ(msrp.counters().numOfJoinIndications(), repeat);
  }
  EXPECT_TRUE(takeJoins(msrp).empty());
}

// A received Listener join that makes no indication goes to the service
// object's hook with the received declaration; nothing else changes.
struct ListenerHookRow {
  State state;
  Event event;
  Mrp::MsrpListenerEvent declaration;
  bool hooked;
  unsigned joinIndications;
  unsigned joinsCounted;
};
// clang-format off
const ListenerHookRow kListenerHookTable[] = {
  // State     Event          Declaration received                  Hooked Indications Counted
  {State::in, Event::rJoinIn, Mrp::MsrpListenerEvent::ready,        true,  0, 1},
  {State::in, Event::rJoinMt, Mrp::MsrpListenerEvent::askingFailed, true,  0, 1},
  {State::lv, Event::rJoinIn, Mrp::MsrpListenerEvent::readyFailed,  true,  0, 0},
  {State::lv, Event::rJoinMt, Mrp::MsrpListenerEvent::ready,        true,  0, 0},
  // A join that is indicated is not also hooked.
  {State::mt, Event::rJoinIn, Mrp::MsrpListenerEvent::ready,        false, 1, 1},
  {State::in, Event::rNew,    Mrp::MsrpListenerEvent::ready,        false, 1, 1},
};
// clang-format on

TEST_F(RegistrarEdgeTest, AListenerJoinWithAnUnchangedStreamIdReachesTheHookWithItsDeclaration) {
  constexpr std::uint64_t kStream = 0x001b210000010001ULL;
  for (const ListenerHookRow& row : kListenerHookTable) {
    SCOPED_TRACE(::testing::Message() << row.state << " on " << row.event << ", declaration "
                                      << static_cast<int>(row.declaration));
    ScenarioEngine& msrp = engineNew(std::string("L").append(std::to_string(engines_++)), Mrp::MrpApplication::msrp);
    msrp.lib().msrpListenerVectorTx() = Mrp::MsrpListenerAttribute(kStream, Mrp::MsrpListenerEvent::askingFailed);
    msrp.lib().msrpListenerVectorRx() = Mrp::MsrpListenerAttribute(kStream, row.declaration);
    const Mrp::MrpAttribute listener{kPort, 3, kStream};
    const auto entry = currentAttributeIs(msrp.sm(), listener, Applicant::qa, row.state);
    msrp.sm().parseContext()->attributeEventIs(receivedAttributeEvent(row.event));
    registrarEventHandle(msrp.sm(), row.event);

    std::vector<RecordingMrpLib::ListenerJoin> expected;
    if (row.hooked) {
      expected.push_back({{kPort, 3, receivedAttributeEvent(row.event), kStream},
                          Mrp::MsrpListenerAttribute(kStream, row.declaration)});
    }
    EXPECT_EQ(msrp.lib().listenerJoins, expected);
    EXPECT_EQ(takeJoins(msrp).size(), row.joinIndications);
    EXPECT_EQ(msrp.counters().numOfJoinIndications(), row.joinsCounted);
    EXPECT_EQ(entry->registrarState(), State::in);
  }
}

TEST_F(RegistrarEdgeTest, OnlyAnMsrpListenerReachesTheHook) {
  ScenarioEngine& msrp = engineNew("talker", Mrp::MrpApplication::msrp);
  msrp.lib().msrpTalkerAdvertiseTx() = talker(7);
  msrp.lib().msrpTalkerAdvertiseRx() = talker(7);
  currentAttributeIs(msrp.sm(), {kPort, 1, talker(7).streamId()}, Applicant::qa, State::in);
  msrp.sm().parseContext()->attributeEventIs(receivedAttributeEvent(Event::rJoinIn));
  registrarEventHandle(msrp.sm(), Event::rJoinIn);
  EXPECT_TRUE(msrp.lib().listenerJoins.empty());

  vlan10Is(Applicant::qa, State::in);
  engine.lib().mvrpVlanVectorRx() = Mrp::MvrpVlanAttribute(10);
  received(Event::rJoinIn);
  EXPECT_TRUE(engine.lib().listenerJoins.empty());
  EXPECT_EQ(engine.counters().numOfJoinIndications(), 1u);
}

TEST_F(RegistrarEdgeTest, ReceivedLvInInArmsTheAttributesOwnLeaveMachineAndAJoinMtCancelsIt) {
  vlan10Is(Applicant::qa, State::in);
  advance(0.3);
  received(Event::rLv);
  EXPECT_EQ(currentEntry(sm)->registrarState(), State::lv);
  const Mrp::MrpExplicitLeaveSm* own = sm.registrarSm()->explicitLeaveSm(kVlan10);
  ASSERT_TRUE(own);
  EXPECT_TRUE(own->leavePending(10));
  EXPECT_DOUBLE_EQ(own->leaveTimerTime(), now() + kPortLeaveTime);
  EXPECT_FALSE(sm.registrarSm()->leaveSm(kVlanLeaves)) << "a received Lv does not use the shared machine";

  received(Event::rJoinMt);
  EXPECT_EQ(currentEntry(sm)->registrarState(), State::in);
  EXPECT_FALSE(own->leavePending(10));
  advance(kPortLeaveTime);
  EXPECT_TRUE(takeLeaves(engine).empty());
  EXPECT_EQ(currentEntry(sm)->registrarState(), State::in);
}

TEST_F(RegistrarEdgeTest, LeaveTimerInLvIndicatesTheLeaveOnceAndCountsIt) {
  const auto entry = vlan10Is(Applicant::qa, State::lv);
  received(Event::leaveTimer);
  EXPECT_EQ(takeLeaves(engine), (std::vector<Mrp::MrpParameters>{{kPort, 1, 5, 10}}));
  EXPECT_EQ(engine.counters().numOfLeaveIndications(), 1u);
  EXPECT_EQ(entry->registrarState(), State::mt);
  EXPECT_TRUE(currentEntry(sm)) << "an applicant that still declares keeps the entry";
}

TEST_F(RegistrarEdgeTest, LeaveTimerInLvDeletesTheEntryOfAnObserverThatDeclaresNothing) {
  vlan10Is(Applicant::vo, State::lv);
  received(Event::leaveTimer);
  EXPECT_EQ(takeLeaves(engine).size(), 1u);
  EXPECT_FALSE(currentEntry(sm));
}

TEST_F(RegistrarEdgeTest, AnEntryAtRestIsDeletedWithItsPendingLeaveWhateverTheEvent) {
  // Flush! in LV leaves the key pending; the deletion of the resting entry
  // takes it out.
  vlan10Is(Applicant::vo, State::lv);
  sm.registrarSm()->leaveSmIs(kVlanLeaves)->leavePendingIs(10, true);
  received(Event::flush);
  EXPECT_FALSE(currentEntry(sm));
  EXPECT_EQ(pendingOf(sm, kVlan10), kNone);
  // An ignored event on a resting entry deletes it too.
  vlan10Is(Applicant::vo, State::mt);
  received(Event::leaveTimer);
  EXPECT_FALSE(currentEntry(sm));
}

TEST_F(RegistrarEdgeTest, ADiscardedJoinLeavesTheRegistrationMtEvenWhenReceivedAsNew) {
  engine.lib().discardJoins = true;
  Quarn::CaptureTraceSink traces;
  ASSERT_TRUE(Quarn::traceLevelsIs("MrpSm/4"));
  const std::size_t logsBefore = logs.lines().size();
  const auto entry = vlan10Is(Applicant::qa, State::in);
  received(Event::rNew);
  Quarn::traceLevelsClear();
  const std::string discarded = "Join was discarded by MSRP, interface: p1, attrType: 1, attrEvent: 0";
  EXPECT_EQ(takeJoins(engine).size(), 1u);
  EXPECT_EQ(engine.counters().numOfJoinIndications(), 1u);
  EXPECT_EQ(entry->registrarState(), State::mt);
  EXPECT_TRUE(traces.contains(discarded));
  EXPECT_EQ(logLinesFrom(logsBefore),
            (std::vector<std::string>{
                "MRP_JOIN: MRP Join received on p1, attrType: 1, key: 0xa, state: IN, event: rNew!",
                "MRP_ERROR: " + discarded}));
}

TEST_F(RegistrarEdgeTest, ADiscardedJoinOfAnObserverDeletesTheEntry) {
  engine.lib().discardJoins = true;
  vlan10Is(Applicant::vo, State::mt);
  received(Event::rJoinIn);
  EXPECT_EQ(takeJoins(engine).size(), 1u);
  EXPECT_FALSE(currentEntry(sm));
}

struct TxLeaveAllTimeRow {
  Quarn::Seconds txLeaveAllExpiryTime;
  Event event;
  Quarn::Seconds leaveTime;
};

TEST_F(RegistrarEdgeTest, TransmittedLeaveAllTimesTheLeaveWithTxLeaveAllExpiryTimeUnlessItIsPointSix) {
  // clang-format off
  const TxLeaveAllTimeRow rows[] = {
    // txLeaveAllExpiryTime  Event              Leave time
    {0.6,                  Event::txLvAll,    kPortLeaveTime},
    {1.7,                  Event::txLvAll,    1.7},
    {0.3,                  Event::txLvAll,    0.3},
    {1.7,                  Event::regLvAll_,   kPortLeaveTime},
    {1.7,                  Event::redeclare,  kPortLeaveTime},
  };
  // clang-format on
  for (const TxLeaveAllTimeRow& row : rows) {
    SCOPED_TRACE(::testing::Message() << "txLeaveAllExpiryTime " << row.txLeaveAllExpiryTime << ", " << row.event);
    engine.config().txLeaveAllExpiryTimeIs(row.txLeaveAllExpiryTime);
    sm.registrarSm()->leaveSmDelAll();
    vlan10Is(Applicant::qa, State::in);
    received(row.event);
    const Quarn::Ptr<Mrp::MrpLeaveSm> machine = sm.registrarSm()->leaveSm(kVlanLeaves);
    ASSERT_TRUE(machine);
    EXPECT_DOUBLE_EQ(machine->leaveTimerTime(), now() + row.leaveTime);
  }
}

TEST_F(RegistrarEdgeTest, ReceivedAttributeEventsMapToRegistrarEventsWithInAndMtToNone) {
  const std::vector<std::pair<std::uint8_t, Event>> mapping = {
      {0, Event::rNew},    {1, Event::rJoinIn}, {2, Event::noEvent}, {3, Event::rJoinMt},
      {4, Event::noEvent}, {5, Event::rLv},     {6, Event::noEvent}, {255, Event::noEvent},
  };
  for (const auto& [attributeEvent, event] : mapping) {
    EXPECT_EQ(Mrp::MrpRegistrarSm::mrpMapRxRegistrarEvent(attributeEvent), event)
        << "attribute event " << unsigned{attributeEvent};
  }
}

TEST_F(RegistrarEdgeTest, ReceivedInOrMtChangesNothingInTheRegistrar) {
  portUp(engine, "p1");
  const auto vlanFrame = [](std::uint16_t vlan, std::uint8_t event) {
    const Quarn::Ptr<Mrp::MrpLib> lib = Mrp::mrpLibFactory();
    FrameBuilder builder(*lib, Mrp::MrpApplication::mvrp);
    return builder.message(1).vlan(Mrp::MvrpVlanAttribute(vlan), event).frame(kTestMac);
  };
  vlan10Is(Applicant::qa, State::in);
  for (const std::uint8_t event : {kIn, kMt}) {
    SCOPED_TRACE(::testing::Message() << "attribute event " << unsigned{event});
    inject("p1", vlanFrame(10, event));
    inject("p1", vlanFrame(11, event));
    EXPECT_EQ(engine.attribute("p1", 1, 10)->registrarState(), State::in);
    EXPECT_EQ(pendingOf(sm, kVlan10), kNone);
    EXPECT_FALSE(engine.attribute("p1", 1, 11)) << "VLAN 11 was registered";
    EXPECT_TRUE(takeJoins(engine).empty());
    EXPECT_TRUE(takeLeaves(engine).empty());
  }
  EXPECT_EQ(engine.counters().numOfJoinIndications(), 0u);
}

TEST_F(RegistrarEdgeTest, AnEventForAnAttributeWithoutEntryIsTracedAndChangesNothing) {
  Quarn::CaptureTraceSink traces;
  ASSERT_TRUE(Quarn::traceLevelsIs("MrpSm/8"));
  Mrp::MrpParseContext& context = *sm.parseContext();
  context.intfIdIs(kPort);
  context.attributeTypeIs(1);
  context.attributeKeyIs(20);
  EXPECT_FALSE(sm.registrarSm()->handleRegistrarEvent());
  received(Event::rNew);
  Quarn::traceLevelsClear();
  EXPECT_TRUE(traces.contains(" attribute not found, returning@!!! "));
  EXPECT_FALSE(currentEntry(sm)) << "the registrar created the entry";
  EXPECT_TRUE(takeJoins(engine).empty());
}

TEST_F(RegistrarEdgeTest, AStoredStateOutOfRangeIsTracedAndLeftAlone) {
  Quarn::CaptureTraceSink traces;
  ASSERT_TRUE(Quarn::traceLevelsIs("MrpSm/8"));
  const auto entry = vlan10Is(Applicant::qa, static_cast<State>(3));
  received(Event::rNew);
  Quarn::traceLevelsClear();
  EXPECT_TRUE(traces.contains("Invalid registrar State = 3"));
  EXPECT_TRUE(takeJoins(engine).empty());
  EXPECT_EQ(static_cast<unsigned>(entry->registrarState()), 3u);
}

TEST_F(RegistrarEdgeTest, AReceivedLvOfAStoredStateOutOfRangeLogsTheStateAsItsNumber) {
  vlan10Is(Applicant::qa, static_cast<State>(3));
  const std::size_t logsBefore = logs.lines().size();
  received(Event::rLv);
  EXPECT_EQ(logLinesFrom(logsBefore),
            (std::vector<std::string>{"MRP_LV: MRP Lv received on p1, attrType: 1, key: 0xa, state: 3, event: rLv!"}));
}

// The texts traced at `level` while `run` runs.
template <class Run>
std::vector<std::string> tracedAt(int level, Run run) {
  Quarn::CaptureTraceSink traces;
  EXPECT_TRUE(Quarn::traceLevelsIs("MrpSm/" + std::to_string(level)));
  run();
  Quarn::traceLevelsClear();
  std::vector<std::string> lines;
  for (const auto& line : traces.lines()) lines.push_back(line.text);
  return lines;
}

TEST_F(RegistrarEdgeTest, ATransitionTracesTheAttributeTheStatesAndTheIndicationsAtLevelSeven) {
  vlan10Is(Applicant::qa, State::mt);
  EXPECT_EQ(tracedAt(7, [&] { received(Event::rNew); }),
            (std::vector<std::string>{"void Mrp::MrpRegistrarSm::handleRegistrarEvent()",
                                      " Key = 0xa Type= 1 intf = p1", " Enter: state = MT event = rNew!",
                                      " Exit: state = IN"}));
  vlan10Is(Applicant::qa, State::lv);
  const std::vector<std::string> join = tracedAt(7, [&] { received(Event::rJoinIn); });
  EXPECT_NE(std::find(join.begin(), join.end(), "JoinIndication called"), join.end());
  vlan10Is(Applicant::qa, State::lv);
  const std::vector<std::string> leave = tracedAt(7, [&] { received(Event::leaveTimer); });
  EXPECT_NE(std::find(leave.begin(), leave.end(), "LeaveIndication called"), leave.end());
}

TEST_F(RegistrarEdgeTest, AChangeOfTimersEnabledIsTraced) {
  const std::vector<std::string> lines = tracedAt(8, [&] { engine.config().timersEnabledIs(false); });
  EXPECT_NE(std::find(lines.begin(), lines.end(), "void Mrp::MrpRegistrarSm::handleCfgTimersEnabled()"),
            lines.end());
}

TEST_F(RegistrarEdgeTest, CancellingAPortsLeavesDropsItsMachinesInBothMapsAndNoOtherPorts) {
  const Mrp::MrpAttribute otherPort{Velo::IntfId("p2"), 1, 10};
  vlan10Is(Applicant::qa, State::in);
  received(Event::regLvAll_);
  vlan10Is(Applicant::qa, State::in);
  received(Event::rLv);
  currentAttributeIs(sm, otherPort, Applicant::qa, State::in);
  received(Event::regLvAll_);

  const std::vector<std::string> lines = tracedAt(8, [&] { sm.registrarSm()->mrpCancelLeavePending(kPort); });
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "Intf: p1 Leave pending deleted: 10"), 2);
  EXPECT_FALSE(sm.registrarSm()->leaveSm(kVlanLeaves));
  EXPECT_FALSE(sm.registrarSm()->explicitLeaveSm(kVlan10));
  EXPECT_TRUE(sm.registrarSm()->leaveSm({otherPort.intfId, 1, 0}));
  advance(kPortLeaveTime);
  EXPECT_EQ(takeLeaves(engine), (std::vector<Mrp::MrpParameters>{{otherPort.intfId, 1, 5, 10}}));
}

// ---- The transmit cycle.

TEST_F(RegistrarEdgeTest, TheTransmitTimerSendsTheOpenPacketsEveryTenthOfASecond) {
  portUp(engine, "p1");
  clock->advanceTo(0.03);
  declare(engine, "p1", Mrp::MvrpVlanAttribute(10), kJoinIn);
  clock->advanceTo(0.09);
  EXPECT_TRUE(takeFrames("p1").empty()) << "sent before the timer";
  EXPECT_EQ(engine.lib().mrpTxPacketContexts().size(), 1u);
  EXPECT_EQ(engine.lib().mrpTxSecondPacketContexts().size(), 1u);

  clock->advanceTo(0.1);
  const std::vector<SentFrame> sent = takeFrames("p1");
  ASSERT_EQ(sent.size(), 2u) << "the first packet and the second";
  for (const SentFrame& frame : sent) {
    EXPECT_EQ(frame.time, 0.1);
    EXPECT_EQ(frame.values, (std::vector<SentValue>{{1, 10, kJoinMt, {0x00, 0x0a}}}));
  }
  EXPECT_TRUE(engine.lib().mrpTxPacketContexts().empty());
  EXPECT_TRUE(engine.lib().mrpTxSecondPacketContexts().empty());
  EXPECT_EQ(sm.registrarSm()->txTimerTime(), 0.2);

  declare(engine, "p1", Mrp::MvrpVlanAttribute(20), kNew);
  clock->advanceTo(0.19);
  EXPECT_TRUE(takeFrames("p1").empty());
  clock->advanceTo(0.2);
  const std::vector<SentFrame> next = takeFrames("p1");
  ASSERT_EQ(next.size(), 2u);
  EXPECT_EQ(next[0].time, 0.2);
  EXPECT_EQ(next[0].values, (std::vector<SentValue>{{1, 20, kNew, {0x00, 0x14}}}));
}

}  // namespace
}  // namespace MrpTest
