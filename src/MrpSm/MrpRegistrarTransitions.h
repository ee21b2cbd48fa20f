#pragma once

#include <array>
#include <cstdint>
#include <initializer_list>
#include <ostream>
#include <span>

#include "MrpModel/MrpRegistrarEvent.h"
#include "MrpModel/MrpRegistrarState.h"
#include "MrpSm/MrpIgnoredTransitions.h"

namespace Mrp {

// One row of the registrar table: what is done for the event, in order, and
// the state the attribute ends in.
struct MrpRegistrarTransition {
  enum class Action : std::uint8_t {
    logJoinReceived,        // "MRP Join received on ..." with the state before
    logLeaveNotified,       // "MRP Lv notified on ..." with the state before
    enterNext,              // the new state is written here
    addToLeavePending,      // leave timing starts (again)
    deleteFromLeavePending,
    traceJoinIndication,    // "JoinIndication called"
    traceLeaveIndication,   // "LeaveIndication called"
    joinIndication,
    // A received join in IN or LV: indicated when the value check says so.
    checkedJoinIndication,
    countJoin,
    leaveIndication,
    countLeave,
  };
  static constexpr std::size_t kMaxActions = 6;

  std::array<Action, kMaxActions> actionList{};
  std::uint8_t actionCount = 0;
  MrpRegistrarState next = MrpRegistrarState::in;

  std::span<const Action> actions() const { return {actionList.data(), actionCount}; }
  friend constexpr bool operator==(const MrpRegistrarTransition&, const MrpRegistrarTransition&) = default;
};

std::ostream& operator<<(std::ostream& os, MrpRegistrarTransition::Action action);
// The row as "logJoinReceived, joinIndication, countJoin → IN".
std::ostream& operator<<(std::ostream& os, const MrpRegistrarTransition& transition);

// The table. Events a state does not list are ignored, state unchanged.
// Kept as they are, unlike the 802.1Q registrar: Flush! in IN goes to MT
// without a leave indication; an unchanged rJoin in IN is counted without
// being indicated, an indicated one in LV is not counted; txLA! starts
// leave timing like rLA!. In the rows from MT or LV to IN the state is
// written before the indication, so the application sees the attribute
// registered.
namespace MrpRegistrarTable {

using Action = MrpRegistrarTransition::Action;
using State = MrpRegistrarState;
using Event = MrpRegistrarEvent;

struct Row {
  State state;
  std::array<Event, 4> eventList;
  std::uint8_t eventCount;
  MrpRegistrarTransition transition;

  constexpr Row(State rowState, std::initializer_list<Event> events, std::initializer_list<Action> actions,
                State next)
      : state(rowState), eventList{}, eventCount(0), transition{{}, 0, next} {
    for (const Event event : events) eventList[eventCount++] = event;
    for (const Action action : actions) transition.actionList[transition.actionCount++] = action;
  }
  std::span<const Event> events() const { return {eventList.data(), eventCount}; }
};

constexpr Action logJoin = Action::logJoinReceived;
constexpr Action logLeave = Action::logLeaveNotified;
constexpr Action enter = Action::enterNext;
constexpr Action addLeavePending = Action::addToLeavePending;
constexpr Action deleteLeavePending = Action::deleteFromLeavePending;
constexpr Action traceJoinInd = Action::traceJoinIndication;
constexpr Action traceLeaveInd = Action::traceLeaveIndication;
constexpr Action joinInd = Action::joinIndication;
constexpr Action checkedJoinInd = Action::checkedJoinIndication;
constexpr Action countJoin = Action::countJoin;
constexpr Action leaveInd = Action::leaveIndication;
constexpr Action countLeave = Action::countLeave;

// clang-format off
constexpr Row kRows[] = {
  // State    Events                                                    Actions, in order                                                             New state
  {State::in, {Event::rNew},                                            {logJoin, joinInd, countJoin},                                                 State::in},
  {State::in, {Event::rJoinIn, Event::rJoinMt},                         {checkedJoinInd, countJoin},                                                   State::in},
  {State::in, {Event::rLv, Event::regLvAll_, Event::txLvAll, Event::redeclare}, {addLeavePending, enter},                                             State::lv},
  {State::in, {Event::flush},                                           {enter},                                                                       State::mt},
  {State::lv, {Event::rNew},                                            {deleteLeavePending, enter, traceJoinInd, joinInd, countJoin},                 State::in},
  {State::lv, {Event::rJoinIn, Event::rJoinMt},                         {enter, deleteLeavePending, traceJoinInd, checkedJoinInd},                     State::in},
  {State::lv, {Event::rLv, Event::regLvAll_, Event::txLvAll, Event::redeclare}, {addLeavePending},                                                    State::lv},
  {State::lv, {Event::flush},                                           {logLeave, enter, traceLeaveInd, leaveInd, countLeave},                        State::mt},
  {State::lv, {Event::leaveTimer},                                      {logLeave, enter, traceLeaveInd, leaveInd, countLeave, deleteLeavePending},    State::mt},
  {State::mt, {Event::rNew, Event::rJoinIn, Event::rJoinMt},            {logJoin, enter, joinInd, countJoin},                                          State::in},
};
// clang-format on

// The row of each (state, event) code pair, kNoRow where the table has none.
constexpr std::size_t kStates = static_cast<std::size_t>(State::mt) + 1;
constexpr std::size_t kEvents = static_cast<std::size_t>(Event::noEvent) + 1;
constexpr std::uint8_t kNoRow = 0xff;
constexpr std::array<std::array<std::uint8_t, kEvents>, kStates> kRowOf = [] {
  std::array<std::array<std::uint8_t, kEvents>, kStates> rows{};
  for (auto& events : rows) events.fill(kNoRow);
  for (std::size_t row = 0; row < std::size(kRows); ++row) {
    for (std::uint8_t i = 0; i < kRows[row].eventCount; ++i) {
      rows[static_cast<std::size_t>(kRows[row].state)][static_cast<std::size_t>(kRows[row].eventList[i])] =
          static_cast<std::uint8_t>(row);
    }
  }
  return rows;
}();

}  // namespace MrpRegistrarTable

// What the registrar does for `event` in `state`. Every pair the table
// leaves out, and a state or event out of range, does nothing and keeps the
// state. A reference into the table: the machine reads it in place.
constexpr const MrpRegistrarTransition& mrpRegistrarTransition(MrpRegistrarState state, MrpRegistrarEvent event) {
  using namespace MrpRegistrarTable;
  const auto stateCode = static_cast<std::size_t>(state);
  const auto eventCode = static_cast<std::size_t>(event);
  if (stateCode < kStates && eventCode < kEvents && kRowOf[stateCode][eventCode] != kNoRow) {
    return kRows[kRowOf[stateCode][eventCode]].transition;
  }
  return kMrpIgnoredTransitions<MrpRegistrarTransition>[stateCode];
}

}  // namespace Mrp
