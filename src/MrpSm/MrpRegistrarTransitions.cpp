#include "MrpSm/MrpRegistrarTransitions.h"

namespace Mrp {

std::ostream& operator<<(std::ostream& os, MrpRegistrarTransition::Action action) {
  using Action = MrpRegistrarTransition::Action;
  switch (action) {
    case Action::logJoinReceived: return os << "logJoinReceived";
    case Action::logLeaveNotified: return os << "logLeaveNotified";
    case Action::enterNext: return os << "enterNext";
    case Action::addToLeavePending: return os << "addToLeavePending";
    case Action::deleteFromLeavePending: return os << "deleteFromLeavePending";
    case Action::traceJoinIndication: return os << "traceJoinIndication";
    case Action::traceLeaveIndication: return os << "traceLeaveIndication";
    case Action::joinIndication: return os << "joinIndication";
    case Action::checkedJoinIndication: return os << "checkedJoinIndication";
    case Action::countJoin: return os << "countJoin";
    case Action::leaveIndication: return os << "leaveIndication";
    case Action::countLeave: return os << "countLeave";
  }
  return os << static_cast<unsigned>(action);
}

std::ostream& operator<<(std::ostream& os, const MrpRegistrarTransition& transition) {
  const char* separator = "";
  for (const MrpRegistrarTransition::Action action : transition.actions()) {
    os << separator << action;
    separator = ", ";
  }
  return os << (transition.actions().empty() ? "→ " : " → ") << transition.next;
}

}  // namespace Mrp
