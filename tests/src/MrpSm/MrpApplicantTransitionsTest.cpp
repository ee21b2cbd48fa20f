#include "MrpSm/MrpApplicantTransitions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <sstream>
#include <string>

namespace MrpTest {
namespace {

using Mrp::MrpApplicantTransition;
using Event = Mrp::MrpApplicantEvent;
using State = Mrp::MrpApplicantState;
namespace Table = Mrp::MrpApplicantTable;

constexpr unsigned kStateCodes = 256;
constexpr unsigned kEventCodes = 256;

std::string textOf(const MrpApplicantTransition& transition) {
  std::ostringstream text;
  text << transition;
  return text.str();
}

bool listed(Event event) {
  return std::find(Table::kColumns.begin(), Table::kColumns.end(), event) != Table::kColumns.end();
}

TEST(MrpApplicantTransitionsTest, EveryCellOfEveryRowIsTheTransitionOfItsStateAndEvent) {
  ASSERT_EQ(std::size(Table::kRows), 12u);
  for (const Table::Row& row : Table::kRows) {
    for (std::size_t column = 0; column < Table::kColumns.size(); ++column) {
      const Event event = Table::kColumns[column];
      SCOPED_TRACE(::testing::Message() << row.state << " on " << event);
      const MrpApplicantTransition& transition = Mrp::mrpApplicantTransition(row.state, event);
      EXPECT_EQ(transition, row.cells[column]);
      if (!transition.writesState) {
        EXPECT_EQ(transition.next, row.state) << "a kept state is the row's";
      }
    }
  }
}

TEST(MrpApplicantTransitionsTest, EveryPairTheTableLeavesOutSendsNothingAndKeepsTheState) {
  for (unsigned stateCode = 0; stateCode < kStateCodes; ++stateCode) {
    for (unsigned eventCode = 0; eventCode < kEventCodes; ++eventCode) {
      const auto state = static_cast<State>(stateCode);
      const auto event = static_cast<Event>(eventCode);
      if (stateCode < std::size(Table::kRows) && listed(event)) continue;
      SCOPED_TRACE(::testing::Message() << "state " << stateCode << " on event " << eventCode);
      const MrpApplicantTransition& transition = Mrp::mrpApplicantTransition(state, event);
      EXPECT_TRUE(transition.messages().empty());
      EXPECT_FALSE(transition.writesState);
      EXPECT_EQ(transition.next, state);
    }
  }
}

// Messages go out at once instead of at later transmit opportunities, so
// no transition rests in a transient state.
TEST(MrpApplicantTransitionsTest, OnlyVeryAnxiousObserverQuietActiveAnxiousObserverQuietObserverAndQuietPassiveAreEntered) {
  const std::set<State> resting = {State::vo, State::qa, State::ao, State::qo, State::qp};
  for (const Table::Row& row : Table::kRows) {
    for (const MrpApplicantTransition& cell : row.cells) {
      if (cell.writesState) {
        EXPECT_TRUE(resting.contains(cell.next)) << row.state << ": " << cell;
      }
    }
  }
}

TEST(MrpApplicantTransitionsTest, EveryNewRequestSendsNewIntoBothPacketsAndGoesQuietActiveWhereNotIgnored) {
  for (const Table::Row& row : Table::kRows) {
    const MrpApplicantTransition& transition = Mrp::mrpApplicantTransition(row.state, Event::newReq);
    if (transition.messages().empty()) continue;
    EXPECT_EQ(transition, Table::sNx2_QA) << row.state;
  }
}

struct NotationRow {
  State state;
  Event event;
  const char* text;
};

TEST(MrpApplicantTransitionsTest, CellsPrintInTheTablesNotation) {
  // clang-format off
  const NotationRow rows[] = {
    {State::vo, Event::newReq,  "sN(false), sN(true) → QA"},
    {State::vp, Event::txLvAll, "sR(false), sJ(true) → QA"},
    {State::qa, Event::txLvAll, "sJ(false), stay"},
    {State::vo, Event::rJoinIn, "→ AO"},
    {State::vn, Event::lvReq,   "sL → VO"},
    {State::vo, Event::lvReq,   "—"},
    {State::qa, Event::flush,   "—"},
  };
  // clang-format on
  for (const NotationRow& row : rows) {
    EXPECT_EQ(textOf(Mrp::mrpApplicantTransition(row.state, row.event)), row.text) << row.state << " on " << row.event;
  }
}

// Cells the 802.1Q applicant has otherwise, kept as they are.
TEST(MrpApplicantTransitionsTest, QuietActiveOnTransmittedLeaveAllSendsOneJoinWithoutWritingItsState) {
  constexpr const MrpApplicantTransition& transition = Mrp::mrpApplicantTransition(State::qa, Event::txLvAll);
  static_assert(transition.sendCount == 1 && transition.sends[0] == MrpApplicantTransition::Send::joinFirst);
  static_assert(!transition.writesState && transition.next == State::qa);
}

}  // namespace
}  // namespace MrpTest
