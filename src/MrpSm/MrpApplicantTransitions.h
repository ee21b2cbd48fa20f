#pragma once

#include <array>
#include <cstdint>
#include <ostream>
#include <span>

#include "MrpModel/MrpApplicantEvent.h"
#include "MrpModel/MrpApplicantState.h"
#include "MrpSm/MrpIgnoredTransitions.h"

namespace Mrp {

// One cell of the applicant table: the messages sent while the event is
// handled, in order, and the state the attribute then rests in.
struct MrpApplicantTransition {
  // A message of the current attribute and the packet it goes into: the
  // port's first, or its second, which is sent at another time.
  enum class Send : std::uint8_t {
    newFirst,              // sN(false)
    newSecond,             // sN(true)
    joinFirst,             // sJ(false): JoinIn while the registrar is IN, else JoinMt
    joinSecond,            // sJ(true)
    registeredStateFirst,  // sR(false): In while the registrar is IN, else Mt
    leave,                 // sL: always the first packet
  };

  std::array<Send, 2> sends{};
  std::uint8_t sendCount = 0;
  // False where the state is kept without being written.
  bool writesState = false;
  MrpApplicantState next = MrpApplicantState::vo;

  std::span<const Send> messages() const { return {sends.data(), sendCount}; }
  friend constexpr bool operator==(const MrpApplicantTransition&, const MrpApplicantTransition&) = default;
};

// The cell in the table's notation, e.g. "sN(false), sN(true) → QA",
// "sR(false), stay" or "—".
std::ostream& operator<<(std::ostream& os, const MrpApplicantTransition& transition);

// The table, one row per state in code order, one column per event below.
// There is no transmit opportunity: where a transition would pass through a
// transient state and send later, the messages go out at once and the
// attribute goes straight to the state it would come to rest in, so only
// VO, QA, AO, QO and QP are ever entered.
namespace MrpApplicantTable {

using Send = MrpApplicantTransition::Send;
using State = MrpApplicantState;
using Event = MrpApplicantEvent;

constexpr MrpApplicantTransition go(State next) { return {{}, 0, true, next}; }
constexpr MrpApplicantTransition go(Send send, State next) { return {{send}, 1, true, next}; }
constexpr MrpApplicantTransition go(Send first, Send second, State next) { return {{first, second}, 2, true, next}; }
constexpr MrpApplicantTransition stay(Send send) { return {{send}, 1, false}; }

constexpr Send sN = Send::newFirst;
constexpr Send sN2 = Send::newSecond;
constexpr Send sJ = Send::joinFirst;
constexpr Send sJ2 = Send::joinSecond;
constexpr Send sR = Send::registeredStateFirst;
constexpr Send sL = Send::leave;
constexpr State VO = State::vo;
constexpr State QA = State::qa;
constexpr State AO = State::ao;
constexpr State QO = State::qo;
constexpr State QP = State::qp;

// Ignored: nothing sent, the state kept.
constexpr MrpApplicantTransition none = {};
// New into both packets, then QA: every state's New!, and more.
constexpr MrpApplicantTransition sNx2_QA = go(sN, sN2, QA);
constexpr MrpApplicantTransition sJx2_QA = go(sJ, sJ2, QA);

// Flush!, rNew! and noEvent are ignored in every state and have no column.
constexpr std::array<Event, 11> kColumns = {Event::newReq,  Event::joinReq, Event::lvReq,   Event::redeclare,
                                            Event::rJoinIn, Event::rIn,     Event::rJoinMt, Event::rMt,
                                            Event::rLv,     Event::rxLvAll_, Event::txLvAll};

struct Row {
  State state;
  std::array<MrpApplicantTransition, kColumns.size()> cells;
};

// A row whose cells that keep the state name it as their next one.
constexpr Row row(State state, std::array<MrpApplicantTransition, kColumns.size()> cells) {
  for (MrpApplicantTransition& cell : cells) {
    if (!cell.writesState) cell.next = state;
  }
  return {state, cells};
}

// clang-format off
constexpr Row kRows[] = {
  // State        New!     Join!       Lv!         Re-declare! rJoinIn!    rIn!    rJoinMt!    rMt!        rLv!        rLA!        txLA!
  row(State::vo, {sNx2_QA, sJx2_QA,    none,       stay(sR),   go(AO),     none,   none,       none,       stay(sR),   stay(sR),   stay(sR)}),
  row(State::vp, {sNx2_QA, none,       go(VO),     none,       go(sJ, QA), none,   none,       none,       none,       none,       go(sR, sJ2, QA)}),
  row(State::vn, {none,    none,       go(sL, VO), none,       none,       none,   none,       none,       none,       none,       sNx2_QA}),
  row(State::an, {none,    none,       go(sL, VO), sNx2_QA,    none,       none,   none,       none,       sNx2_QA,    sNx2_QA,    go(sN, QA)}),
  row(State::aa, {sNx2_QA, none,       go(sL, VO), sJx2_QA,    go(QA),     go(QA), none,       none,       sJx2_QA,    sJx2_QA,    none}),
  row(State::qa, {sNx2_QA, sJx2_QA,    go(sL, VO), sJx2_QA,    none,       none,   go(sJ, QA), go(sJ, QA), sJx2_QA,    sJx2_QA,    stay(sJ)}),
  row(State::la, {sNx2_QA, go(sJ, QA), none,       none,       none,       none,   none,       none,       none,       none,       go(sR, VO)}),
  row(State::ao, {sNx2_QA, go(sJ, QA), none,       go(sR, VO), go(QO),     none,   none,       none,       go(sR, VO), go(sR, VO), go(sR, VO)}),
  row(State::qo, {sNx2_QA, go(QP),     none,       go(sR, VO), none,       none,   go(AO),     go(AO),     go(sR, VO), go(sR, VO), go(sR, VO)}),
  row(State::ap, {sNx2_QA, none,       go(AO),     sJx2_QA,    go(QP),     none,   none,       none,       sJx2_QA,    sJx2_QA,    go(sJ, QA)}),
  row(State::qp, {sNx2_QA, none,       go(QO),     sJx2_QA,    none,       none,   go(sJ, QA), go(sJ, QA), sJx2_QA,    sJx2_QA,    go(sJ, QA)}),
  row(State::lo, {sNx2_QA, sJx2_QA,    none,       none,       none,       none,   go(VO),     go(VO),     none,       none,       none}),
};
// clang-format on

// The rows stand in code order, so a state's code is its row.
constexpr bool rowsInCodeOrder() {
  for (std::size_t row = 0; row < std::size(kRows); ++row) {
    if (static_cast<std::size_t>(kRows[row].state) != row) return false;
  }
  return true;
}
static_assert(rowsInCodeOrder());

// The column of each event code, kNoColumn for the events left out.
constexpr std::uint8_t kNoColumn = 0xff;
constexpr std::array<std::uint8_t, static_cast<std::size_t>(Event::noEvent) + 1> kColumnOfEvent = [] {
  std::array<std::uint8_t, static_cast<std::size_t>(Event::noEvent) + 1> columns{};
  columns.fill(kNoColumn);
  for (std::size_t column = 0; column < kColumns.size(); ++column) {
    columns[static_cast<std::size_t>(kColumns[column])] = static_cast<std::uint8_t>(column);
  }
  return columns;
}();

}  // namespace MrpApplicantTable

// What the applicant does for `event` in `state`. Every pair the table
// leaves out, and a state or event out of range, sends nothing and keeps
// the state. A reference into the table: the machine reads it in place.
constexpr const MrpApplicantTransition& mrpApplicantTransition(MrpApplicantState state, MrpApplicantEvent event) {
  using namespace MrpApplicantTable;
  const auto stateCode = static_cast<std::size_t>(state);
  const auto eventCode = static_cast<std::size_t>(event);
  if (stateCode < std::size(kRows) && eventCode < kColumnOfEvent.size() && kColumnOfEvent[eventCode] != kNoColumn) {
    return kRows[stateCode].cells[kColumnOfEvent[eventCode]];
  }
  return kMrpIgnoredTransitions<MrpApplicantTransition>[stateCode];
}

}  // namespace Mrp
