#include "MrpSm/MrpRegistrarTransitions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <sstream>
#include <string>
#include <utility>

namespace MrpTest {
namespace {

using Mrp::MrpRegistrarTransition;
using Action = MrpRegistrarTransition::Action;
using Event = Mrp::MrpRegistrarEvent;
using State = Mrp::MrpRegistrarState;
namespace Table = Mrp::MrpRegistrarTable;

constexpr unsigned kCodes = 256;

// The row listing each (state, event) pair.
std::map<std::pair<State, Event>, const Table::Row*> listedPairs() {
  std::map<std::pair<State, Event>, const Table::Row*> pairs;
  for (const Table::Row& row : Table::kRows) {
    for (const Event event : row.events()) {
      EXPECT_TRUE(pairs.emplace(std::pair(row.state, event), &row).second)
          << row.state << " on " << event << " is listed twice";
    }
  }
  return pairs;
}

std::ptrdiff_t positionOf(const MrpRegistrarTransition& transition, Action action) {
  const auto actions = transition.actions();
  return std::find(actions.begin(), actions.end(), action) - actions.begin();
}

TEST(MrpRegistrarTransitionsTest, EveryRowIsTheTransitionOfEachOfItsEvents) {
  ASSERT_EQ(std::size(Table::kRows), 10u);
  for (const auto& [pair, row] : listedPairs()) {
    SCOPED_TRACE(::testing::Message() << pair.first << " on " << pair.second);
    EXPECT_EQ(&Mrp::mrpRegistrarTransition(pair.first, pair.second), &row->transition);
  }
}

TEST(MrpRegistrarTransitionsTest, EveryPairTheTableLeavesOutDoesNothingAndKeepsTheState) {
  const auto listed = listedPairs();
  for (unsigned stateCode = 0; stateCode < kCodes; ++stateCode) {
    for (unsigned eventCode = 0; eventCode < kCodes; ++eventCode) {
      const auto state = static_cast<State>(stateCode);
      const auto event = static_cast<Event>(eventCode);
      if (listed.contains({state, event})) continue;
      SCOPED_TRACE(::testing::Message() << "state " << stateCode << " on event " << eventCode);
      const MrpRegistrarTransition& transition = Mrp::mrpRegistrarTransition(state, event);
      EXPECT_TRUE(transition.actions().empty());
      EXPECT_EQ(transition.next, state);
    }
  }
}

TEST(MrpRegistrarTransitionsTest, ARowWritesItsStateOnceExactlyWhenItChangesIt) {
  for (const Table::Row& row : Table::kRows) {
    const auto actions = row.transition.actions();
    SCOPED_TRACE(::testing::Message() << row.state << ": " << row.transition);
    EXPECT_EQ(std::count(actions.begin(), actions.end(), Action::enterNext), row.transition.next != row.state ? 1 : 0);
  }
}

// The application sees the attribute registered when it hears of it.
TEST(MrpRegistrarTransitionsTest, FromMtOrLvToInTheStateIsWrittenBeforeTheIndication) {
  for (const Table::Row& row : Table::kRows) {
    if (row.state == State::in || row.transition.next != State::in) continue;
    SCOPED_TRACE(::testing::Message() << row.state << ": " << row.transition);
    const std::ptrdiff_t indication = std::min(positionOf(row.transition, Action::joinIndication),
                                               positionOf(row.transition, Action::checkedJoinIndication));
    EXPECT_LT(positionOf(row.transition, Action::enterNext), indication);
  }
}

struct NotationRow {
  State state;
  Event event;
  const char* text;
};

TEST(MrpRegistrarTransitionsTest, RowsPrintTheirActionsAndNewState) {
  // clang-format off
  const NotationRow rows[] = {
    {State::in, Event::rNew,       "logJoinReceived, joinIndication, countJoin → IN"},
    {State::in, Event::flush,      "enterNext → MT"},
    {State::lv, Event::rJoinMt,    "enterNext, deleteFromLeavePending, traceJoinIndication, checkedJoinIndication → IN"},
    {State::lv, Event::leaveTimer, "logLeaveNotified, enterNext, traceLeaveIndication, leaveIndication, countLeave, "
                                   "deleteFromLeavePending → MT"},
    {State::mt, Event::txLvAll,    "→ MT"},
  };
  // clang-format on
  for (const NotationRow& row : rows) {
    std::ostringstream text;
    text << Mrp::mrpRegistrarTransition(row.state, row.event);
    EXPECT_EQ(text.str(), row.text) << row.state << " on " << row.event;
  }
}

}  // namespace
}  // namespace MrpTest
